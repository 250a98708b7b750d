"""The Debian package in a clean system: installed, upgraded, removed and purged.

Usage: package_test.py PACKAGE_FOLDER CACHE_FOLDER [TEST...]
"""

import contextlib
import hashlib
import os
import pathlib
import re
import shutil
import sqlite3
import stat
import sys
import tempfile
import unittest

from clean_root import CleanRoot, find_package, main, needed_packages, output_of

PACKAGES, CACHE = sys.argv[1:3]
STATE = "var/lib/tarnexcomm"
SETTINGS = f"{STATE}/system/Tarnex.ini"
LOG = f"{STATE}/log.db"
ENABLED = "etc/systemd/system/multi-user.target.wants/tarnexcomm.service"

# What the package managers themselves write down.
BOOK_KEEPING = re.compile(r"/(proc|tmp|var/(cache|log|lib/dpkg)|etc/(passwd|group|shadow|gshadow)-|etc/\.pwd\.lock)(/|$)")


def next_version(deb, folder):
    """The package once more, with a higher version and other default settings."""
    content = os.path.join(folder, "content")
    output_of("dpkg-deb", "--raw-extract", deb, content)
    control = pathlib.Path(content, "DEBIAN/control")
    control.write_text(re.sub(r"(?m)^Version: .*$", "Version: 99", control.read_text()))
    with open(os.path.join(content, "usr/share/tarnexcomm/Tarnex.ini.sample"), "a") as sample:
        sample.write("; new in this version\n")
    result = os.path.join(folder, "next.deb")
    output_of("dpkg-deb", "--build", "--root-owner-group", content, result)
    return result


def inventory(root):
    """Every file of a system with all that a package may leave changed."""
    found = {}
    for folder, names, files in os.walk(root):
        for name in names + files:
            path = os.path.join(folder, name)
            shown = path.removeprefix(str(root))
            status = os.lstat(path)
            if BOOK_KEEPING.match(shown):
                continue
            content = ""
            if stat.S_ISLNK(status.st_mode):
                content = os.readlink(path)
            elif stat.S_ISREG(status.st_mode):
                content = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
            found[shown] = (oct(status.st_mode), status.st_uid, status.st_gid, content)
    return found


class Package(unittest.TestCase):
    def setUp(self):
        self.deb = find_package(PACKAGES, "tarnexcomm")
        self.root = CleanRoot(CACHE, needed_packages(self.deb))
        self.addCleanup(self.root.close)

    def path(self, name):
        return self.root.path / name

    def install(self, deb):
        self.root.run("dpkg", "--install", self.root.copy_in(deb))

    def owner_and_mode(self, name):
        return self.root.run("stat", "--format=%U:%G %a", "/" + name).strip()

    def log_rows(self):
        with contextlib.closing(sqlite3.connect(self.path(LOG))) as log:
            return log.execute('SELECT Message FROM "Log"').fetchall()

    def assert_installed(self):
        self.assertEqual(self.root.run("id", "--name", "--groups", "tarnexcomm").split(), ["tarnexcomm", "dialout"])
        self.assertIn(":/usr/sbin/nologin\n", self.root.run("getent", "passwd", "tarnexcomm"))
        self.assertEqual(self.owner_and_mode(STATE), "tarnexcomm:tarnexcomm 750")
        self.assertEqual(self.owner_and_mode(f"{STATE}/system"), "tarnexcomm:tarnexcomm 750")
        self.assertEqual(self.owner_and_mode(SETTINGS), "tarnexcomm:tarnexcomm 640")
        self.assertEqual(self.owner_and_mode(LOG), "tarnexcomm:tarnexcomm 640")
        self.assertTrue(self.path(ENABLED).is_symlink())

    def test_settings_and_log_live_until_the_purge(self):
        before = inventory(self.root.path)
        self.install(self.deb)
        self.assert_installed()
        sample = self.path("usr/share/tarnexcomm/Tarnex.ini.sample").read_text()
        self.assertEqual(self.path(SETTINGS).read_text(), sample)
        self.assertEqual(self.log_rows(), [])

        settings = "; mine\n" + sample.replace("=00000000000", "=13900000001")
        self.path(SETTINGS).write_text(settings)
        with contextlib.closing(sqlite3.connect(self.path(LOG))) as log, log:
            log.execute("INSERT INTO \"Log\" (Message) VALUES ('a row')")

        with tempfile.TemporaryDirectory() as folder:
            newer = next_version(self.deb, folder)
            steps = [
                ("upgrade", lambda: self.install(newer)),
                ("the same once more", lambda: self.install(newer)),
                ("remove", lambda: self.root.run("dpkg", "--remove", "tarnexcomm")),
                ("install again", lambda: self.install(newer)),
            ]
            for name, step in steps:
                with self.subTest(name):
                    step()
                    self.assertEqual(self.path(SETTINGS).read_text(), settings)
                    self.assertEqual(self.log_rows(), [("a row",)])
                    self.assertEqual(self.path("usr/bin/tarnexcomm").exists(), name != "remove")
                    self.assert_installed()

        self.root.run("dpkg", "--purge", "tarnexcomm")
        self.maxDiff = None
        self.assertEqual(inventory(self.root.path), before)

    def test_what_an_administrator_did_stays(self):
        settings = self.path(SETTINGS)
        settings.parent.mkdir(parents=True)
        settings.write_text("; from the time before the package\n")
        self.install(self.deb)
        self.assertEqual(settings.read_text(), "; from the time before the package\n")
        self.assertEqual(self.owner_and_mode(SETTINGS), "tarnexcomm:tarnexcomm 644")

        self.root.run("systemctl", "disable", "tarnexcomm")
        self.path(LOG).unlink()
        self.install(self.deb)
        self.assertFalse(self.path(ENABLED).is_symlink())
        self.assertFalse(self.path(LOG).exists())

        # But a removed program leaves no unit that starts it.
        own_unit = self.path("etc/systemd/system/tarnexcomm.service")
        shutil.copy(self.path("usr/lib/systemd/system/tarnexcomm.service"), own_unit)  # as "/i" does
        self.root.run("dpkg", "--remove", "tarnexcomm")
        self.assertFalse(own_unit.exists())

    def test_what_is_installed_works(self):
        self.install(self.deb)
        self.root.run("tarnexcomm", "--help")  # which it does not know
        for program in self.path("usr/bin").glob("tarnex[!c]*"):
            self.assertIn("1.", self.root.run(program.name, "--version"))

        # The first command sets it up.
        self.path(LOG).unlink()
        numbers = ("--number-1", "13900000001", "--number-2", "13900000002", "--sms-centre", "+8613800100500")
        self.root.run("tarnexctl", "setup", "--port", "search", *numbers, "--mail-server", "none")
        self.assert_installed()
        self.assertEqual(self.log_rows(), [])
        self.root.run("tarnexctl", "settings", "check")
        told = self.root.run("sh", "-c", f"chown root: /{SETTINGS}; tarnexctl settings check || true")
        self.assertIn(f"its user tarnexcomm may not read /{SETTINGS}: chown tarnexcomm: ", told)


main(Package, sys.argv[3:])
