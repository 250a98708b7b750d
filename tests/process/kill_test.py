"""The service killed in the middle of its work."""

import ctypes
import os
import select
import signal
import unittest

import harness
from harness import LIMIT, Site, wait_until

# Of the writes of one run: the search, the port found, told in two places, the record of the unit's
# settings made unknown, and then one after each of the nine settings.
KILLED_AT_WRITE = (1, 2, 3, 4, 6, 8, 10, 12)

IN_CREATE = 0x100  # <sys/inotify.h>
LIBC = ctypes.CDLL(None)


class Writes:
    """Counts the writes of a settings file, each of which begins with a new file beside it."""

    def __init__(self, path):
        self._events = LIBC.inotify_init1(0)
        LIBC.inotify_add_watch(self._events, os.fsencode(path.parent), IN_CREATE)
        self._name = os.fsencode(path.name) + b".new\0"
        self.begun = 0

    def fileno(self):
        return self._events

    def count(self):
        self.begun += os.read(self._events, 65536).count(self._name)


class Kill(unittest.TestCase):
    def test_kills_in_the_middle_of_settings_writes(self):
        sites = [Site(self) for _ in KILLED_AT_WRITE]
        units = [site.unit() for site in sites]
        writes = [Writes(site.settings) for site in sites]
        services = [site.service() for site in sites]
        for site in sites:
            site.monitor().greet()
            wait_until(site.rows, "a row in the log")

        left = dict(zip(writes, zip(services, KILLED_AT_WRITE)))
        while left:
            told, _, _ = select.select(left, [], [], LIMIT)
            self.assertTrue(told, "too few writes")
            for counter in told:
                counter.count()
                service, write = left[counter]
                if counter.begun >= write:
                    service.stop(signal.SIGKILL)
                    del left[counter]

        for site, service, write in zip(sites, services, KILLED_AT_WRITE):
            with self.subTest(write=write):
                self.assertEqual(site.without_own_settings(), site.settings_text())
                self.assertEqual(len(site.rows()), 1)
                self.assertEqual(service.lines, [])

        # Lock, links and serial line are free at once.
        greeted = [len(unit.said("Hello,tarnex")) for unit in units]
        services = [site.service() for site in sites]
        for site, unit, service, before in zip(sites, units, services, greeted):
            unit.wait_for("Hello,tarnex", before + 1)
            wait_until(lambda: site.setting("Text1(33)") == "Com3", "the port in the settings")
            wait_until(lambda: site.setting("LastCom") == "3", "the port on record")
            self.assertEqual(service.stop(), 0)
            self.assertEqual(service.lines, [])
            self.assertFalse(site.settings.with_suffix(".ini.new").exists())
            self.assertEqual(site.without_own_settings(), site.settings_text())


harness.run(Kill)
