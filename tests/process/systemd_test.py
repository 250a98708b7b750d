"""The packaged service under systemd, with all that its unit takes away from it.

Usage: systemd_test.py PACKAGE_FOLDER CACHE_FOLDER [TEST...]
"""

import pathlib
import sys
import unittest

from clean_root import RunningSystem, find_package, main, needed_packages

PACKAGES, CACHE = sys.argv[1:3]
SETTINGS = "var/lib/tarnexcomm/system/Tarnex.ini"

UNIT_FOLDERS = ("etc/systemd/system", "usr/lib/systemd/system")

WANTED = {
    "com20-device": "/srv/unit",
    "sms-to-number-1": "on",
    "alarm-number-1": "13900000001",
    "mail-server": "mail-server:2525",
    "mail-from": "unit@example.com",
    "mail-to": "owner@example.com",
}


class Service(unittest.TestCase):
    def setUp(self):
        debs = [find_package(PACKAGES, name) for name in ("tarnexcomm", "tarnexcomm-view")]
        needed = {package for deb in debs for package in needed_packages(deb)} - {"tarnexcomm"}
        self.system = RunningSystem(CACHE, needed)
        self.addCleanup(self.system.close)
        (self.system.path / "etc/hosts").write_text("127.0.0.1 localhost mail-server\n")
        self.system.run("dpkg", "--install", *map(self.system.copy_in, debs))

    def log(self, program):
        return pathlib.Path(self.system.own, program)

    def start(self, program, *arguments):
        return self.system.start(self.log(program), program, *arguments)

    def wait_for_line(self, program, text):
        self.system.wait_for(lambda: text in self.log(program).read_text(), f"{text} from {program}")

    def property(self, name):
        return self.system.run("systemctl", "show", "--value", f"--property={name}", "tarnexcomm").strip()

    def journal(self):
        return self.system.run("journalctl", "--no-pager", "--unit=tarnexcomm")

    def rows(self):
        return self.system.run("tarnexctl", "log", "tail", "--once", "--json")

    def owner(self):
        return self.system.run("stat", "--format=%U", f"/proc/{self.property('MainPID')}").strip()

    def restart(self):
        self.system.run("systemctl", "restart", "tarnexcomm")

    def listen(self):
        """A monitoring program greets the service and hears what it says."""
        self.start("tarnex-monitor", "--name", "WebMon", "listen")
        self.wait_for_line("tarnex-monitor", "txYesRigh")

    def drop_in(self, name, lines):
        """Everything else is as the package has it."""
        file = self.system.path / f"etc/systemd/system/tarnexcomm.service.d/{name}.conf"
        file.parent.mkdir()
        file.write_text("[Service]\n" + lines)
        self.system.run("systemctl", "daemon-reload")

    def test_the_service_does_its_work_within_its_limits(self):
        self.assertEqual(self.property("ActiveState"), "active", "an installed service runs")
        self.assertEqual(self.owner(), "tarnexcomm")
        self.start("tarnex-sim", "--link", "/srv/unit")
        self.system.wait_for((self.system.path / "srv/unit").is_symlink, "the unit's line")
        self.system.run("sh", "-c", "chgrp dialout /srv/unit && chmod 660 /srv/unit")
        self.start("tarnex-mail-sink")
        for setting, value in WANTED.items():
            self.system.run("tarnexctl", "settings", "set", setting, value)
        self.restart()

        self.listen()
        self.wait_for_line("tarnex-monitor", "tx--Ready")
        self.assertIn("Text1(33)=Com20", (self.system.path / SETTINGS).read_text(encoding="gbk"))
        self.assertNotIn("may not be opened", self.journal(), "adapters may be used")
        self.system.run("tarnex-monitor", "notify", "--service", "cpu", "--state", "abnormal")
        self.wait_for_line("tarnex-sim", "(13900000001): 设备1")
        self.wait_for_line("tarnex-mail-sink", "-- end of mail")
        self.assertIn('"event":"CPU', self.rows())

        # A service that has to be killed after its time would be said to have failed.
        self.system.run("systemctl", "stop", "tarnexcomm")
        self.assertEqual(self.property("Result"), "success")
        self.wait_for_line("tarnex-monitor", "tx-SMSEnd")

    def test_a_hanging_service_is_started_again(self):
        self.drop_in("quick", "WatchdogSec=2s\nRestartSec=0\n")  # quicker than a test could wait for
        self.restart()
        hanging = self.property("MainPID")
        self.system.run("systemctl", "kill", "--signal=STOP", "tarnexcomm")
        self.system.wait_for(lambda: self.property("NRestarts") == "1", "a second start")
        self.system.wait_for(lambda: self.property("ActiveState") == "active", "the service is ready again")
        self.assertNotEqual(self.property("MainPID"), hanging)

    def test_it_starts_with_nothing_and_listens_when_it_is_ready(self):
        (self.system.path / "var/lib/tarnexcomm/log.db").unlink()
        self.restart()
        self.assertEqual(self.property("ActiveState"), "active")
        told = self.system.run("stat", "--format=%U %a", "/run/tarnexcomm")
        self.assertEqual(told, "tarnexcomm 750\n", "messages on their way are nobody else's")
        sockets = self.system.run("cat", f"/proc/{self.property('MainPID')}/net/udp")
        for port in range(7840, 7845):
            self.assertIn(f" 0100007F:{port:04X} ", sockets)

    def test_the_windows_are_found_where_they_are_installed(self):
        self.system.run("tarnexctl", "settings", "set", "debug-mode", "on")
        self.drop_in("display", "Environment=DISPLAY=:9\n")
        self.restart()
        self.system.wait_for(lambda: "no window can be shown" in self.journal(), "a window was tried")
        self.assertIn('the display ":9" does not let us in', self.journal())

    def test_modem_managers_leave_a_named_port_alone(self):
        rules = self.system.path / "etc/udev/rules.d/65-tarnex-port.rules"
        rules.write_text('SUBSYSTEM=="tty", KERNEL=="tty", ENV{TARNEX_PORT}="unit"\n')
        named, other = (self.system.run("udevadm", "test", f"/sys/class/tty/{port}") for port in ("tty", "ptmx"))
        for line in ("ID_MM_PORT_IGNORE=1", "ID_MM_DEVICE_IGNORE=1", "DEVLINKS=/dev/tarnex-unit"):
            self.assertIn(f"\n{line}\n", named)
        self.assertIn("gid=20, mode=0660", named)  # dialout
        self.assertNotIn("ID_MM", other)
        self.assertNotRegex(named, r"(?m)^.*(Invalid|Unknown|error).*\n")

    def test_a_machine_without_its_user_runs_it_as_the_superuser(self):
        self.drop_in("root", "User=root\n")
        self.restart()
        self.assertEqual(self.owner(), "root")
        self.system.run("tarnex-monitor", "notify", "--service", "cpu", "--state", "abnormal")
        self.system.wait_for(lambda: '"event":"CPU' in self.rows(), "the row")

    def test_its_own_unit_is_that_of_the_package(self):
        self.system.run("tarnexcomm", "/i")
        own, packaged = (self.system.path / folder / "tarnexcomm.service" for folder in UNIT_FOLDERS)
        self.assertEqual(own.read_text().partition("\n[X-Parameters]")[0], packaged.read_text())
        self.system.run("tarnexcomm", "/u")
        self.assertFalse(own.exists())
        self.assertEqual(self.property("UnitFileState"), "disabled")

    def test_an_ending_machine_does_not_announce_the_end_of_the_service(self):
        self.listen()
        self.system.switch_off()
        self.assertNotIn("tx-SMSEnd", self.log("tarnex-monitor").read_text())


main(Service, sys.argv[3:])
