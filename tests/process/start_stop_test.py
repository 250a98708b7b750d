"""How the service starts, is stopped, and ends by itself."""

import os
import shutil
import signal
import unittest

import harness
from harness import NOBODY, Site

# What a program complains about that reads the settings.
UNKNOWN_CODE_PAGE = b"[Encoding]\r\nCodePage=Klingon\r\n"


def files(folder):
    return sorted(os.path.join(top, name) for top, _, names in os.walk(folder) for name in names)


class StartStop(unittest.TestCase):
    def test_any_argument_ends_it_in_silence(self):
        site = Site(self)
        with open(site.settings, "ab") as file:
            file.write(UNKNOWN_CODE_PAGE)
        before = files(site.folder)
        for arguments in (["/e"], ["/x"], ["--help"], ["-h"], ["/i", "/u"], ["run"]):
            with self.subTest(arguments):
                service = site.start("tarnexcomm", *arguments)
                self.assertEqual((service.wait(), service.lines), (0, []))
                self.assertEqual(files(site.folder), before)

    def test_a_second_instance_ends_in_silence_and_leaves_the_first_alone(self):
        site = Site(self)
        first = site.service()
        monitor = site.monitor()
        monitor.greet()
        with open(site.settings, "ab") as file:
            file.write(UNKNOWN_CODE_PAGE)
        second = site.start("tarnexcomm")
        self.assertEqual((second.wait(), second.lines), (0, []))
        monitor.greet()
        self.assertEqual(first.stop(), 0)
        self.assertEqual(first.lines, [])
        monitor.wait_for(b"tx-SMSEnd")

    def test_its_end_takes_a_left_over_copy_along_and_nobody_else(self):
        others = [Site(self).service(), Site(self).unit()]
        for other in others:
            site = Site(self)
            service = site.service()
            with open(site.path("lock"), "w") as lock:
                print(other.pid, file=lock)
            self.assertEqual(service.stop(), 0)
        self.assertEqual(others[0].wait(), -signal.SIGKILL)
        self.assertTrue(others[1].runs())

    def test_what_the_program_of_the_windows_says_is_told_escaped_and_once(self):
        site = Site(self, **{"DebugMode": "On"})
        site.desktop = {"DISPLAY": ":0"}
        view = site.path("tarnex-view")
        with open(view, "w") as file:
            file.write(
                "#!/bin/sh\n"
                "for i in 1 2; do printf '\\002\\005\\0\\0\\0\\0\\0\\0\\0\\033[2J\\n' >&3; done\n"
                "printf '\\001\\004\\0\\0\\0\\0\\0\\0\\0\\rbye' >&3\n"
            )
        os.chmod(view, 0o755)
        service = site.start(shutil.copy(harness.programs + "/tarnexcomm", site.folder))
        self.assertIn("no window can be shown", service.wait_for("\\rbye"))
        self.assertEqual(len(service.said("\\x1B[2J\\n")), 1)
        self.assertEqual(service.stop(), 0)

    def test_it_outlives_the_reader_of_its_messages(self):
        reader, writer = os.pipe()
        os.close(reader)
        site = Site(self, log=False)
        service = site.service(stdout=writer, stderr=writer)  # it misses its log, but whom to tell?
        os.close(writer)
        site.monitor().greet()
        self.assertEqual(service.stop(), 0)

    def ends_with(self, said, content, mode=None, user=None, status=0):
        """It says that before it ends by itself. content: of its settings, None for no file."""
        site = Site(self)
        os.remove(site.settings)
        if content == "folder":
            os.mkdir(site.settings)
        elif content is not None:
            with open(site.settings, "wb") as file:
                file.write(content)
        if mode is not None:
            os.chmod(site.settings, mode)
        before = files(site.path("system"))
        programs = [site.start("tarnexcomm", user=user)]
        if status != 0:  # not for the service alone
            arguments = ["--port", "COM3", "--file", "unit.hex"]
            programs.append(site.start("tarnex-flasher", *arguments, user=user))
            programs.append(site.start("tarnex-console", user=user))
        for program in programs:
            self.assertEqual(program.wait(), status)
            # Without settings the links stand at 127.0.0.1 for a moment, where another may be.
            # Nor may that user make a lock there.
            (line,) = [line for line in program.lines if "settings file" in line]
            self.assertIn(site.settings, line)
            self.assertIn(said, line)
        self.assertEqual(files(site.path("system")), before)

    def test_without_a_readable_settings_file_every_program_says_so_and_ends(self):
        self.ends_with("is missing", None)
        self.ends_with("cannot be read (it is no", "folder", status=66)
        self.ends_with("(it is longer than 1 MiB)", b";\n" * (1 << 20), status=66)
        reader = NOBODY if os.geteuid() == 0 else None
        self.ends_with("(permission denied)", b"", 0o000, reader, status=77)

    def test_without_windir_it_creates_nothing(self):
        base = "/var/lib/tarnexcomm"
        if os.path.exists(base):
            self.skipTest(f"{base} belongs to an installed service")
        site = Site(self)
        environment = site.environment()
        del environment["WINDIR"]
        service = site.start("tarnexcomm", env=environment, cwd=site.path("system"))
        self.assertEqual(service.wait(), 0)
        self.assertTrue(service.said(f"The settings file {base}/system/Tarnex.ini is missing"))
        self.assertFalse(os.path.exists(base) or os.path.exists("/system"))
        self.assertEqual(files(site.path("system")), [site.settings])


harness.run(StartStop)
