"""The service killed in the middle of its work."""

import signal
import time
import unittest

import harness
from harness import LIMIT, Site, wait_until

# Of the writes of one run: the search, the port found, told in two places, the record of the unit's
# settings made unknown, and then one after each of the nine settings.
KILLED_AT_WRITE = (1, 2, 3, 4, 6, 8, 10, 12)


class Writes:
    """Counts the writes of a settings file, each of which puts a new file there."""

    def __init__(self, path):
        self._path = path
        self._file = path.stat().st_ino
        self._done = 0

    def begun(self):
        if (file := self._path.stat().st_ino) != self._file:
            self._file = file
            self._done += 1
        return self._done + self._path.with_suffix(".ini.new").exists()


class Kill(unittest.TestCase):
    def test_kills_in_the_middle_of_settings_writes(self):
        sites = [Site(self) for _ in KILLED_AT_WRITE]
        units = [site.unit() for site in sites]
        services = [site.service() for site in sites]
        for site in sites:
            site.monitor().greet()
            wait_until(site.rows, "a row in the log")

        writes = [Writes(site.settings) for site in sites]
        left = list(zip(services, writes, KILLED_AT_WRITE))
        end = time.monotonic() + LIMIT
        while left:
            self.assertLess(time.monotonic(), end, "too few writes")
            for victim in list(left):
                service, counter, write = victim
                if counter.begun() >= write:
                    service.stop(signal.SIGKILL)
                    left.remove(victim)
            time.sleep(0.0005)

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
