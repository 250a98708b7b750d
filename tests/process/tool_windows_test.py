"""The windows of the service tools, on a display of the test's own.

With TARNEX_PICTURES naming a folder it keeps pictures of them there.
"""

import signal
import unittest

import harness
from flasher_test import program
from harness import FIRST_NUMBER, Site, linux_only, wait_until
from screen import Screen

CONNECTED = "已在Com3成功连接Tarnex."

# Places in pixels of a screen of 96 dpi, from the left and the top or, negative, from the right and the bottom.
FLASHER_LIST = (300, 200)
CONSOLE_LIST = (-100, 100)
CONSOLE_OTHER = (-100, 200)
CONSOLE_SMS = (-100, -60)

# Controls of the console: numbers of buttons, names of boxes.
CONSOLE = {
    1: (140, 22), 43: (365, 22), 2: (170, 72), "Text5": (353, 142), "Text4": (177, 322),
    42: (177, 411), 41: (563, 442),
}  # fmt: skip


class ToolWindowsTest(unittest.TestCase):
    def setUp(self):
        self.site = Site(self)

    def screen(self, *arguments):
        screen = Screen(self, *arguments)
        self.site.desktop = screen.environment | {"HOME": self.site.folder}
        return screen

    def start(self, name):
        """As the start menu does."""
        if harness.windows:
            name = f"{harness.windows}/{name}.exe"
        return self.site.start(name, cwd=self.site.folder)

    def make_firmware(self, name, *size):
        self.site.path(name).write_text(program("TARNEX-SIM 2.0", *size))

    def leave(self, tool, window):
        wait_until(lambda: not tool.runs(), "the end of " + tool.name, lambda: window.key("alt+x"))
        self.assertEqual(tool.wait(), 0)

    def test_firmware_is_updated_on_a_fine_screen(self):
        unit = self.site.unit()
        self.make_firmware("unit.hex", 4096)
        screen = self.screen(192)
        flasher = self.start("tarnex-flasher")
        window = screen.window("(c)Firmware Flasher  v1.0.0")
        second = self.start("tarnex-console")
        self.assertEqual(second.wait(), 0)
        second.wait_for("another program of TarnexComm runs on this machine")
        dialog = screen.window("打开固件文件", lambda: window.key("alt+o"))
        dialog.type("unit.hex")
        dialog.picture("flasher-file-192")
        wait_until(lambda: not dialog.shown(), "the end of the dialog", lambda: dialog.key("Return"))
        window.wait_for_line(FLASHER_LIST, "unit.hex")
        window.wait_for_line(FLASHER_LIST, "正在连接Tarnex.", lambda: window.key("alt+o"))
        window.wait_for_line(FLASHER_LIST, "可以开始更新Firmware!")
        window.picture("flasher-connected-192")
        window.wait_for_line(FLASHER_LIST, "擦除成功，开始写入。", lambda: window.key("alt+u"))
        window.picture("flasher-writing-192")
        window.wait_for_line(FLASHER_LIST, "升级成功!")
        window.picture("flasher-done-192")
        wait_until(lambda: not flasher.runs(), "the end", flasher.end_session)
        self.assertEqual(flasher.wait(), 0)
        unit.tell("show")
        unit.wait_for("version           TARNEX-SIM 2.0")

    def open_console(self, screen):
        """Opens it and connects it to the unit."""
        console = self.start("tarnex-console")
        window = screen.window("OCXDebug")
        window.wait_for_line(CONSOLE_LIST, CONNECTED, lambda: window.click(*CONSOLE[1]))
        return console, window

    def press(self, window, number, lists, lines_below=1):
        """Presses a button until that is listed, with at most so many lines below."""
        wait_until(
            lambda: lists in window.lines(CONSOLE_LIST)[-1 - lines_below :],
            f"{lists}, after Command{number}",
            lambda: window.click(*CONSOLE[number]),
        )

    def test_console_works_by_keyboard(self):
        unit = self.site.unit()
        screen = self.screen()
        console = self.start("tarnex-console")
        window = screen.window("OCXDebug")
        window.wait_for_line(CONSOLE_LIST, CONNECTED, lambda: window.key("alt+c"))
        window.key("Tab", "Tab", "Tab")  # over the other list, round to the second button
        # All buttons are disabled while one is at work; the focus comes back to it.
        for key in ("Return", "space", "space"):
            heard = len(unit.said("Hello,tarnex"))
            wait_until(lambda: window.key(key) or len(unit.said("Hello,tarnex")) > heard, "one more greeting")
        self.make_firmware("Tarnex_20050626.hex", 0xFF00, 1)  # for minutes
        window.wait_for_line(CONSOLE_LIST, "擦除成功，开始写入。", lambda: window.click(*CONSOLE[41]))
        console.end_session()  # the unit comes first
        window.close()
        window.wait_for_line(CONSOLE_LIST, "再次关闭窗口将强行退出。")
        window.close()
        self.assertEqual(console.wait(), 0)

    def test_console_obeys_and_keeps_what_is_typed_and_pasted(self):
        unit = self.site.unit()
        console, window = self.open_console(self.screen())
        self.press(window, 42, "读取硬件版本")
        unit.tell(f"sms {FIRST_NUMBER} 你好")
        window.wait_for_line(CONSOLE_SMS, "内容:你好")
        window.picture("console-96")

        def enter_name():
            window.click(*CONSOLE["Text4"])
            window.key("ctrl+a")
            window.type("机房一号（测试）")
            window.key("Tab")

        # xdotool redefines a key for each Chinese character, which on a busy machine may come too early.
        wait_until(lambda: self.site.setting("TarnexName") == "机房一号（测试）", "the name in the settings", enter_name)
        copied = window.lines(CONSOLE_LIST)[-1]
        wait_until(lambda: window.copied(CONSOLE_LIST, "End", "ctrl+c") == copied, "a copied line")

        def paste():
            window.click(*CONSOLE["Text5"])
            window.key("ctrl+a", "ctrl+v", "Tab")

        wait_until(lambda: self.site.setting("Message") == copied, "the text in the settings", paste)
        self.leave(console, window)

    def test_console_fits_a_small_screen_or_scrolls(self):
        self.site.unit()
        for dpi, size in ((96, (1280, 720)), (240, (1920, 1080))):
            _, window = self.open_console(self.screen(dpi, "%dx%d" % size))
            self.press(window, 43, "OCXDebug信息已打开", 0)
            self.press(window, 2, "读第一报警电话")

            def traffic():
                window.click(*CONSOLE_OTHER)  # so that no key goes to a list that is out of sight
                return window.lines(CONSOLE_SMS)[-1:] == [f"Get :TX:NO1({FIRST_NUMBER})\\r\\n"]

            wait_until(traffic, "the last list", lambda: window.key("Tab", "Tab"))
            self.assertTrue(all(edge <= whole for edge, whole in zip(window.size(), size)), dpi)
            window.picture(f"console-debug-{dpi}")
            narrow = lambda: window.size()[0] == window.least_size()[0]
            wait_until(narrow, "the narrow window", lambda: window.key("alt+d"))
            wait_until(lambda: not window.shown(), "the end", lambda: window.key("alt+x"))

    @linux_only  # Wine shows windows to nobody, rather than none
    def test_tools_say_why_there_is_no_window(self):
        for tool in ("tarnex-console", "tarnex-flasher"):
            without = self.start(tool)
            self.assertEqual(without.wait(), 69)
            without.wait_for(f"{tool}: no window can be shown: there is no display")
        without.wait_for("--port and --file update without one")

    @linux_only
    def test_an_update_goes_on_whatever_the_display_does(self):
        unit = self.site.unit()
        self.make_firmware("Tarnex_20050626.hex", 0xFF00)
        screen = self.screen()
        console, window = self.open_console(screen)
        self.press(window, 43, "OCXDebug信息已打开", 0)  # so that much is drawn
        window.click(*CONSOLE[41])
        wait_until(lambda: unit.tell("show") or unit.said("without program, in its loader"), "an erased unit")
        window.type("5")  # goes nowhere: the focus stays where it was
        window.wait_for_line(CONSOLE_LIST, "擦除成功，开始写入。")
        screen.server.send_signal(signal.SIGSTOP)
        wait_until(lambda: unit.tell("show") or unit.said("version           TARNEX-SIM 2.0"), "the new firmware")
        screen.server.send_signal(signal.SIGCONT)
        screen.server.stop()
        self.assertEqual(console.wait(), 0)
        console.wait_for("the display is gone")
        self.assertIsNone(self.site.setting("TelNo1"))


if __name__ == "__main__":
    harness.run(ToolWindowsTest)
