"""What the Debian packages hold and need.

Usage: package_content_test.py PACKAGE_FOLDER [TEST...]
"""

import re
import sys
import unittest

from clean_root import find_package, output_of


def dpkg_deb(option, name, *arguments):
    return output_of("dpkg-deb", option, find_package(sys.argv[1], name), *arguments)


class Content(unittest.TestCase):
    def test_the_windows_and_what_they_need_are_in_a_package_of_their_own(self):
        self.assertNotRegex(dpkg_deb("--field", "tarnexcomm", "Depends"), r"libx|fltk|font|\bsqlite3\b")
        self.assertRegex(
            dpkg_deb("--field", "tarnexcomm-view", "Depends"),
            r"(?=.*\btarnexcomm \(= )(?=.*\blibfltk)(?=.*\blibx11)",
        )
        self.assertEqual(dpkg_deb("--info", "tarnexcomm-view", "control").count("Recommends"), 1)
        # "-rw-r--r-- root/root 259 2026-11-21 06:26 ./usr/share/doc/tarnexcomm/copyright"
        contents = [line.split() for line in dpkg_deb("--contents", "tarnexcomm-view").splitlines()]
        self.assertEqual({words[1] for words in contents}, {"root/root"})
        files = {words[5][1:] for words in contents if not words[0].startswith("d")}
        (program,) = {file for file in files if not re.match("/usr/share/doc/", file)}
        self.assertEqual(program, "/usr/libexec/tarnexcomm/tarnex-view")


unittest.main(argv=[sys.argv[0], *(f"Content.{name}" for name in sys.argv[2:])])
