"""The service with its unit on a real serial line."""

import contextlib
import fcntl
import os
import sqlite3
import tty
import unittest

import harness
from harness import FIRST_NUMBER, READY, Site, wait_until

ALARM = "txSendSMS1031010srv{[b^k^]}98%"
ALARM_TEXT = '设备1"98%"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。'


class FakeUnit:
    """A serial line at whose other end stands this test, down to the byte."""

    ANSWERS = {
        b"Hello,tarnex": b"Hello,sever",
        b"ChkVer": b"FAKE VERSION 1",
        b"RDSerial": b"Serial(7)",
        b"RDCSQ": b"TXCSQ(20,0)",
    }

    def __init__(self, test):
        self.written = 0
        self._own, self.programs_end = os.openpty()
        test.addCleanup(os.close, self._own)
        test.addCleanup(os.close, self.programs_end)
        self.path = os.ttyname(self.programs_end)
        tty.setraw(self.programs_end)
        os.set_blocking(self._own, False)
        self._received = b""
        self._answered = 0

    def commands(self):
        """All that came so far, without the ends of the lines."""
        with contextlib.suppress(BlockingIOError):
            self._received += os.read(self._own, 4096)
        return [line.removeprefix(b"~TX:") for line in self._received.split(b"\r\n")[:-1]]

    def greetings(self):
        return self.commands().count(b"Hello,tarnex")

    def _write(self, data):
        with contextlib.suppress(BlockingIOError):
            self.written += os.write(self._own, data)

    def flood_until(self, condition, what):
        """Without a line end."""
        wait_until(lambda: self._write(b"\xb2TX:\x00#~\xff?" * 100) or condition(), what)

    def answer_until(self, condition, what):
        """Among rubbish."""
        wait_until(lambda: self._answer() or condition(), what)

    def _answer(self):
        for command in self.commands()[self._answered :]:
            self._write(b"\x00\x01\x1b[2J\x7f\xff\r\n~TX:\x81\x81(\r\n\r\n")
            self._write(b"TX:" + self.ANSWERS.get(command, b"OK") + b"\r\n")
            self._answered += 1


class Unit(unittest.TestCase):
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
        rows = [("门卫", '设备1"门卫"的通讯正常。'), (None, "of another program"), ("98%", ALARM_TEXT)]
        self.assertEqual(site.rows("Detail, Message"), rows)

        # Another program writes to the file in place, the service puts a new file there.
        site.edit_setting("Text1(34)", "13900000009")
        unit.wait_for("command: WRNO1(13900000009)")
        wait_until(lambda: site.setting("TelNo1") == "13900000009", "the new number on record")

        self.assertEqual(service.stop(), 0)
        monitor.wait_for(b"tx-SMSEnd")
        self.assertEqual(site.without_own_settings(), site.settings_text({"Text1(34)": "13900000009"}))
        self.assertEqual(len(service.lines), 2, service.lines)

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

    def test_noise_on_the_line(self):
        line = FakeUnit(self)
        site = Site(self, **{"COM3": line.path})
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        line.flood_until(lambda: line.greetings() == 2, "two greetings")
        written, memory, cpu = line.written, service.resident_kib(), service.cpu_seconds()
        line.flood_until(lambda: line.greetings() == 3, "a third one")
        self.assertGreater(line.written - written, 100_000)
        # What is freed is given back a little later; what is kept only becomes more.
        line.flood_until(lambda: service.resident_kib() - memory < 400, "as little memory")
        self.assertLess(service.cpu_seconds() - cpu, 2)
        line.answer_until(lambda: READY in monitor.received, "a unit in use")
        self.assertEqual((service.stop(), service.lines), (0, []))

    def test_debug_mode_and_ports_that_an_operator_must_free(self):
        forbidden, held = FakeUnit(self), FakeUnit(self)
        os.chmod(forbidden.path, 0)
        os.chmod(held.path, 0o666)
        fcntl.flock(held.programs_end, fcntl.LOCK_EX)
        site = Site(self, **{"COM3": forbidden.path, "COM20": held.path, "DebugMode": "On"})
        service = site.service(user=site.give_away())
        monitor = site.monitor()
        monitor.greet()
        first, second = (service.wait_for("tarnexcomm: COM", times) for times in (1, 2))
        self.assertIn(f"COM3 ({forbidden.path}) may not be opened. Add the user", first)
        self.assertIn(f"COM20 ({held.path}) is held by another program. End that", second)
        os.chmod(forbidden.path, 0o666)
        service.wait_for(f"COM3 ({forbidden.path}) can be opened now.")
        service.wait_for("List2: Send:~TX:Hello,tarnex\\r\\n")
        found = "mList1: 在 com3 找到 Tarnex"
        forbidden.answer_until(lambda: service.said(found), found)
        service.wait_for("List2: Get :\\x00\\x01\\x1B[2J\\x7F")
        self.assertEqual(service.stop(), 0)
        for line in service.lines:
            self.assertRegex(line, "^(List[12]|mList[1-5]|tarnexcomm): ")
            self.assertTrue(line.isprintable(), line)


harness.run(Unit)
