"""The mail sender over real TCP, against a server of others and against tarnex-mail-sink.

Usage: mail_smtp_test.py MAIL_SENDER_DRIVER TARNEX_MAIL_SINK
"""

import asyncio
import os
import re
import smtplib
import subprocess
import sys
import tempfile
import threading
import unittest

from aiosmtpd.smtp import SMTP

DRIVER, SINK = sys.argv[1:3]
LIMIT = 120  # seconds after which a program hangs

TEXT = "2024-05-06 设备1警报，请检查。"


class Server:
    """aiosmtpd in a thread. Its handler keeps the mails and refuses the first recipients."""

    def __init__(self, refusals=0):
        self.refusals = refusals
        self.mails = []
        self.loop = asyncio.new_event_loop()
        self.server = self.loop.run_until_complete(
            self.loop.create_server(lambda: SMTP(self, loop=self.loop), "127.0.0.1", 0)
        )
        self.port = self.server.sockets[0].getsockname()[1]
        self.thread = threading.Thread(target=self.loop.run_forever)
        self.thread.start()

    async def handle_RCPT(self, server, session, envelope, address, options):
        if self.refusals > 0:
            self.refusals -= 1
            return "550 no such user"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.mails.append((session.host_name, envelope.mail_from, envelope.rcpt_tos, envelope.content))
        return "250 OK"

    def stop(self):
        self.loop.call_soon_threadsafe(self.loop.stop)
        self.thread.join()
        self.server.close()
        self.loop.close()


class Sink:
    """tarnex-mail-sink on a free port."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen(
            [SINK, "--port", "0", *arguments], stdout=subprocess.PIPE, encoding="utf-8"
        )
        self.port = int(re.search(r"port (\d+)", self.process.stdout.readline())[1])

    def stop(self):
        """Ends it; what it has printed."""
        self.process.terminate()
        output, _ = self.process.communicate(timeout=LIMIT)
        assert self.process.returncode == 0
        return output


def settings(server, auth="0", user="", password=""):
    return (
        f"[Check]\r\nCheck1(40)={auth}\r\n[Text]\r\nText1(29)={server}\r\n"
        f"Text1(30)={user}\r\nText1(31)={password}\r\n"
        "Text1(58)=unit@site.example\r\nText1(59)=staff@site.example\r\n"
    ).encode("gbk")


def send(content, *texts):
    """Runs the mail sender until all texts are confirmed; its standard output and error."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "Tarnex.ini")
        with open(path, "wb") as file:
            file.write(content)
        done = subprocess.run(
            [DRIVER, path, *texts], capture_output=True, encoding="utf-8", timeout=LIMIT, check=True
        )
        return done.stdout, done.stderr


def content_of(text):
    return (
        "From:Tarnex K Serial <unit@site.example>\r\n"
        "To: <staff@site.example>\r\n"
        "Tarnex K Serial:http://tarnex.example\r\n"
        f"Subject: Tarnex K Serial : {text}\r\n\r\n{text}\r\n\r\n\r\n"
    ).encode("gbk")


class MailSmtp(unittest.TestCase):
    def test_refused_mail_goes_behind_the_next_and_every_byte_arrives(self):
        server = Server(refusals=1)
        self.addCleanup(server.stop)
        output, errors = send(settings(f"localhost:{server.port}"), TEXT, "second")
        self.assertEqual(
            server.mails,
            [
                ("unit@site.example", "unit@site.example", ["staff@site.example"], content_of(text))
                for text in ("second", TEXT)
            ],
        )
        self.assertEqual(output, "sent 2, failed attempts 1\n")
        first, second = errors.splitlines()
        self.assertIn('"550 no such user" to RCPT TO', first)
        self.assertEqual(second, "Mail works again.")

    def test_log_in_after_helo(self):
        sink = Sink("--user", "张三", "--password", "geheim 1")
        send(settings(f"127.0.0.1:{sink.port}", "1", "张三", "geheim 1"), TEXT)
        output = sink.stop()
        self.assertIn("mail from unit@site.example to staff@site.example, after log-in\n", output)
        expected = content_of(TEXT).decode("gbk").replace("\r\n", "\n")
        self.assertIn(expected + "-- end of mail\n", output)

    def test_the_sink_against_another_client(self):
        sink = Sink("--user", "u", "--password", "p")
        with smtplib.SMTP("127.0.0.1", sink.port) as client:
            self.assertRaises(
                smtplib.SMTPAuthenticationError, client.login, "u", "x", initial_response_ok=False
            )
            client.login("u", "p", initial_response_ok=False)
            client.sendmail("a@b.example", ["c@d.example"], b"Subject: x\r\n\r\n.dot\x1b\r\n")
        self.assertIn("Subject: x\n\n.dot\\x1B\n", sink.stop())

        sink = Sink("--refuse", "rcpt")
        with smtplib.SMTP("127.0.0.1", sink.port) as client:
            self.assertRaises(
                smtplib.SMTPRecipientsRefused, client.sendmail, "a@b.example", ["c@d.example"], "x"
            )
        sink.stop()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
