"""What the tests of the running programs share: a site for a service, its neighbours, and waiting.

A test file ends in `harness.run(TheTests)` and is started as: FILE FOLDER_OF_THE_PROGRAMS [TEST...]

With TARNEX_WINDOWS=FOLDER in the environment the programs of that folder run in the place of those
that there are for Windows too. The test itself runs inside tests/under-wine then: in a Windows and a
network of its own, which hold one site. `@linux_only` marks what that system does not have.

Every program that a test starts ends with the test, however the test ends. What the programs have
said is shown then.
"""

import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time
import unittest

READY = b"tx--Ready"
FIRST_NUMBER = "13900000001"
NOBODY = 65534  # a user without rights
windows = os.environ.get("TARNEX_WINDOWS")  # the folder of the programs for Windows, or None
# Seconds until an awaited event counts as missing; no test depends on how long it takes.
LIMIT = 300 if windows else 90
END = signal.SIGINT if windows else signal.SIGTERM  # asks a program to end
START_SERVICE = "net start TarnexComm" if windows else "systemctl start tarnexcomm"
OUTPUT_ENDS = "\0\n"
FOLDER = "警 报"  # where programs find what is theirs
linux_only = unittest.skipIf(windows, "for Linux only")

# Every setting that goes into the unit, and what lets an SMS leave.
SETTINGS = {
    "Service": {"Enable": "Enable"},
    "Check": {f"Check1({n})": "1" for n in (13, 8, 9, 10, 11, 12, 42, 44, 45, 57)},
    "Text": {
        "Text1(34)": FIRST_NUMBER,
        "Text1(35)": "13900000002",
        "Text1(36)": "+8613800100500",
        "Text1(32)": "Demo",
    },
    "Combo": {"combo1(5)": "3", "Combo1(6)": "1"},
    "Debug": {"DebugMode": "Off"},
}
SCHEMA = pathlib.Path(__file__).parents[2] / "packaging/log-schema.sql"

programs = ""  # the folder of the programs


def silently(*command, environment=None):
    """Runs a program of Wine's own. What that starts must not keep a pipe of the test open."""
    null = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)
    subprocess.run(command, env=environment, **null)


def wait_until(condition, what, act=None):
    """What condition() gives once it is true. For what sends no event of its own.

    Acts for that, and again: what is still shown as disabled ignores the operator, and a busy Wine loses keys.
    A second act may undo the first, so it waits until the first must have been ignored.
    """
    end = time.monotonic() + LIMIT
    ignored = 0
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not seen within {LIMIT} s: {what}")
        if act and time.monotonic() > ignored:
            act()
            ignored = time.monotonic() + LIMIT / 30
        time.sleep(0.01)
    return result


def begin_windows():
    for key, name, value in (
        (r"HKLM\System\CurrentControlSet\Control\Session Manager\Environment", "windir", "C:\\" + FOLDER),
        (r"HKLM\Software\Microsoft\Windows NT\CurrentVersion\ProfileList", "ProgramData", "C:\\" + FOLDER),
        (r"HKCU\Software\Wine\Drivers", "Graphics", "x11,null"),  # without a screen there are windows, too
    ):
        silently("wine", "reg", "add", key, "/v", name, "/d", value, "/f")


def there(path):
    """How the programs that are tested are told a path, and tell it."""
    return "Z:" + str(path).replace("/", "\\") if windows else str(path)


def command(name, arguments=(), user=None):
    """The command line of one of the programs, or of another by its path.

    Everything that a test starts is started by this: it knows what the programs are called on the
    other system, and what runs them.
    """
    # The kernel ends it with this process, were that to be killed.
    runner = ["setpriv", "--pdeathsig", "KILL"]
    if user is not None:
        runner += [f"--reuid={user}", f"--regid={user}", "--clear-groups"]
    if not windows or name == "tarnex-sim" or os.path.isabs(name):
        if name.endswith(".exe"):
            runner.append("wine")
        return [*runner, os.path.join(programs, name), *arguments]
    arguments = [there(each) if isinstance(each, pathlib.Path) else each for each in arguments]
    program = pathlib.Path(windows, name + ".exe")
    in_prompt = program.with_suffix(".com")
    if in_prompt.exists():
        # A prompt takes a .com before an .exe: it has a console, by which Ctrl-C comes. Wine takes
        # another name of the same file for the first, and starts what is no .exe by a third program.
        program = pathlib.Path(os.environ["WINEPREFIX"], "drive_c", program.name)
        if not program.exists():
            shutil.copyfile(in_prompt, program)
    return [*runner, "wine", program, *arguments]


def own_address():
    """An address of this machine that no other test is likely to use."""
    if windows:
        return "127.0.0.1"  # of a network of its own; others Wine does not tell apart
    return "127.%d.%d.%d" % (random.randint(100, 250), random.randint(0, 255), random.randint(1, 254))


class Program:
    """A running program, with what it has said on both of its outputs."""

    def __init__(self, test, name, arguments=(), user=None, **options):
        self.name = os.path.basename(name)
        self.lines = []
        self._news = threading.Condition()
        reading, self._output = os.pipe()
        usual = {"stdin": subprocess.PIPE, "stdout": self._output, "stderr": subprocess.STDOUT}
        self._process = subprocess.Popen(
            command(name, arguments, user), encoding="utf-8", errors="replace", **(usual | options)
        )
        self.pid = self._process.pid
        self._reader = threading.Thread(target=self._read, args=[reading])
        self._reader.start()
        test.addCleanup(self._clean_up)

    def _read(self, reading):
        with open(reading, encoding="utf-8", errors="replace") as output:
            for line in output:
                said = line.removesuffix(OUTPUT_ENDS)
                with self._news:
                    self.lines += [said.rstrip("\n")] if said else []
                    self._news.notify_all()
                if line.endswith(OUTPUT_ENDS):
                    return

    def _clean_up(self):
        self.stop(signal.SIGKILL)
        os.close(self._output)
        if self._process.stdin:
            self._process.stdin.close()
        print(f"--- {self.name} {self.pid} ended with {self._process.returncode}; it had said:")
        print("\n".join(self.lines[-60:]), flush=True)

    def said(self, text):
        """All lines that hold text."""
        with self._news:
            return [line for line in self.lines if text in line]

    def wait_for(self, text, times=1):
        """The line in which text stands for the times-th time."""
        with self._news:
            if not self._news.wait_for(lambda: len(self.said(text)) >= times, LIMIT):
                raise AssertionError(f"{self.name} has not said within {LIMIT} s: {text}")
            return self.said(text)[times - 1]

    def tell(self, line):
        """One line of input."""
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def send_signal(self, number):
        self._process.send_signal(number)

    def stop(self, number=END):
        """Ends it by a signal, if it runs; its exit status."""
        self.send_signal(number)
        return self.wait()

    def wait(self):
        """Its exit status, once it has ended and all that it has said was read."""
        status = self._process.wait(LIMIT)
        # Wine's own programs keep the pipe of whichever has started them.
        if self._reader.is_alive():
            os.write(self._output, OUTPUT_ENDS.encode())
        self._reader.join()
        return status

    def end_session(self):
        """Its user logs off: its terminal ends, or Windows, which asks first and may be told to wait."""
        if windows:
            silently("wine", "wineboot", "--end-session", "--shutdown")
        else:
            self.send_signal(signal.SIGHUP)

    def runs(self):
        return self._process.poll() is None

    def proc(self, name):
        """What the system tells about it under that name."""
        return pathlib.Path(f"/proc/{self.pid}", name).read_text()

    def cpu_seconds(self):
        fields = self.proc("stat").rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Monitor:
    """The other end of the first control link. It keeps the link alive by itself."""

    def __init__(self, test, address):
        self._service = (address, 7840)
        self.received = []
        self._taken = 0  # of these, by wait_for
        self._news = threading.Condition()
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind((address, 0))
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        test.addCleanup(self._clean_up)

    def _read(self):
        while True:
            try:
                message, sender = self._socket.recvfrom(65536)
            except ConnectionRefusedError:
                continue  # the fate of an earlier message
            if sender == self._socket.getsockname():
                return
            if message.startswith(b"tx-States"):
                self.send("txHeartSv")
            with self._news:
                self.received.append(message)
                self._news.notify_all()

    def _clean_up(self):
        self._socket.sendto(b"", self._socket.getsockname())
        self._reader.join()
        self._socket.close()

    def send(self, message):
        data = message.encode("gbk") if isinstance(message, str) else message
        self._socket.sendto(data, self._service)

    def greet(self, name=""):
        """Greets, and waits for the answer."""
        self.send("txHelloNx" + name)
        self.wait_for(b"txYesRigh")

    def wait_for(self, start):
        """Until a message begins so; what came before it is passed over."""

        def find():
            while self._taken < len(self.received):
                self._taken += 1
                if self.received[self._taken - 1].startswith(start):
                    return True
            return False

        with self._news:
            if not self._news.wait_for(find, LIMIT):
                raise AssertionError(f"not heard in {LIMIT} s: {start}; heard: {self.received}")


class Site:
    """Where one service is installed: a folder, settings, an address, and what stands around it.

    log=False leaves the log database out. changes: settings by key, like {"Check1(42)": "0"}.
    """

    def __init__(self, test, log=True, **changes):
        self._test = test
        self.desktop = {}  # what a desktop adds to the environment
        if windows:
            self.folder = pathlib.Path(os.environ["WINEPREFIX"], "drive_c", FOLDER)
        else:
            self.folder = pathlib.Path(tempfile.mkdtemp(prefix=FOLDER))
            test.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.path("system").mkdir(parents=True, exist_ok=bool(windows))
        self.folder.chmod(0o755)
        self.address = own_address()
        self.settings = self.path("system/Tarnex.ini")
        if self.settings.is_dir():  # of an earlier site
            self.settings.rmdir()
        self.log = self.path("log.db")
        if log:
            with contextlib.closing(sqlite3.connect(self.log)) as database:
                database.executescript(SCHEMA.read_text(encoding="utf-8"))
        self._settings = {"Text1(37)": there(self.log), **changes}
        self.write_settings()

    def path(self, name):
        return self.folder / name

    def give_away(self):
        """Gives all files to a user without rights, whom it names; None when it has none itself."""
        if os.geteuid() != 0:
            return None
        for path in (self.folder, *self.folder.rglob("*")):
            os.chown(path, NOBODY, NOBODY)
        return NOBODY

    # ---- settings

    def settings_text(self, changes=()):
        """The whole file as it was made, comments included, with other values for some keys."""
        ports = {f"COM{n}": there(self.path("unit" if n == 3 else "no-port")) for n in range(1, 21)}
        own = {"SerialPorts": ports, "ControlLink": {"BindAddress": self.address}}
        values = self._settings | dict(changes)
        lines = []
        for section, keys in (own | SETTINGS).items():
            lines += [f"; 注释: {section}", f"[{section}]"]
            lines += [f"{key}={values.pop(key, value)}" for key, value in keys.items()]
            added = [key for key in values if key.startswith(section + "1(")]
            lines += [f"{key}={values.pop(key)}" for key in added]
        if values:
            raise KeyError(f"no section is known for {values}")
        return "\r\n".join([*lines, "[Others]", "key= of another program ; ", ""])

    def write_settings(self, changes=()):
        """Empties the file and writes it anew, without what the service has added."""
        self.settings.write_bytes(self.settings_text(changes).encode("gbk"))

    def edit_setting(self, key, value):
        """Changes one value in place."""
        text = re.sub(rf"(?m)^{re.escape(key)}=[^\r\n]*", f"{key}={value}", self.read_settings())
        with open(self.settings, "r+b") as file:
            file.write(text.encode("gbk"))
            file.truncate()

    def read_settings(self):
        while True:
            with contextlib.suppress(*[FileNotFoundError] * bool(windows)):  # Wine replaces it in two steps
                return self.settings.read_bytes().decode("gbk")

    def setting(self, key):
        """The value in the file, or None."""
        found = re.search(rf"(?m)^{re.escape(key)}=([^\r\n]*)", self.read_settings())
        return found[1] if found else None

    def without_own_settings(self):
        """The whole file without what the service adds to it."""
        text = re.sub(r"Text1\(33\)=.*\r\n", "", self.read_settings())
        return re.sub(r"\[TarnexComm\]\r\n(\w+=.*\r\n)+$", "", text)

    def rows(self, columns="*"):
        with contextlib.closing(sqlite3.connect(self.log)) as database:
            return database.execute(f"SELECT {columns} FROM Log ORDER BY Number").fetchall()

    # ---- programs

    def environment(self):
        """In which the programs of this site run: without a display, unless it has a desktop."""
        environment = dict(
            os.environ,
            WINDIR=str(self.folder),
            TARNEXCOMM_LOCK=there(self.path("lock")),
            # Freed memory is given back soon, so that a growth shows.
            ASAN_OPTIONS="quarantine_size_mb=1:allocator_release_to_os_interval_ms=100",
        )
        environment.pop("DISPLAY", None)
        return environment | self.desktop

    def start(self, name, *arguments, user=None, **options):
        """Starts a program in this environment."""
        if user is not None:  # who perhaps may not enter the folder of the programs
            name = shutil.copy(os.path.join(programs, name), self.folder)
        return Program(self._test, name, arguments, user, env=self.environment(), **options)

    def service(self, **options):
        """Starts the service and waits until the last of its links is open."""
        service = self.start("tarnexcomm", **options)
        number = "".join("%02X" % int(part) for part in reversed(self.address.split(".")))
        listening = f" {number}:{7844:04X} "
        wait_until(lambda: listening in pathlib.Path("/proc/net/udp").read_text(), "open links")
        return service

    def unit(self, *arguments):
        """Starts the simulated unit on COM3."""
        unit = self.start("tarnex-sim", "--link", self.path("unit"), *arguments)
        unit.wait_for("plugged in")
        return unit

    def monitor(self):
        return Monitor(self._test, self.address)


def run(tests):
    """Runs the tests that the command line names, or all."""
    global programs
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} FOLDER_OF_THE_PROGRAMS [TEST...]")
    programs = os.path.abspath(sys.argv[1])
    signal.signal(signal.SIGHUP, signal.SIG_DFL)  # whoever has started the tests
    if windows:
        begin_windows()
    names = [f"{tests.__name__}.{name}" for name in sys.argv[2:]]
    unittest.main(argv=[sys.argv[0], *names], verbosity=2)
