"""The service with its unit on a real serial line."""

import fcntl
import os
import resource
import sqlite3
import tty
import unittest

import harness
from harness import FIRST_NUMBER, READY, Site, linux_only, there, wait_until

ALARM = "txSendSMS1031010srv{[b^k^]}98%"
ALARM_TEXT = '设备1"98%"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。'


class Unit(unittest.TestCase):
    def line(self):
        """Both ends of a serial line, the second for a program."""
        ends = os.openpty()
        for end in ends:
            self.addCleanup(os.close, end)
        tty.setraw(ends[1])
        return ends

    def test_the_main_job_while_others_use_log_and_settings(self):
        site = Site(self)
        unit = site.unit()
        service = site.service()
        monitor = site.monitor()
        monitor.greet("门卫")
        wait_until(site.rows, "a row in the log")
        other = sqlite3.connect(site.log)
        self.addCleanup(other.close)
        other.execute("INSERT INTO Log (Message) VALUES ('of another program')")
        other.commit()
        reader = sqlite3.connect(site.log)
        self.addCleanup(reader.close)
        reader.execute("BEGIN")
        self.assertEqual(len(reader.execute("SELECT * FROM Log").fetchall()), 2)

        # Another program empties the settings file and writes it anew.
        site.write_settings({"Text1(37)": "/nowhere/log.db"})
        service.wait_for("/nowhere/log.db is missing")
        site.write_settings()
        service.wait_for("The log works again; rows lost since the start: 0.")

        monitor.wait_for(READY)
        monitor.send(ALARM)
        unit.wait_for(f"SMS to number 1 ({FIRST_NUMBER}): {ALARM_TEXT}")
        self.assertEqual(len(reader.execute("SELECT * FROM Log").fetchall()), 2)

        if not harness.windows:  # What a full disk is to programs: files do not grow. Wine does not.
            usual = resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (100, resource.RLIM_INFINITY))
            monitor.send(ALARM)
            service.wait_for("look for a full disk, a used-up quota or a failing disk")
            resource.prlimit(service.pid, resource.RLIMIT_FSIZE, usual)
        rows = [("门卫", '设备1"门卫"的通讯正常。'), (None, "of another program"), ("98%", ALARM_TEXT)]
        self.assertEqual(site.rows("Detail, Message"), rows)

        # Another program writes to the file in place, the service puts a new file there.
        site.edit_setting("Text1(34)", "13900000009")
        unit.wait_for("command: WRNO1(13900000009)")
        wait_until(lambda: site.setting("TelNo1") == "13900000009", "the new number on record")

        wait_until(lambda: not service.runs(), "the end", service.end_session)
        self.assertEqual(service.wait(), 0)
        if harness.windows:  # which ends as a whole
            self.assertNotIn(b"tx-SMSEnd", monitor.received)
        else:
            monitor.wait_for(b"tx-SMSEnd")
        self.assertEqual(site.without_own_settings(), site.settings_text({"Text1(34)": "13900000009"}))
        # The history writes a moment later: it may have met the full disk or not.
        said = [line for line in service.lines if "The history" not in line]
        self.assertEqual(len(said), 3 if harness.windows else 4, said)
        self.assertRegex(said[-1], "SMS waits? and (is|are) not sent")

    def test_an_adapter_pulled_while_a_command_waits_and_put_back(self):
        site = Site(self)
        unit = site.unit()
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        wait_until(lambda: site.setting("TelNo1") == "@v@", "the greeting is answered")
        unit.tell("silent on")
        unit.wait_for("WRNO1")
        unit.tell("silent off")
        unit.tell("unplug")
        monitor.wait_for(b"txNexLost")
        monitor.greet()
        cpu = service.cpu_seconds()
        monitor.wait_for(b"tx-NoConn")  # the search, 15 s after the loss
        self.assertLess(service.cpu_seconds() - cpu, 2)
        seen = len(unit.said("Hello,tarnex"))
        unit.tell("plug")
        unit.wait_for("Hello,tarnex", seen + 1)
        self.assertEqual(service.lines, [])

    @linux_only
    def test_debug_mode_and_ports_that_an_operator_must_free(self):
        (unit, port), (_, held_port) = self.line(), self.line()
        forbidden, held = os.ttyname(port), os.ttyname(held_port)
        os.chmod(forbidden, 0)
        os.chmod(held, 0o666)
        fcntl.flock(held_port, fcntl.LOCK_EX)
        site = Site(self, **{"COM3": forbidden, "COM20": held, "DebugMode": "On"})
        service = site.service(user=site.give_away())
        site.monitor().greet()
        first, second = (service.wait_for("tarnexcomm: COM", times) for times in (1, 2))
        self.assertIn(f"COM3 ({forbidden}) may not be opened. Add the user", first)
        self.assertIn(f"COM20 ({held}) is held by another program. End that", second)
        os.chmod(forbidden, 0o666)
        service.wait_for(f"COM3 ({forbidden}) can be opened now.")
        service.wait_for("List2: Send:~TX:Hello,tarnex\\r\\n")
        os.write(unit, b"\x00\x01\x1b[2J\x7f\xff\r\n~TX:\x81\x81(\r\n\r\nTX:Hello,sever\r\n")
        service.wait_for("mList1: 在 com3 找到 Tarnex")
        service.wait_for("List2: Get :\\x00\\x01\\x1B[2J\\x7F")
        self.assertEqual(service.stop(), 0)
        for line in service.lines:
            self.assertRegex(line, "^(List[12]|mList[1-5]|tarnexcomm): ")
            self.assertTrue(line.isprintable(), line)


harness.run(Unit)
