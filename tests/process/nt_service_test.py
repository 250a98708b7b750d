"""The service under the service manager of Windows, as far as Wine has one, and beside that of Linux."""

import os
import pathlib
import shutil
import unittest

import harness
from harness import Site, there, wait_until

STOPPED, RUNNING, PAUSED = 1, 4, 7
SERVICES = r"HKLM\SYSTEM\CurrentControlSet\Services"


class NtService(unittest.TestCase):
    def ended(self, argument):
        return self.site.start("tarnexcomm", argument).wait()

    def manager(self, what):
        """What service-control prints: "STATE EXIT_STATUS" or an error."""
        control = harness.Program(self, shutil.which("wine"), [self.control, what])
        control.wait()
        return control.lines[-1]

    def becomes(self, state, exit_status=0):
        wait_until(lambda: self.manager("query") == f"{state} {exit_status}", f"state {state}")

    def registered(self, key, name, value):
        query = ["reg", "query", rf"{SERVICES}\{key}", "/v", name]
        harness.Program(self, shutil.which("wine"), query).wait_for(f"SZ    {value}")

    def test_it_lives_under_the_service_manager(self):
        self.site = Site(self, DebugMode="On")
        self.control = pathlib.Path(harness.windows).parent / "tests/service-control.exe"
        program = there(pathlib.Path(harness.windows) / "tarnexcomm.exe")
        for _ in range(2):  # the second brings it up to date
            self.assertEqual(self.ended("/i"), 0)
        self.registered("TarnexComm", "ImagePath", f'"{program}"')
        self.registered(r"TarnexComm\Parameters", "TimerInterval", "300")
        self.registered(r"EventLog\Application\TarnexComm", "EventMessageFile", program)

        for what, state in ("start", RUNNING), ("pause", PAUSED), ("continue", RUNNING), ("stop", STOPPED):
            self.assertNotIn("error", self.manager(what))
            self.becomes(state)

        self.site.settings.unlink()
        self.site.settings.mkdir()
        self.manager("start")
        self.becomes(STOPPED, 66)  # a start that fails says how
        self.site.settings.rmdir()
        self.site.write_settings()

        self.manager("start")
        self.becomes(RUNNING)
        status = self.site.path("TarnexComm/status.json")
        wait_until(status.exists, "the status, where tarnexctl looks")
        wait_until(self.site.path("system/Tarnex-debug.log").exists, "the debug lines, which no window shows")
        self.assertEqual(self.ended("/u"), 0)  # takes it away while it runs
        self.assertEqual(self.manager("query"), "error 1060")  # there is none
        self.assertEqual(self.ended("/u"), 69)

    def test_a_simulated_day_is_that_of_linux(self):  # with sanitizers a month takes minutes there
        mail = {"Text1(29)": "mail.example", "Text1(58)": "a@b.example", "Text1(59)": "c@d.example"}
        site = Site(self, log=False, **mail)
        own = os.path.join(harness.programs, "tarnexctl")  # a path: that of this machine
        day = "simulate", "--days", "1", "--start", "2024-05-06", "--json"
        both = [site.start(name, *day) for name in ("tarnexctl", own)]
        self.assertEqual([program.wait() for program in both], [0, 0])
        for sent in ('"sms_sent": 1,', '"mail_sent": true'):
            self.assertNotEqual(both[0].said(sent), [])
        self.assertEqual(both[0].lines, both[1].lines)


harness.FOLDER = "windows"  # what the service manager was told when it began
harness.run(NtService)
