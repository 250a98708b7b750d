"""How the service starts, is stopped, and ends by itself."""

import os
import shutil
import signal
import unittest

import harness
from harness import NOBODY, Site, linux_only


class StartStop(unittest.TestCase):
    def test_a_second_instance_ends_in_silence_and_leaves_the_first_alone(self):
        site = Site(self)
        first = site.service()
        with open(site.settings, "ab") as file:  # of which the second would complain
            file.write(b"[Encoding]\r\nCodePage=Klingon\r\n")
        second = site.start("tarnexcomm")
        self.assertEqual((second.wait(), second.lines), (0, []))
        monitor = site.monitor()
        monitor.greet()
        self.assertEqual((first.stop(), first.lines), (0, []))
        monitor.wait_for(b"tx-SMSEnd")

    @linux_only
    def test_its_end_takes_a_left_over_copy_along_and_nobody_else(self):
        others = [Site(self).service(), Site(self).unit()]
        for other in others:
            site = Site(self)
            service = site.service()
            site.path("lock").write_text(f"{other.pid}\n")
            self.assertEqual(service.stop(), 0)
        self.assertEqual(others[0].wait(), -signal.SIGKILL)
        self.assertTrue(others[1].runs())

    @linux_only
    def test_what_the_program_of_the_windows_says_is_told_escaped_and_once(self):
        site = Site(self, DebugMode="On")
        site.desktop = {"DISPLAY": ":0"}
        view = site.path("tarnex-view")
        view.write_text(
            "#!/bin/sh\n"
            "for i in 1 2; do printf '\\002\\005\\0\\0\\0\\0\\0\\0\\0\\033[2J\\n' >&3; done\n"
            "printf '\\001\\004\\0\\0\\0\\0\\0\\0\\0\\rbye' >&3\n"
        )
        view.chmod(0o755)
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

    @linux_only  # Wine binds every address but 127.0.0.1 to all of them
    def test_an_address_of_another_machine_is_told_in_one_line(self):
        service = Site(self, **{"BindAddress": "192.0.2.1"}).start("tarnexcomm")
        line = service.wait_for('correct the address (setting "bind-address")')
        self.assertIn("7840, 7841, 7842, 7843, 7844 (not an address of this machine)", line)
        self.assertEqual((service.stop(), service.lines), (0, [line]))

    def ends_with(self, status, said, user=None, make=lambda settings: None):
        """All programs say that of their settings and end by themselves. make: the file, if any."""
        site = Site(self)
        site.settings.unlink()
        make(site.settings)
        before = list(site.path("system").iterdir())
        programs = [site.start("tarnexcomm", user=user)]
        if status != 0:  # not for the service alone
            arguments = ["--port", "COM3", "--file", "unit.hex"]
            programs.append(site.start("tarnex-flasher", *arguments, user=user))
            programs.append(site.start("tarnex-console", user=user))
        for program in programs:
            self.assertEqual(program.wait(), status)
            # Without settings the links stand at 127.0.0.1 for a moment, where another may be.
            # Nor may that user make a lock there.
            (line,) = program.said("settings file")
            self.assertRegex(line, r"system[/\\]Tarnex\.ini")
            self.assertIn(said, line)
        self.assertEqual(list(site.path("system").iterdir()), before)

    def test_without_a_readable_settings_file_every_program_says_so_and_ends(self):
        self.ends_with(0, "is missing")
        self.ends_with(66, "cannot be read (it is no", make=lambda file: file.mkdir())
        self.ends_with(66, "(it is longer than 1 MiB)", make=lambda file: file.write_bytes(b";\n" * (1 << 20)))
        if harness.windows:
            return
        reader = NOBODY if os.geteuid() == 0 else None
        self.ends_with(77, "(permission denied)", reader, lambda file: file.touch(0o000))


harness.run(StartStop)
