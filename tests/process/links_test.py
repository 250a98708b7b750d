"""The control links over real sockets."""

import unittest

import harness
from harness import Site, wait_until

ALARM = "txSendSMS1031000srv{[b^k^]}"
HUGE = 65507  # bytes, the largest datagram


class Links(unittest.TestCase):
    def test_an_address_of_another_machine_is_told_in_one_line(self):
        site = Site(self, **{"BindAddress": "192.0.2.1"})
        service = site.start("tarnexcomm")
        line = service.wait_for("correct BindAddress in section [ControlLink]")
        self.assertIn("7840, 7841, 7842, 7843, 7844 (not an address of this machine)", line)
        self.assertEqual((service.stop(), service.lines), (0, [line]))

    def test_datagrams_that_nobody_should_send(self):
        site = Site(self)
        service = site.service()
        monitor, stranger = site.monitor(), site.monitor()
        monitor.greet("friend")
        wait_until(site.rows, "the greeting in the log")
        memory = service.resident_kib()
        strange = [b"", b"\r\n", b"\x00" * HUGE, b"\xff" * HUGE, bytes(range(256)) * 200, b"\x81"]
        strange += [b"unknown", b"tx-SMSEnd", b"txHeartSv ", b"txheartsv", b"txHelloN"]
        for message in strange * 5:
            monitor.send(message)
            stranger.send(message)
        stranger.send(ALARM + "of a stranger")
        for request in (b"txSendSMS1031010" + b"\xb2\xe2" * 32000, b"txSendSMS", b"txSendSMS\x81"):
            monitor.send(request)
        wait_until(lambda: len(site.rows()) == 5, "all notifications in the log")
        self.assertEqual(site.rows("Detail")[:2], [("friend",), ("of a stranger",)])
        stranger.send(b"txHelloNx" + b"n" * (HUGE - 9))
        stranger.wait_for(b"txYesRigh")
        self.assertLess(service.resident_kib() - memory, 16 * 1024)
        self.assertEqual((service.stop(), service.lines), (0, []))
        stranger.wait_for(b"tx-SMSEnd")  # goes to whoever has greeted last, and to nobody else
        self.assertNotIn(b"tx-SMSEnd", monitor.received)


harness.run(Links)
