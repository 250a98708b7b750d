"""The service killed in the middle of its work."""

import os
import time
import unittest

import harness
from harness import LIMIT, Site, wait_until

# The writes of one run: the search, the port found (twice), the record of the unit's settings made
# unknown, and then the nine settings in it.
KILLED_AT_WRITE = (1, 2, 3, 4, 6, 8, 10, 12)


class Settings:
    """Counts the replacements of a settings file."""

    def __init__(self, path):
        self._path = path
        self._file = os.stat(path).st_ino
        self.replaced = 0

    def in_the_middle_of(self, write):
        """Whether the write of that number is under way, or over already."""
        file = os.stat(self._path).st_ino
        if file != self._file:
            self._file = file
            self.replaced += 1
        begun = self.replaced + os.path.exists(self._path + ".new")
        return begun >= write


class Kill(unittest.TestCase):
    def test_kills_in_the_middle_of_settings_writes(self):
        running = []
        for write in KILLED_AT_WRITE:
            site = Site(self)
            unit = site.unit()
            service = site.service()
            site.monitor().greet()
            running.append((site, unit, service, Settings(site.settings), write))
        left = list(running)
        end = time.monotonic() + LIMIT
        while left and time.monotonic() < end:
            for entry in list(left):
                _, _, service, settings, write = entry
                if settings.in_the_middle_of(write):
                    service.kill()
                    left.remove(entry)
            time.sleep(0.0005)
        self.assertEqual(left, [])

        for site, unit, _, settings, write in running:
            with self.subTest(killed_at_write=write):
                self.assertEqual(len(site.rows()), 1)
                self.assertEqual(site.without_own_settings(), site.settings_text())
        # Lock, links and line are free at once.
        again = [(site, unit, site.service(), len(unit.said("Hello"))) for site, unit, *_ in running]
        for site, unit, service, seen in again:
            unit.wait_for("Hello,tarnex", seen + 1)
            wait_until(lambda: site.setting("LastCom") == "3", "the port in the settings")
            wait_until(lambda: site.setting("Text1(33)") == "Com3", "the port in the settings")
            self.assertEqual(service.stop(), 0)
            self.assertEqual(service.lines, [])
            self.assertFalse(os.path.exists(site.settings + ".new"))
            self.assertEqual(site.without_own_settings(), site.settings_text())


harness.run(Kill)
