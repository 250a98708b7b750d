"""A display of its own for a test, with the windows on it and what an operator does to them."""

import ctypes
import os
import re
import shutil
import subprocess

from harness import Program, wait_until

PICTURES = os.environ.get("TARNEX_PICTURES")  # a folder in which pictures of the windows are kept


class Screen:
    """An X server that shows its screen to nobody. Programs find it in the environment."""

    def __init__(self, test, dpi=96, size="1400x1000"):
        self.scale = dpi / 96
        read, write = os.pipe()
        arguments = ["-displayfd", str(write), "-noreset", "-screen", "0", size + "x24"]
        self.server = Program(test, shutil.which("Xvfb"), arguments, pass_fds=[write])
        test.addCleanup(self.server.stop)  # orderly, so that no lock file is left
        os.close(write)
        with open(read) as number:
            self.name = ":" + number.readline().strip()
        self.environment = {"DISPLAY": self.name, "LC_ALL": "C.UTF-8"}
        resources = f"Xft.dpi: {dpi}"
        self.run("xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER", resources)

    def run(self, *command):
        """What a tool of X prints."""
        environment = os.environ | self.environment
        outputs = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
        return subprocess.run(command, env=environment, encoding="utf-8", **outputs).stdout

    def window(self, title):
        """The window with that title, once it is there."""

        def find():
            tree = self.run("xwininfo", "-root", "-tree")
            found = re.search(rf'(0x[0-9a-f]+) "{re.escape(title)}"', tree)
            window = found and Window(self, int(found[1], 16))
            return window if window and window.shown() else None

        return wait_until(find, f"a window {title}")


class Window:
    def __init__(self, screen, number):
        self._screen = screen
        self._number = number

    def shown(self):
        return "IsViewable" in self._screen.run("xwininfo", "-id", str(self._number))

    def size(self):
        lines = self._screen.run("xdotool", "getwindowgeometry", "--shell", str(self._number)).split()
        values = dict(line.split("=") for line in lines)
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def resize(self, width, height):
        self._screen.run("xdotool", "windowsize", str(self._number), str(width), str(height))
        wait_until(lambda: self.size() == (width, height), f"the size {width}x{height}")

    def least_size(self):
        """The smallest that an operator can make it."""
        hints = self._screen.run("xprop", "-id", str(self._number), "WM_NORMAL_HINTS")
        return tuple(int(n) for n in re.search(r"minimum size: (\d+) by (\d+)", hints).groups())

    def click(self, x, y, button=1):
        """A click at a place in pixels of a screen of 96 dpi; negative ones are from the right or the bottom."""
        place = [str(int(at * self._screen.scale) % size) for at, size in zip((x, y), self.size())]
        self._screen.run("xdotool", "mousemove", "--window", str(self._number), *place, "click", str(button))

    def key(self, *names):
        self._screen.run("xdotool", "windowfocus", str(self._number), "key", "--delay", "30", *names)

    def type(self, text):
        self._screen.run("xdotool", "windowfocus", str(self._number), "type", "--delay", "30", text)

    def close(self):
        """What a window manager does when the operator closes the window."""
        Client(self._screen.name).ask_to_close(self._number)

    def copied(self, x, y, *keys):
        """What keys copy from the box at that place."""
        self.click(x, y)
        self.key(*keys)
        return Client(self._screen.name).clipboard()

    def lines(self, x, y):
        """All lines of the list at that place."""
        return self.copied(x, y, "ctrl+shift+c").splitlines()

    def has_line(self, place, text):
        """Whether a line of the list at that place ends so."""
        return any(line.endswith(text) for line in self.lines(*place))

    def wait_for_line(self, place, text):
        wait_until(lambda: self.has_line(place, text), text)

    def picture(self, name):
        """Keeps a picture, if somebody wants pictures."""
        if PICTURES:
            path = os.path.join(PICTURES, name + ".png")
            self._screen.run("import", "-window", str(self._number), "+dither", "-colors", "24", "PNG8:" + path)


class Client:
    """Talks to the X server itself, where no tool does."""

    ANY_TYPE = 0
    CLIENT_MESSAGE = 33
    SELECTION_NOTIFY = 31

    class Event(ctypes.Structure):
        """A client message, and room for every other event."""

        _fields_ = [
            ("type", ctypes.c_int),
            ("serial", ctypes.c_ulong),
            ("send_event", ctypes.c_int),
            ("display", ctypes.c_void_p),
            ("window", ctypes.c_ulong),
            ("message_type", ctypes.c_ulong),
            ("format", ctypes.c_int),
            ("data", ctypes.c_long * 24),
        ]

    def __init__(self, display):
        self._x = ctypes.CDLL("libX11.so.6")
        self._x.XOpenDisplay.restype = ctypes.c_void_p
        self._x.XDefaultRootWindow.restype = ctypes.c_ulong
        self._x.XCreateSimpleWindow.restype = ctypes.c_ulong
        self._x.XInternAtom.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(display.encode()))

    def _atom(self, name):
        return ctypes.c_ulong(self._x.XInternAtom(self._display, name.encode(), 0))

    def ask_to_close(self, window):
        event = self.Event(type=self.CLIENT_MESSAGE, window=window, format=32)
        event.message_type = self._atom("WM_PROTOCOLS").value
        event.data[0] = self._atom("WM_DELETE_WINDOW").value
        self._x.XSendEvent(self._display, ctypes.c_ulong(window), 0, ctypes.c_long(0), ctypes.byref(event))
        self._x.XCloseDisplay(self._display)

    def clipboard(self):
        """The text that was copied last, "" when there is none."""
        root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))
        own = ctypes.c_ulong(self._x.XCreateSimpleWindow(self._display, root, 0, 0, 1, 1, 0, 0, 0))
        clipboard, utf8, text = (self._atom(name) for name in ("CLIPBOARD", "UTF8_STRING", "TEXT"))
        self._x.XConvertSelection(self._display, clipboard, utf8, text, own, ctypes.c_ulong(0))
        event = self.Event()
        wait_until(
            lambda: self._x.XCheckTypedWindowEvent(self._display, own, self.SELECTION_NOTIFY, ctypes.byref(event)),
            "an answer to the request for the clipboard",
        )
        found = [ctypes.c_ulong(), ctypes.c_int(), ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_void_p()]
        self._x.XGetWindowProperty(
            self._display,
            own,
            text,
            ctypes.c_long(0),
            ctypes.c_long(1 << 20),
            0,
            ctypes.c_ulong(self.ANY_TYPE),
            *(ctypes.byref(value) for value in found),
        )
        content = ctypes.string_at(found[4], found[2].value).decode() if found[4] else ""
        self._x.XCloseDisplay(self._display)
        return content
