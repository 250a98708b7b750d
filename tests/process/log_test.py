"""The log database while something is wrong with it."""

import os
import resource
import shutil
import sqlite3
import unittest

import harness
from harness import READY, Site, wait_until

ALARM = "txSendSMS1031010srv{[b^k^]}"


def execute(site, sql):
    database = sqlite3.connect(site.log)
    database.execute(sql)
    database.commit()
    database.close()


class Fault:
    """Something wrong with the log from the start of the service on."""

    told = ""
    user = None  # who runs the service

    def __init__(self, test):
        self.site = Site(test, log=False)

    def repair(self):
        self.site.make_log()


class Missing(Fault):
    told = 'is missing: make it with "tarnexctl log create"'


class Folder(Fault):
    told = "is a folder: name a file in Text1(37)"

    def __init__(self, test):
        super().__init__(test)
        os.mkdir(self.site.log)

    def repair(self):
        os.rmdir(self.site.log)
        self.site.make_log()


class NotADatabase(Fault):
    told = "is not an SQLite database: name another file in Text1(37), or move it away and make one with"

    def __init__(self, test):
        super().__init__(test)
        with open(self.site.log, "w", encoding="ascii") as file:
            file.write("date;time;message\n" * 100)

    def repair(self):
        os.remove(self.site.log)
        self.site.make_log()


class WithoutTheTable(Fault):
    told = 'has no table "Log": make one with log-schema.sql'

    def __init__(self, test):
        super().__init__(test)
        execute(self.site, "CREATE TABLE Protocol (a)")


class TooFewColumns(Fault):
    told = 'has a table "Log" with 3 columns instead of 13: rename the table and make a new one'

    def __init__(self, test):
        super().__init__(test)
        execute(self.site, "CREATE TABLE Log (a, b, c)")

    def repair(self):
        execute(self.site, "ALTER TABLE Log RENAME TO OldLog")
        self.site.make_log()


class Forbidden(Fault):
    told = "cannot be opened: give the user of this service read and write access to the file"
    mode = 0o600

    def __init__(self, test):
        if os.geteuid() != 0:
            test.skipTest("only root can play two users")
        super().__init__(test)
        self.site.make_log()
        self.user = self.site.give_away()
        os.chown(self.site.log, 0, 0)
        os.chmod(self.site.log, self.mode)

    def repair(self):
        self.site.give_away()


class ReadOnly(Forbidden):
    told = "cannot be written: give the user of this service write access to the file"
    mode = 0o644


class Log(unittest.TestCase):
    def start(self, fault):
        """A service that is told to log three rows with a fault in the way; its other end."""
        service = fault.site.service(user=fault.user)
        monitor = fault.site.monitor()
        service.wait_for(f"The log database {fault.site.log} {fault.told}")
        for _ in range(3):
            monitor.greet()
        return service, monitor

    def test_it_works_again_once_the_fault_is_repaired(self):
        kinds = [Missing, Folder, NotADatabase, WithoutTheTable, TooFewColumns]
        if os.geteuid() == 0:
            kinds += [Forbidden, ReadOnly]
        faults = [kind(self) for kind in kinds]
        running = [(fault, *self.start(fault)) for fault in faults]
        for fault in faults:
            fault.repair()
        for fault, service, monitor in running:
            with self.subTest(type(fault).__name__):
                service.wait_for("The log works again; rows lost since the start: 3.")
                monitor.greet("Nex")
                wait_until(lambda: fault.site.rows("Detail"), "a row in the log")
                self.assertEqual(fault.site.rows("Detail"), [("Nex",)])
                self.assertEqual(service.stop(), 0)
                self.assertEqual(len(service.lines), 2, service.lines)

    def test_locked_for_a_while(self):
        site = Site(self)
        service = site.service()
        monitor = site.monitor()
        other = sqlite3.connect(site.log, isolation_level=None)
        self.addCleanup(other.close)
        other.execute("BEGIN IMMEDIATE")
        for name in ("1", "2", "3"):
            monitor.greet(name)
        service.wait_for("is locked by another program: end what keeps it locked")
        other.execute("COMMIT")
        monitor.greet("4")
        line = service.wait_for("The log works again; rows lost since the start: ")
        # The answer to a greeting comes before its row.
        stored = ["3", "4"] if line.endswith(" 2.") else ["4"]
        wait_until(lambda: [row[0] for row in site.rows("Detail")] == stored, "the later rows")
        self.assertEqual(service.stop(), 0)
        self.assertEqual(len(service.lines), 2, service.lines)

    def test_moved_away_and_made_anew(self):
        site = Site(self)
        service = site.service()
        monitor = site.monitor()
        monitor.greet("old")
        wait_until(site.rows, "a row in the log")
        for end in ("", "-wal", "-shm"):
            shutil.move(site.log + end, site.path("old.db" + end))
        monitor.greet("lost")
        service.wait_for("was moved or deleted while it was in use: put it back")
        site.make_log()
        later = site.monitor(1)
        later.greet("lost")
        later.wait_for(b"tx-States")  # just before, the new file was opened
        later.greet("new")
        service.wait_for("The log works again; rows lost since the start: 2.")
        self.assertEqual(site.rows("Detail"), [("new",)])
        self.assertEqual(len(service.lines), 2, service.lines)

    def test_sms_leave_and_settings_stay_whole_on_a_full_disk(self):
        site = Site(self)
        unit = site.unit()
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        wait_until(site.rows, "a row in the log")
        # What a full disk is to programs: files do not grow.
        no_limit = resource.prlimit(service.pid, resource.RLIMIT_FSIZE)
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (100, no_limit[1]))
        monitor.wait_for(READY)
        monitor.send(ALARM + "1")
        unit.wait_for("SMS to number 1")
        service.wait_for("look for a full disk, a used-up quota or a failing disk")
        service.wait_for("Tarnex.ini cannot be written")
        self.assertEqual(site.read_settings(), site.settings_text())
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, no_limit)
        monitor.send(ALARM + "2")
        service.wait_for("The log works again; rows lost since the start: 1.")
        self.assertEqual(site.rows("Detail"), [("",), ("2",)])
        service.wait_for("Tarnex.ini is written again.")
        self.assertEqual(service.stop(), 0)
        self.assertEqual(len(service.lines), 4, service.lines)
        self.assertEqual(site.without_own_settings(), site.settings_text())


harness.run(Log)
