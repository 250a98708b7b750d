"""The service with its unit on a real serial line."""

import contextlib
import fcntl
import os
import sqlite3
import time
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
    RUBBISH = [
        [b"\x00\x01\x1b[2J\x7f\xff\r\n"],
        [b"\xc9", b"\xe8\r\n"],  # a character in two halves
        [b"\r", b"\n"],
        [b"TX\r\n~TX:\x81\x81(\r\n"],
    ]

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

    def count(self, command):
        return sum(each.startswith(command) for each in self.commands())

    def talk(self, act, until, what):
        wait_until(lambda: act() or until(), what)

    def _write(self, data):
        with contextlib.suppress(BlockingIOError):
            self.written += os.write(self._own, data)

    def flood(self):
        """Without a line end."""
        self._write(b"\xb2TX:\x00#~\xff?" * 100)

    def answer_among_rubbish(self):
        for command in self.commands()[self._answered :]:
            for part in self.RUBBISH[self._answered % len(self.RUBBISH)]:
                self._write(part)
                time.sleep(0.05)  # the parts are to be read apart
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
        greeting = '设备1"门卫"的通讯正常。'
        self.assertEqual(
            [row[3:] for row in site.rows()],
            [
                ("Out", "1Nex", greeting, "通讯", "正常", "", "No", "No", "", "门卫"),
                (None, None, "of another program", *[None] * 7),
                ("Out", "1Nex", ALARM_TEXT, "CPU负荷", "异常", "", "Yes", "No", "srv", "98%"),
            ],
        )

        # Another program writes to the file in place, the service puts a new file there.
        site.edit_setting("Text1(34)", "13900000009")
        unit.wait_for("command: WRNO1(13900000009)")
        wait_until(lambda: site.setting("TelNo1") == "13900000009", "the new number on record")

        self.assertEqual(service.stop(), 0)
        monitor.wait_for(b"tx-SMSEnd")
        changed = site.settings_text({"Text1(34)": "13900000009"})
        self.assertEqual(site.without_own_settings(), changed)
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
        wait_until(lambda: site.setting("Text1(33)") == "*", "no port in the settings")
        seen = len(unit.said("Hello,tarnex"))
        unit.tell("plug")
        unit.wait_for("Hello,tarnex", seen + 1)
        wait_until(lambda: site.setting("Text1(33)") == "Com3", "the port in the settings")
        self.assertEqual(service.lines, [])

    def test_noise_on_the_line(self):
        line = FakeUnit(self)
        site = Site(self, **{"COM3": line.path})
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        line.talk(line.flood, lambda: line.count(b"Hello,tarnex") == 2, "two greetings")
        written, memory, cpu = line.written, service.resident_kib(), service.cpu_seconds()
        line.talk(line.flood, lambda: line.count(b"Hello,tarnex") == 3, "a third one")
        self.assertGreater(line.written - written, 100_000)
        # What is freed is given back a little later; what is kept only becomes more.
        line.talk(line.flood, lambda: service.resident_kib() - memory < 400, "as little memory")
        self.assertLess(service.cpu_seconds() - cpu, 2)
        line.talk(line.answer_among_rubbish, lambda: READY in monitor.received, "a unit in use")
        monitor.send(ALARM)
        line.talk(line.answer_among_rubbish, lambda: line.count(b"SENDSMS1"), "an SMS")
        self.assertLess(service.resident_kib() - memory, 4096)
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
        for _ in range(2):
            monitor.wait_for(b"tx-NoConn")
        first, second = service.said("tarnexcomm: COM")
        self.assertIn(f"COM3 ({forbidden.path}) may not be opened. Add the user", first)
        self.assertIn(f"COM20 ({held.path}) is held by another program. End that", second)
        os.chmod(forbidden.path, 0o666)
        fcntl.flock(held.programs_end, fcntl.LOCK_UN)
        service.wait_for(f"COM3 ({forbidden.path}) can be opened now.")
        service.wait_for("List2: Send:~TX:Hello,tarnex\\r\\n")
        found = "mList1: 在 com3 找到 Tarnex"
        forbidden.talk(forbidden.answer_among_rubbish, lambda: service.said(found), found)
        service.wait_for("List2: Get :\\x00\\x01\\x1B[2J\\x7F")
        self.assertEqual(service.stop(), 0)
        for line in service.lines:
            self.assertRegex(line, "^(List[12]|mList[1-5]|tarnexcomm): ")
            self.assertTrue(line.isprintable(), line)


harness.run(Unit)
