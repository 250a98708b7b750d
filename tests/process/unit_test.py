"""The service with its unit on a real serial line."""

import fcntl
import os
import select
import sqlite3
import threading
import time
import tty
import unittest

import harness
from harness import FIRST_NUMBER, LIMIT, READY, Site, wait_until

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
        self.talk = None
        self.written = 0
        self._own, self.programs_end = os.openpty()
        self.path = os.ttyname(self.programs_end)
        tty.setraw(self.programs_end)
        os.set_blocking(self._own, False)
        self._commands = []
        self._answered = 0
        self._news = threading.Condition()
        self._running = True
        self._thread = threading.Thread(target=self._run)
        self._thread.start()
        test.addCleanup(self._clean_up)

    def _clean_up(self):
        self._running = False
        self._thread.join()
        os.close(self._own)
        os.close(self.programs_end)

    def _run(self):
        received = b""
        while self._running:
            if select.select([self._own], [], [], 0.005)[0]:
                received += os.read(self._own, 4096)
                *commands, received = received.split(b"\r\n")
                with self._news:
                    self._commands += [command.removeprefix(b"~TX:") for command in commands]
                    self._news.notify_all()
            if self.talk:
                self.talk(self)

    def wait_for(self, command, times=1):
        def heard():
            return sum(c.startswith(command) for c in self._commands) >= times

        with self._news:
            if not self._news.wait_for(heard, LIMIT):
                raise AssertionError(f"not heard: {command}; heard: {self._commands}")

    def _write(self, data):
        try:
            self.written += os.write(self._own, data)
        except BlockingIOError:
            pass

    def flood(self):
        """Without a line end."""
        self._write(b"\xb2TX:\x00#~\xff?" * 100)

    def answer_among_rubbish(self):
        for command in self._commands[self._answered :]:
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
        line.wait_for(b"Hello,tarnex")
        line.talk = FakeUnit.flood
        line.wait_for(b"Hello,tarnex", 2)
        written, memory, cpu = line.written, service.resident_kib(), service.cpu_seconds()
        line.wait_for(b"Hello,tarnex", 3)
        self.assertGreater(line.written - written, 100_000)
        # What is freed is given back a little later; what is kept only becomes more.
        wait_until(lambda: service.resident_kib() - memory < 400, "as little memory as before")
        self.assertLess(service.cpu_seconds() - cpu, 2)
        line.talk = FakeUnit.answer_among_rubbish
        monitor.wait_for(READY)
        monitor.send(ALARM)
        line.wait_for(b"SENDSMS1")
        self.assertLess(service.resident_kib() - memory, 4096)
        self.assertEqual(service.lines, [])
        self.assertEqual(service.stop(), 0)

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
        forbidden.talk = FakeUnit.answer_among_rubbish
        service.wait_for("List2: Get :\\x00\\x01\\x1B[2J\\x7F")
        service.wait_for("mList1: 在 com3 找到 Tarnex")
        self.assertEqual(service.stop(), 0)
        for line in service.lines:
            self.assertRegex(line, "^(List[12]|mList[1-5]|tarnexcomm): ")
            self.assertTrue(line.isprintable(), line)


harness.run(Unit)
