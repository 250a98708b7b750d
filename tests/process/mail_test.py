"""Notifications by mail, from the service to a mail server."""

import re
import signal
import smtplib
import socket
import unittest

from aiosmtpd.controller import Controller

import harness
from harness import Program, Site

SETTINGS = {"Text1(58)": "unit@site.example", "Text1(59)": "staff@site.example"}
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
    def test_a_server_of_others_takes_it(self):
        keeper = Keeper()
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        server = Controller(keeper, hostname="127.0.0.1", port=port)
        server.start()
        self.addCleanup(server.stop)
        site = Site(self, **SETTINGS, **{"Text1(29)": f"localhost:{port}"})
        site.service()
        site.monitor().send(ALARM)
        ((host, sender, recipients, text),) = harness.wait_until(lambda: keeper.mails, "a mail")
        self.assertEqual((host, sender), ("unit@site.example", "unit@site.example"))
        self.assertEqual(recipients, ["staff@site.example"])
        self.assertRegex(text, SUBJECT_AND_TEXT)

    def test_the_sink_takes_the_mail_of_others(self):
        sink = Program(self, "tarnex-mail-sink", ["--port", "0", "--user", "u", "--password", "p"])
        port = int(re.search(r"port (\d+)", sink.wait_for("listening on port"))[1])
        with smtplib.SMTP("127.0.0.1", port) as client:
            with self.assertRaises(smtplib.SMTPAuthenticationError):
                client.login("u", "x", initial_response_ok=False)
            client.login("u", "p", initial_response_ok=False)
            client.sendmail("a@b.example", ["c@d.example"], b"Subject: x\r\n\r\n.dot\x1b\r\n")
        sink.wait_for(".dot\\x1B")
        harness.wait_until(lambda: not sink.runs(), "an end that keeps nobody waiting", sink.end_session)
        self.assertEqual(sink.wait(), 0x3A if harness.windows else -signal.SIGHUP)


harness.run(Mail)
