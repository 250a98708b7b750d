"""The windows of the service, on a display of the test's own.

With TARNEX_PICTURES naming a folder it keeps pictures of them there.
"""

import os
import signal
import unittest

import harness
from harness import FIRST_NUMBER, READY, Site, wait_until
from screen import Screen

ALARM = "txSendSMS1031010srv{[b^k^]}98%"

# Places in a new main window, in pixels of a screen of 96 dpi.
EVENTS = (100, 140)
SMS_SENT = (700, 200)
SMS_RECEIVED = (100, 400)
DEVICE_EVENTS = (500, 400)
LINKS = (700, 400)
DEBUG = (100, 580)
TRAFFIC = (700, 580)
MAIL_BODY = (300, 340)  # in the window of mails


class ServiceWindowsTest(unittest.TestCase):
    def start(self):
        """A service on a desktop; itself, its unit, a monitoring program and its window."""
        self.site = Site(self, DebugMode="On")
        self.screen = Screen(self)
        self.site.desktop = self.screen.environment
        unit = self.site.unit()
        service = self.site.service()
        monitor = self.site.monitor()
        monitor.greet()
        return service, unit, monitor, self.screen.window("TarnexComm")

    def test_main_window_shows_what_the_service_does(self):
        service, unit, monitor, window = self.start()
        self.assertEqual(window.size(), (1000, 656))
        monitor.wait_for(READY)
        window.wait_for_line(LINKS, "Send0:tx--Ready")
        window.wait_for_line(TRAFFIC, "Get :TX:TXCSQ(20,0)\\r\\n")
        window.wait_for_line(DEBUG, "CSQ=20")
        monitor.send(ALARM)
        window.wait_for_line(EVENTS, '设备1"98%"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。')
        unit.wait_for("SENDSMS1")
        window.wait_for_line(SMS_SENT, "发送成功")
        unit.tell(f"sms {FIRST_NUMBER} 你好")
        wait_until(lambda: any("你好" in line for line in window.lines(SMS_RECEIVED)), "a received SMS")
        window.wait_for_line(DEVICE_EVENTS, "True", lambda: window.key("alt+k"))
        window.picture("main-96")
        # Hides the list of the traffic; that of the debug lines takes its place.
        window.wait_for_line(TRAFFIC, "CSQ=20", lambda: window.key("alt+l"))
        empty = lambda: "Send0:tx--Ready" not in window.lines(LINKS)
        wait_until(empty, "an empty list", lambda: window.key("alt+c"))
        wait_until(lambda: window.lines(EVENTS), "the events, which stay")
        window.resize(*window.least_size())
        window.picture("main-least-96")
        end = service.end_session if harness.windows else lambda: window.key("alt+x")
        wait_until(lambda: not service.runs(), "the end", end)
        self.assertEqual(service.wait(), 0)
        if not harness.windows:  # a Wine that is slow counts as a display that nobody sees
            self.assertEqual([line for line in service.lines if "not sent: the service ends" not in line], [])
            monitor.wait_for(b"tx-SMSEnd")

    def test_other_windows_are_reached_and_left(self):
        service, _, _, window = self.start()
        core = self.screen.window("TarnexCore", lambda: window.key("alt+r"))
        core.wait_for_line((100, -40), "DebugOn: On", lambda: core.key("alt+d"))
        core.picture("core-96")
        # A click on the space between two buttons gives the focus back.
        form = self.screen.window("邮件发送", lambda: (window.click(500, -20), window.key("alt+m")))

        def typed():
            return form.copied(MAIL_BODY, "ctrl+a", "ctrl+c").endswith("!")

        wait_until(typed, "a letter", lambda: (form.click(*MAIL_BODY), form.key("ctrl+End"), form.type("!")))
        form.picture("mail-96")
        wait_until(lambda: not form.shown(), "the form is closed", lambda: form.key("alt+x"))
        window.close()
        self.assertEqual(service.wait(), 0)

    def test_service_goes_on_whatever_its_display_does(self):
        service, unit, monitor, window = self.start()
        monitor.wait_for(READY)
        self.screen.server.send_signal(signal.SIGSTOP)
        # Lines fill all that stands between the service and the display, until nobody sees them any more.
        wait_until(lambda: monitor.send("txHeartSv") or service.said("List"), "lines for the journal")
        monitor.send(ALARM)
        unit.wait_for("SENDSMS1")
        self.screen.server.send_signal(signal.SIGCONT)
        window.wait_for_line(SMS_SENT, "发送成功")
        windows = self.screen.run("pgrep", "-f", "exe --show-windows") if harness.windows else None
        how = "with status 0" if windows else "by signal 9"
        os.kill(int(windows or service.proc(f"task/{service.pid}/children")), signal.SIGKILL)
        service.wait_for(f"the program of the windows has ended {how}, and the windows with it. Going on without")
        service.wait_for("List2: Get :TX:TXCSQ(20,0)")
        unit.tell("unplug")  # the service begins anew
        window = self.screen.window("TarnexComm")
        self.site.edit_setting("DebugMode", "Off")
        monitor.wait_for(b"txNexLost")
        unit.tell("plug")
        monitor.greet()
        monitor.wait_for(READY)
        unit.tell("unplug")
        wait_until(lambda: not window.shown(), "the window is closed")
        self.assertEqual(service.stop(), 0)


if __name__ == "__main__":
    harness.run(ServiceWindowsTest)
