"""How the service starts, is stopped and ends by itself."""

import os
import signal
import unittest

import harness
from harness import NOBODY, Site, wait_until


class StartStop(unittest.TestCase):
    def files(self, folder):
        return sorted(os.path.join(top, name) for top, _, names in os.walk(folder) for name in names)

    def test_any_argument_ends_it_in_silence(self):
        site = Site(self)
        before = self.files(site.folder)
        for arguments in (["/e"], ["/x"], ["--help"], ["-h"], ["/i", "/u"], ["run"]):
            with self.subTest(arguments):
                service = site.service(*arguments, wait=False)
                self.assertEqual(service.wait(), 0)
                self.assertEqual(service.lines, [])
                self.assertEqual(self.files(site.folder), before)

    def test_a_second_instance_ends_in_silence_and_leaves_the_first_alone(self):
        site = Site(self)
        first = site.service()
        monitor = site.monitor()
        monitor.greet()
        second = site.service(wait=False)
        self.assertEqual(second.wait(), 0)
        self.assertEqual(second.lines, [])
        monitor.greet()
        self.assertEqual(first.stop(), 0)
        self.assertEqual(first.lines, [])
        monitor.wait_for(b"tx-SMSEnd")

    def test_pause_and_continue_stop_nothing(self):
        site = Site(self)
        service = site.service()
        monitor = site.monitor()
        for number in (signal.SIGUSR1, signal.SIGUSR1, signal.SIGUSR2):
            service.send_signal(number)
            monitor.greet()
        self.assertEqual(service.stop(), 0)

    def test_it_outlives_the_reader_of_its_messages(self):
        reader, writer = os.pipe()
        os.close(reader)
        site = Site(self, log=False)
        service = site.service(stdout=writer, stderr=writer)  # it misses its log, but whom to tell?
        os.close(writer)
        site.monitor().greet()
        self.assertEqual(service.stop(), 0)

    def test_it_stops_at_once_while_a_command_waits(self):
        running = []
        for number in (signal.SIGTERM, signal.SIGINT):
            site = Site(self)
            unit = site.unit()
            unit.tell("silent on")
            service = site.service()
            monitor = site.monitor()
            monitor.greet()
            running.append((number, unit, service, monitor))
        for number, unit, service, monitor in running:
            unit.wait_for("Hello,tarnex")
            self.assertEqual(service.stop(number), 0)
            self.assertEqual(service.lines, [])
            monitor.wait_for(b"tx-SMSEnd")

    def test_without_usable_settings_it_says_what_to_do_and_ends(self):
        def end_with(content, mode=None, user=None):
            site = Site(self)
            os.remove(site.settings)
            if content == "folder":
                os.mkdir(site.settings)
            elif content is not None:
                with open(site.settings, "wb") as file:
                    file.write(content)
            if mode is not None:
                os.chmod(site.settings, mode)
            os.chmod(site.folder, 0o755)
            before = self.files(site.path("system"))
            # Without settings the links stand at 127.0.0.1 for a moment, where others may be.
            service = site.service(wait=False, user=user)
            self.assertEqual(service.wait(), 0)
            self.assertEqual(self.files(site.path("system")), before)
            lines = [line for line in service.lines if "The control link" not in line]
            self.assertEqual(len(lines), 1, lines)
            self.assertIn(site.settings, lines[0])
            return lines[0]

        whole = Site(self).settings_text().encode("gbk")
        half = whole[: whole.index(b"Check1(13)") + 8]
        rubbish = bytes(range(256)) * 300
        is_root = os.geteuid() == 0
        for content in (None, "folder"):
            self.assertIn("is missing or cannot be read", end_with(content))
        self.assertIn(
            "is missing or cannot be read", end_with(whole, 0o000, NOBODY if is_root else None)
        )
        for content in (b"", half, rubbish, b"\xff\xfe" + whole.decode("gbk").encode("utf-16-le")):
            self.assertIn("Check1(13)=1", end_with(content))
        self.assertIn("Check1(13)=1", end_with(whole.replace(b"(13)=1", b"(13)=01")))
        disabled = whole.replace(b"Enable=Enable", b"Enable=Disable")
        self.assertIn("Enable=Disable", end_with(disabled))

    def test_without_windir_it_creates_nothing(self):
        base = "/var/lib/tarnexcomm"
        if os.path.exists(base):
            self.skipTest(f"{base} belongs to an installed service")
        site = Site(self)
        os.remove(site.settings)
        before = self.files(site.folder)
        for environment in ({}, {"WINDIR": ""}):
            with self.subTest(environment):
                service = site.service(
                    wait=False, cwd=site.folder, environment=environment, without=["WINDIR"]
                )
                self.assertEqual(service.wait(), 0)
                self.assertTrue(service.said(base + "/system/Tarnex.ini is missing"))
                self.assertFalse(os.path.exists(base))
                self.assertFalse(os.path.exists("/system"))
        os.remove(site.path("lock"))
        self.assertEqual(self.files(site.folder), before)

    def test_the_settings_end_it_while_it_runs(self):
        changes = ({"Enable": "Disable"}, {"Check1(13)": "0"}, None)
        words = ("remove the line Enable=Disable", "Check1(13)=1", "is missing")
        running = []
        for _ in changes:
            site = Site(self)
            service = site.service()
            monitor = site.monitor()
            monitor.greet()
            running.append((site, service, monitor))
        for (site, _, _), change in zip(running, changes):
            if change is None:
                os.remove(site.settings)
            else:
                site.write_settings(change)
        for (site, service, monitor), word in zip(running, words):
            self.assertEqual(service.wait(), 0)
            self.assertEqual(len(service.lines), 1)
            self.assertIn(word, service.lines[0])
            self.assertFalse(site.is_open())
            with self.assertRaises(AssertionError):
                monitor.wait_for(b"tx-SMSEnd", limit=0.1)


harness.run(StartStop)
