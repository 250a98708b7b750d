"""What is in the Debian packages.

Usage: package_content_test.py PACKAGE_FOLDER [TEST...]
"""

import glob
import re
import subprocess
import sys
import unittest

PACKAGES = sys.argv[1]


def dpkg_deb(*arguments):
    return subprocess.run(["dpkg-deb", *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout


class Package:
    def __init__(self, name):
        (self.deb,) = glob.glob(f"{PACKAGES}/{name}_*.deb")
        self.depends = dpkg_deb("--field", self.deb, "Depends")
        contents = dpkg_deb("--contents", self.deb).splitlines()
        # "-rw-r--r-- root/root 259 2026-11-21 06:26 ./usr/share/doc/tarnexcomm/copyright"
        self.files = {line.split()[5][1:] for line in contents if not line.startswith("d")}
        self.owners = {line.split()[1] for line in contents}

    def names_below(self, folder):
        return {file.removeprefix(folder) for file in self.files if file.startswith(folder)}


class Content(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.service = Package("tarnexcomm")
        cls.view = Package("tarnexcomm-view")

    def test_the_service_needs_no_display(self):
        self.assertNotRegex(self.service.depends, r"libx|fltk|font|\bsqlite3\b")

    def test_the_windows_come_in_a_package_of_their_own(self):
        self.assertRegex(self.view.depends, r"(?=.*\btarnexcomm \(= )(?=.*\blibfltk)(?=.*\blibx11)")
        self.assertEqual(dpkg_deb("--info", self.view.deb, "control").count("Recommends"), 1)
        documents = "/usr/share/doc/tarnexcomm-view/"
        self.assertEqual(self.view.names_below(documents), {"copyright", "changelog.gz"})
        (program,) = self.view.files - {documents + name for name in ("copyright", "changelog.gz")}
        self.assertEqual(program, "/usr/libexec/tarnexcomm/tarnex-view")

    def test_every_program_is_documented_and_completed(self):
        programs = self.service.names_below("/usr/bin/")
        self.assertLessEqual({"tarnexcomm", "tarnexctl", "tarnex-flasher", "tarnex-sim"}, programs)
        pages = self.service.names_below("/usr/share/man/")
        self.assertIn("man5/Tarnex.ini.5.gz", pages)
        self.assertEqual({re.split(r"[/.]", page)[1] for page in pages} - {"Tarnex"}, programs)
        completed = self.service.names_below("/usr/share/bash-completion/completions/")
        self.assertEqual(completed, programs - {"tarnexcomm"})  # which takes no arguments

    def test_the_system_finds_its_parts(self):
        self.assertLessEqual(
            {
                "/usr/lib/systemd/system/tarnexcomm.service",
                "/usr/lib/sysusers.d/tarnexcomm.conf",
                "/usr/lib/udev/rules.d/66-tarnexcomm.rules",
                "/usr/share/tarnexcomm/Tarnex.ini.sample",
                "/usr/share/tarnexcomm/log-schema.sql",
            },
            self.service.files,
        )
        self.assertEqual(self.service.owners | self.view.owners, {"root/root"})


unittest.main(argv=[sys.argv[0], *(f"Content.{name}" for name in sys.argv[2:])])
