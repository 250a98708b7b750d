"""The firmware update on the command line, over a real serial line."""

import os
import pty
import signal
import unittest

import harness
from harness import Site, linux_only, there

END = ":00000001FF\n"


def record(address, data):
    content = bytes([len(data), address >> 8, address & 255, 0]) + data
    return ":" + (content + bytes([-sum(content) & 255])).hex().upper() + "\n"


def program(version, size, step=16):
    """A HEX file of that many bytes, step in a record, which names its version somewhere in the middle."""
    image = bytearray(bytes(range(256)) * (size // 256))
    text = b"VERSION=" + version.encode() + b"\0"
    image[size // 2 : size // 2 + len(text)] = text
    return "".join(record(at, image[at : at + step]) for at in range(0, size, step)) + END


class FlasherTest(unittest.TestCase):
    def setUp(self):
        self.site = Site(self)

    def file(self, content):
        path = self.site.path("new.hex")
        path.write_text(content)
        return path

    def start(self, *arguments, **options):
        return self.site.start("tarnex-flasher", *arguments, **options)

    def update(self, content, port="COM3", **options):
        return self.start("--port", port, "--file", self.file(content), **options)

    def test_brings_a_unit_whose_update_broke_off_to_its_new_version(self):
        unit = self.site.unit("--boot", "1")
        content = program("TARNEX-SIM 2.0", 4096)
        unit.tell("loader write:100 silent")
        flasher = self.update(content)
        self.assertEqual(flasher.wait(), 76)
        flasher.wait_for(f"Greeting the unit on COM3 ({there(self.site.path('unit'))}) ...")
        flasher.wait_for("Bring it back: tarnex-flasher --port COM3 --file ")
        again = self.update(content, self.site.path("unit"))
        self.assertEqual(again.wait(), 0)
        again.wait_for("Updated: 4096 bytes")
        unit.tell("show")
        unit.wait_for("version           TARNEX-SIM 2.0")

    @linux_only  # Wine takes a terminal only when all streams are one
    def test_shows_a_bar_on_a_terminal(self):
        self.site.unit()
        own, theirs = pty.openpty()
        flasher = self.update(program("TARNEX-SIM 2.0", 4096), stdout=theirs)
        os.close(theirs)
        shown = b""
        while b"version  TARNEX-SIM 2.0" not in shown:
            shown += os.read(own, 4096)
        os.close(own)
        self.assertEqual(flasher.wait(), 0)
        self.assertRegex(shown, rb"\r\x1b\[K +\d+ %  \[#+ *\]  \d+/4096 bytes  address [0-9A-F]{4}")

    def test_needs_two_interrupts_to_leave_a_unit_half_written(self):
        self.site.unit()
        flasher = self.update(program("x", 0xFF00, 1))  # for minutes
        flasher.wait_for("  0 %")
        flasher.end_session()  # the unit comes first
        if harness.windows:
            flasher.wait_for("The system is about to end and was told to wait")
        flasher.send_signal(signal.SIGINT)
        flasher.wait_for("Press Ctrl-C again")
        self.assertEqual(flasher.stop(), 130)

    def test_leaves_the_unit_to_a_service_that_runs(self):
        unit = self.site.unit()
        self.site.service()
        flasher = self.update(program("x", 256))
        self.assertEqual(flasher.wait(), 75)
        flasher.wait_for("Another program of TarnexComm runs on this machine")
        self.assertEqual(unit.said("RESET"), [])

    def test_says_what_is_wrong_with_its_arguments(self):
        for arguments, said in (
            (["--port", "COM21", "--file", "x"], "is neither COM1 to COM20 nor the path"),
            (["--file", "x"], "--port is missing"),  # and the unit was never found
            (["--check-only"], "--file names no file"),
            (["--port"], "--port needs a value"),
            (["x"], '"x" is one word too many'),
        ):
            flasher = self.start(*arguments)
            self.assertEqual(flasher.wait(), 64, arguments)
            flasher.wait_for(said)


if __name__ == "__main__":
    harness.run(FlasherTest)
