"""Notifications by mail, from the service to a mail server."""

import re
import smtplib
import socket
import unittest

from aiosmtpd.controller import Controller

import harness
from harness import Program, Site

ALARM = "txSendSMS1031001srv{[b^k^]}98%"
SUBJECT_AND_TEXT = r'Subject: Tarnex K Serial : (\d{4}-\d\d-\d\d 设备1"98%"的CPU负荷异常.*)\r\n\r\n\1\r\n'


class Keeper:
    """A mail server's handler that keeps the mails."""

    def __init__(self):
        self.mails = []

    async def handle_DATA(self, server, session, envelope):
        text = envelope.content.decode("gbk")
        self.mails.append((session.host_name, envelope.mail_from, envelope.rcpt_tos, text))
        return "250 OK"


class Mail(unittest.TestCase):
    def sink(self, *arguments, port=0):
        """A running mail server, and its port."""
        sink = Program(self, "tarnex-mail-sink", ["--port", str(port), *arguments])
        return sink, int(re.search(r"port (\d+)", sink.wait_for("listening on port"))[1])

    def start(self, port, **changes):
        """A service that mails through that port and was asked for a mail; its site and itself."""
        addresses = {"Text1(58)": "unit@site.example", "Text1(59)": "staff@site.example"}
        site = Site(self, **{"Text1(29)": f"localhost:{port}", **addresses, **changes})
        service = site.service()
        site.monitor().send(ALARM)
        return site, service

    def free_port(self):
        with socket.create_server(("127.0.0.1", 0)) as free:
            return free.getsockname()[1]

    def test_a_server_of_others_takes_it(self):
        keeper = Keeper()
        port = self.free_port()
        server = Controller(keeper, hostname="127.0.0.1", port=port)
        server.start()
        self.addCleanup(server.stop)
        self.start(port)
        ((host, sender, recipients, text),) = harness.wait_until(lambda: keeper.mails, "a mail")
        self.assertEqual((host, sender), ("unit@site.example", "unit@site.example"))
        self.assertEqual(recipients, ["staff@site.example"])
        self.assertRegex(text, SUBJECT_AND_TEXT)

    def test_the_sink_takes_the_mail_of_others(self):
        sink, port = self.sink("--user", "u", "--password", "p")
        with smtplib.SMTP("127.0.0.1", port) as client:
            with self.assertRaises(smtplib.SMTPAuthenticationError):
                client.login("u", "x", initial_response_ok=False)
            client.login("u", "p", initial_response_ok=False)
            client.sendmail("a@b.example", ["c@d.example"], b"Subject: x\r\n\r\n.dot\x1b\r\n")
        sink.wait_for(".dot\\x1B")

    def test_what_is_in_the_way_is_told_once_and_mails_leave_once_it_is_gone(self):
        refusing, refusing_port = self.sink("--user", "张三", "--password", "geheim 1")
        wrong = {"Check1(40)": "1", "Text1(30)": "张三", "Text1(31)": "wrong"}
        site, refused = self.start(refusing_port, **wrong)
        free_port = self.free_port()
        _, unanswered = self.start(free_port)

        line = refused.wait_for("Mail cannot be sent")
        self.assertIn(f'server "localhost:{refusing_port}": it answered "535', line)
        self.assertIn("Check the user name and password, Text1(30) and Text1(31)", line)
        line = unanswered.wait_for("Mail cannot be sent")
        self.assertIn("connection refused. Check the server, Text1(29), and the network.", line)

        site.edit_setting("Text1(31)", "geheim 1")
        late_sink, _ = self.sink(port=free_port)
        for service, sink, end in ((refused, refusing, ", after log-in"), (unanswered, late_sink, "")):
            line = sink.wait_for("mail from")
            self.assertTrue(line.endswith("unit@site.example to staff@site.example" + end), line)
            sink.wait_for("-- end of mail")
            service.wait_for("Mail works again.")
            self.assertEqual(service.stop(), 0)
            self.assertEqual(len(service.lines), 2, service.lines)


harness.run(Mail)
