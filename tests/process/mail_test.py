"""Notifications by mail, from the service to a mail server."""

import re
import smtplib
import socket
import unittest

from aiosmtpd.controller import Controller

import harness
from harness import Program, Site

ALARM = "txSendSMS1031001srv{[b^k^]}98%"
SUBJECT = r'Subject: Tarnex K Serial : \d{4}-\d\d-\d\d 设备1"98%"的CPU负荷异常'


class Keeper:
    """A mail server's handler that keeps the contents of the mails."""

    def __init__(self):
        self.mails = []

    async def handle_DATA(self, server, session, envelope):
        self.mails.append((session.host_name, envelope.mail_from, envelope.rcpt_tos, envelope.content))
        return "250 OK"


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

    def test_every_byte_reaches_a_server_of_others(self):
        keeper = Keeper()
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        server = Controller(keeper, hostname="127.0.0.1", port=port)
        server.start()
        self.addCleanup(server.stop)
        self.start(port)
        harness.wait_until(lambda: keeper.mails, "a mail")
        (mail,) = keeper.mails
        self.assertEqual(mail[:3], ("unit@site.example", "unit@site.example", ["staff@site.example"]))
        *header, text = mail[3].decode("gbk").removesuffix("\r\n\r\n\r\n").split("\r\n")
        self.assertEqual(
            header,
            [
                "From:Tarnex K Serial <unit@site.example>",
                "To: <staff@site.example>",
                "Tarnex K Serial:http://tarnex.example",
                "Subject: Tarnex K Serial : " + text,
                "",
            ],
        )

    def test_the_sink_against_another_client(self):
        sink, port = self.sink("--user", "u", "--password", "p")
        with smtplib.SMTP("127.0.0.1", port) as client:
            with self.assertRaises(smtplib.SMTPAuthenticationError):
                client.login("u", "x", initial_response_ok=False)
            client.login("u", "p", initial_response_ok=False)
            client.sendmail("a@b.example", ["c@d.example"], b"Subject: x\r\n\r\n.dot\x1b\r\n")
        sink.wait_for(".dot\\x1B")
        _, port = self.sink("--refuse", "rcpt")
        with smtplib.SMTP("127.0.0.1", port) as client:
            with self.assertRaises(smtplib.SMTPRecipientsRefused):
                client.sendmail("a@b.example", ["c@d.example"], "x")

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
