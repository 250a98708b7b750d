"""The log database while something is wrong with it."""

import resource
import unittest

import harness
from harness import READY, Site, wait_until

ALARM = "txSendSMS1031010srv{[b^k^]}"


class Log(unittest.TestCase):
    def test_sms_leave_and_settings_stay_whole_on_a_full_disk(self):
        site = Site(self)
        unit = site.unit()
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        wait_until(site.rows, "a row in the log")
        # What a full disk is to programs: files do not grow.
        no_limit = resource.prlimit(service.pid, resource.RLIMIT_FSIZE)
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (100, no_limit[1]))
        monitor.wait_for(READY)
        monitor.send(ALARM + "1")
        unit.wait_for("SMS to number 1")
        service.wait_for("look for a full disk, a used-up quota or a failing disk")
        service.wait_for("Tarnex.ini cannot be written")
        self.assertEqual(site.read_settings(), site.settings_text())
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, no_limit)
        monitor.send(ALARM + "2")
        service.wait_for("The log works again; rows lost since the start: 1.")
        self.assertEqual(site.rows("Detail"), [("",), ("2",)])
        service.wait_for("Tarnex.ini is written again.")
        self.assertEqual(service.stop(), 0)
        self.assertEqual(len(service.lines), 4, service.lines)
        self.assertEqual(site.without_own_settings(), site.settings_text())


harness.run(Log)
