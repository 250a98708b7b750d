"""A display of its own for a test, with the windows on it and what an operator does to them."""

import ctypes
import os
import re
import shutil
import subprocess
import time

import harness
from harness import Program, wait_until

PICTURES = os.environ.get("TARNEX_PICTURES")  # a folder in which pictures of the windows are kept


class Screen:
    """An X server that shows its screen to nobody. Programs find it in the environment."""

    def __init__(self, test, dpi=96, size="1400x1000"):
        self.scale = dpi / 96
        read, write = os.pipe()
        arguments = ["-displayfd", str(write), "-noreset", "-screen", "0", size + "x24"]
        if harness.windows:
            arguments.append("-nolock")  # the file would name a process of another name space
        self.server = Program(test, shutil.which("Xvfb"), arguments, pass_fds=[write])
        test.addCleanup(self.server.stop)  # orderly, so that no lock file is left
        os.close(write)
        with open(read) as number:
            self.name = ":" + number.readline().strip()
        self.environment = {"DISPLAY": self.name, "LC_ALL": "C.UTF-8"}
        if harness.windows:
            self._begin_session(dpi)
        resources = f"Xft.dpi: {dpi}"
        self.run("xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER", resources)

    def _begin_session(self, dpi):
        """A Windows that starts now, since it keeps the screen that it has found first."""
        key = r"HKCU\Control Panel\Desktop"
        add = ("wine", "reg", "add", key, "/v", "LogPixels", "/t", "REG_DWORD", "/d", str(dpi), "/f")
        for command in (("wineserver", "-k", "-w"), ("wineserver", "-p"), add):
            harness.silently(*command, environment=os.environ | self.environment)

    def run(self, *command):
        """What a tool of X prints."""
        environment = os.environ | self.environment
        return subprocess.run(command, env=environment, encoding="utf-8", capture_output=True).stdout

    def window(self, title, act=None):
        """The window with that title, once it is there; act makes it come."""

        def find():
            tree = self.run("xwininfo", "-root", "-tree")
            found = re.search(rf'(0x[0-9a-f]+) "{re.escape(title)}"', tree)
            window = found and Window(self, int(found[1], 16))
            return window if window and window.shown() else None

        return wait_until(find, f"a window {title}", act)


class Window:
    def __init__(self, screen, number):
        self._screen = screen
        self._number = number

    def shown(self):
        return "IsViewable" in self._screen.run("xwininfo", "-id", str(self._number))

    def size(self):
        geometry = self._screen.run("xdotool", "getwindowgeometry", str(self._number))
        return tuple(map(int, re.search(r"Geometry: (\d+)x(\d+)", geometry).groups()))

    def resize(self, width, height):
        resize = "xdotool", "windowsize", str(self._number), str(width), str(height)
        wait_until(lambda: self.size() == (width, height), "another size", lambda: self._screen.run(*resize))

    def least_size(self):
        """The smallest that an operator can make it."""
        if harness.windows:
            return self.size()  # nobody is told
        hints = self._screen.run("xprop", "-id", str(self._number), "WM_NORMAL_HINTS")
        return tuple(map(int, re.search(r"minimum size: (\d+) by (\d+)", hints).groups()))

    def click(self, x, y):
        """A click at a place in pixels of a screen of 96 dpi; negative ones are from the right or the bottom."""
        place = [str(int(at * self._screen.scale) % size) for at, size in zip((x, y), self.size())]
        self._screen.run("xdotool", "mousemove", "--window", str(self._number), *place, "click", "1")

    def _press(self, *what):
        # While windows come and go Wine may miss the release of a key.
        up = ("keyup", "alt", "keyup", "ctrl", "keyup", "shift") if harness.windows else ()
        self._screen.run("xdotool", "windowfocus", str(self._number), *up, *what)

    def key(self, *names):
        self._press("key", "--delay", "30", *names)

    def type(self, text):
        self._press("type", "--delay", "30", text)

    def close(self):
        """What a window manager does when the operator closes the window."""
        Client(self._screen.name).ask_to_close(self._number)

    def copied(self, place, *keys):
        """What keys copy from the box at that place."""

        def copy():
            self.click(*place)
            self.key(*keys)
            return Client(self._screen.name).clipboard()

        return wait_until(copy, "an answer to the request for the clipboard")[0]

    def lines(self, place):
        """All lines of the list at that place."""
        return self.copied(place, "ctrl+shift+c").splitlines()

    def wait_for_line(self, place, text, act=None):
        """Until a line of the list at that place ends so; acts for that, if it can."""

        wait_until(lambda: any(line.endswith(text) for line in self.lines(place)), text, act)

    def picture(self, name):
        """Keeps a picture, if somebody wants pictures."""
        if PICTURES:
            path = os.path.join(PICTURES, name + ".png")
            self._screen.run("import", "-window", str(self._number), "+dither", "-colors", "24", "PNG8:" + path)


class Client:
    """Talks to the X server itself, where no tool does."""

    CLIENT_MESSAGE = 33
    SELECTION_NOTIFY = 31
    Event = ctypes.c_long * 24

    def __init__(self, display):
        self._x = ctypes.CDLL("libX11.so.6")
        self._x.XOpenDisplay.restype = ctypes.c_void_p
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(display.encode()))

    def _atom(self, name):
        return self._x.XInternAtom(self._display, name.encode(), 0)

    def ask_to_close(self, window):
        message = (self._atom("WM_PROTOCOLS"), 32, self._atom("WM_DELETE_WINDOW"))
        event = self.Event(self.CLIENT_MESSAGE, 0, 0, 0, window, *message)
        self._x.XSendEvent(self._display, window, 0, 0, event)
        self._x.XCloseDisplay(self._display)

    def clipboard(self):
        """The text that was copied last, "" when there is none; as a list, which is empty without an answer.

        A busy Wine sometimes owns the clipboard and answers nobody until something is copied anew.
        """
        root = self._x.XDefaultRootWindow(self._display)
        own = self._x.XCreateSimpleWindow(self._display, root, 0, 0, 1, 1, 0, ctypes.c_long(0), ctypes.c_long(0))
        clipboard, utf8, text = (self._atom(name) for name in ("CLIPBOARD", "UTF8_STRING", "TEXT"))
        self._x.XConvertSelection(self._display, clipboard, utf8, text, own, 0)
        end = time.monotonic() + harness.LIMIT / 30
        while not self._x.XCheckTypedWindowEvent(self._display, own, self.SELECTION_NOTIFY, self.Event()):
            if time.monotonic() > end:
                self._x.XCloseDisplay(self._display)
                return []
            time.sleep(0.01)
        content = ctypes.c_char_p()
        unread = [ctypes.byref(ctypes.c_long()) for _ in range(4)]  # kind, format, length, rest
        where = (0, ctypes.c_long(1 << 20), 0, ctypes.c_long(0))  # all of it, of any kind
        self._x.XGetWindowProperty(self._display, own, text, *where, *unread, ctypes.byref(content))
        self._x.XCloseDisplay(self._display)
        return [(content.value or b"").decode()]
