"""Notifications by mail, from the service to a mail server."""

import re
import socket
import unittest

import harness
from harness import Program, Site

ALARM = "txSendSMS1031001srv{[b^k^]}98%"
SUBJECT = r'Subject: Tarnex K Serial : \d{4}-\d\d-\d\d 设备1"98%"的CPU负荷异常'


class Mail(unittest.TestCase):
    def sink(self, *arguments, port=0):
        """A running mail server, and its port."""
        program = harness.programs + "/tarnex-mail-sink"
        sink = Program(self, program, ["--port", str(port), *arguments])
        return sink, int(re.search(r"port (\d+)", sink.wait_for("listening on port"))[1])

    def start(self, port, **changes):
        """A service that mails through that port and was asked for a mail; its site and itself."""
        addresses = {"Text1(58)": "unit@site.example", "Text1(59)": "staff@site.example"}
        site = Site(self, **{"Text1(29)": f"localhost:{port}", **addresses, **changes})
        service = site.service()
        site.monitor().send(ALARM)
        return site, service

    def test_with_and_without_log_in(self):
        account = {"Check1(40)": "1", "Text1(30)": "张三", "Text1(31)": "geheim 1"}
        open_sink, open_port = self.sink()
        strict_sink, strict_port = self.sink("--user", "张三", "--password", "geheim 1")
        services = [self.start(open_port)[1], self.start(strict_port, **account)[1]]
        for sink, end in ((open_sink, ""), (strict_sink, ", after log-in")):
            line = sink.wait_for("mail from")
            self.assertTrue(line.endswith("unit@site.example to staff@site.example" + end), line)
            self.assertRegex(sink.wait_for("Subject: "), SUBJECT)
            sink.wait_for("-- end of mail")
        for service in services:
            self.assertEqual(service.stop(), 0)
            self.assertEqual(service.lines, [])

    def test_what_is_in_the_way_is_told_once_and_mails_leave_once_it_is_gone(self):
        refusing, refusing_port = self.sink("--user", "u", "--password", "right")
        wrong = {"Check1(40)": "1", "Text1(30)": "u", "Text1(31)": "wrong"}
        site, refused = self.start(refusing_port, **wrong)
        with socket.create_server(("127.0.0.1", 0)) as free:
            free_port = free.getsockname()[1]
        _, unanswered = self.start(free_port)

        line = refused.wait_for("Mail cannot be sent")
        self.assertIn(f'server "localhost:{refusing_port}": it answered "535', line)
        self.assertIn("Check the user name and password, Text1(30) and Text1(31)", line)
        line = unanswered.wait_for("Mail cannot be sent")
        self.assertIn("connection refused. Check the server, Text1(29), and the network.", line)

        site.edit_setting("Text1(31)", "right")
        late_sink, _ = self.sink(port=free_port)
        for service, sink in ((refused, refusing), (unanswered, late_sink)):
            sink.wait_for("-- end of mail")
            service.wait_for("Mail works again.")
            self.assertEqual(service.stop(), 0)
            self.assertEqual(len(service.lines), 2, service.lines)


harness.run(Mail)
