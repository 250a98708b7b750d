"""The small monitoring program and the simulated unit, by themselves."""

import socket
import unittest

import harness
from harness import Program


class Simulator(unittest.TestCase):
    def start(self, name, *arguments):
        return Program(self, name, arguments)

    def service(self):
        """A socket in the service's place on link 1."""
        service = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.addCleanup(service.close)
        service.settimeout(harness.LIMIT)
        service.bind((harness.own_address(), 7841))
        return service

    def monitor(self, service, *arguments):
        address = service.getsockname()[0]
        return self.start("tarnex-monitor", "--address", address, "--link", "1", *arguments)

    def test_the_monitor_listens_until_a_code_comes(self):
        service = self.service()
        monitor = self.monitor(service, "listen", "--name", "门卫", "--until", "txControl")
        greeting, sender = service.recvfrom(100)
        self.assertEqual(greeting, "txHelloNx门卫".encode("gbk"))
        service.sendto(b"txControl1301", sender)
        monitor.wait_for("txControl1301  (command by SMS: restart or start web service")
        self.assertEqual(monitor.wait(), 0)
        monitor = self.monitor(service, "listen", "--for", "0.1")
        monitor.wait_for("nobody answers")
        self.assertEqual(monitor.wait(), 69)

    def test_the_monitor_reports_an_event(self):
        service = self.service()
        event = "--service cpu --state=abnormal --action recover --machine 2 --machine-name= --memo 负荷 --mail no"
        self.assertEqual(self.monitor(service, "notify", *event.split()).wait(), 0)
        self.assertEqual(service.recv(100), "txSendSMS2031410{[b^k^]}负荷".encode("gbk"))
        if not harness.windows:  # Wine tells nobody
            monitor = self.start("tarnex-monitor", "--address", "127.0.0.99", "raw", "to nobody")
            monitor.wait_for("nobody listens there")
            self.assertEqual(monitor.wait(), 69)
        for wrong in ("listen now", "raw", "notify --service cpu", "listen --link 5"):
            self.assertEqual(self.monitor(service, *wrong.split()).wait(), 64, wrong)

    @harness.linux_only
    def test_the_unit_follows_its_script_and_takes_its_link_away(self):
        site = harness.Site(self, log=False)
        script, link = site.path("script"), site.path("unit")
        script.write_text("0 sms 10086 余额\n1000 quit\n", encoding="utf-8")
        unit = self.start("tarnex-sim", "--link", link, "--script", script)
        unit.wait_for("script: sms 10086 余额")
        self.assertEqual(unit.stop(), 0)
        self.assertFalse(link.is_symlink())
        for wrong, status in ((("--script", link), 64), (("--link", script), 1)):
            self.assertEqual(self.start("tarnex-sim", *wrong).wait(), status, wrong)
        self.assertTrue(script.is_file())


harness.run(Simulator)
