"""What the tests of the running programs share: a site for one service, its neighbours, and waiting.

A test file ends in `harness.run(TheTests)` and is started as: FILE FOLDER_OF_THE_PROGRAMS [TEST...]

Every program that a test starts ends with the test, however the test ends.
"""

import os
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

LIMIT = 90  # seconds until an awaited event counts as missing; no test depends on how long it takes
READY = b"tx--Ready"
FIRST_NUMBER = "13900000001"
SECOND_NUMBER = "13900000002"
NOBODY = 65534

_SCHEMA = os.path.join(os.path.dirname(__file__), "../../packaging/log-schema.sql")

# Every setting that goes into the unit, and what lets an SMS leave.
_SETTINGS = {
    "Service": {"Enable": "Enable"},
    "Check": {
        "Check1(13)": "1", "Check1(8)": "1", "Check1(9)": "1", "Check1(10)": "1", "Check1(11)": "1",
        "Check1(12)": "1", "Check1(42)": "1", "Check1(43)": "0", "Check1(44)": "1",
        "Check1(45)": "1", "Check1(57)": "1", "Check1(5)": "0", "Check1(39)": "0",
    },
    "Text": {
        "Text1(34)": FIRST_NUMBER, "Text1(35)": SECOND_NUMBER, "Text1(36)": "+8613800100500",
        "Text1(32)": "Demo", "Text1(37)": "",
    },
    "Combo": {"combo1(5)": "3", "Combo1(6)": "1"},
    "Alarm": {"AlarmLabel(7)": "SMS"},
    "Debug": {"DebugMode": "Off"},
}  # fmt: skip


def wait_until(condition, what, limit=LIMIT):
    """What condition() gives as soon as it is true. For what sends no event of its own."""
    end = time.monotonic() + limit
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not seen within {limit} s: {what}")
        time.sleep(0.01)
    return result


class Program:
    """A running program, with what it has said on both of its outputs."""

    def __init__(self, test, path, arguments=(), environment=None, user=None, **options):
        if not os.access(path, os.X_OK):
            raise FileNotFoundError(f"{path}: no such program; build it first")
        self.name = os.path.basename(path)
        self.lines = []
        self._news = threading.Condition()
        # The kernel ends it with this process; nothing else is done to it.
        command = ["setpriv", "--pdeathsig", "KILL"]
        if user is not None:
            command += [f"--reuid={user}", f"--regid={user}", "--clear-groups"]
        outputs = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, **options}
        self._process = subprocess.Popen(
            [*command, path, *arguments], env=environment, encoding="utf-8", errors="replace",
            stdin=subprocess.PIPE, **outputs,
        )  # fmt: skip
        self.pid = self._process.pid
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        test.addCleanup(self._clean_up)

    def _read(self):
        for line in self._process.stdout or ():
            with self._news:
                self.lines.append(line.rstrip("\n"))
                self._news.notify_all()

    def _clean_up(self):
        if self._process.poll() is None:
            self._process.kill()
        self._process.wait()
        self._reader.join()
        for end in (self._process.stdin, self._process.stdout):
            if end:
                end.close()
        print(f"--- {self.name} {self.pid} ended with {self._process.returncode}; it had said:")
        print("\n".join(self.lines[-60:]), flush=True)

    def said(self, text):
        """All lines that hold text."""
        with self._news:
            return [line for line in self.lines if text in line]

    def wait_for(self, text, times=1, limit=LIMIT):
        """The line in which text stands for the times-th time."""
        end = time.monotonic() + limit
        with self._news:
            while len(found := [line for line in self.lines if text in line]) < times:
                left = end - time.monotonic()
                if left <= 0 or not self._news.wait(left):
                    raise AssertionError(f"{self.name} has not said within {limit} s: {text}")
        return found[times - 1]

    def tell(self, line):
        """One line of input."""
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def send_signal(self, number):
        self._process.send_signal(number)

    def kill(self):
        self._process.kill()
        self._process.wait()

    def stop(self, number=signal.SIGTERM):
        """Ends it by a signal; its exit status."""
        self.send_signal(number)
        return self.wait()

    def wait(self, limit=LIMIT):
        """Its exit status, as soon as it has ended and all that it said was read."""
        try:
            status = self._process.wait(limit)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"{self.name} does not end") from None
        self._reader.join()
        return status

    def runs(self):
        return self._process.poll() is None

    def cpu_seconds(self):
        with open(f"/proc/{self.pid}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def resident_kib(self):
        with open(f"/proc/{self.pid}/status") as lines:
            return next(int(line.split()[1]) for line in lines if line.startswith("VmRSS:"))


class Monitor:
    """The other end of one control link."""

    def __init__(self, test, address, link):
        self._service = (address, 7840 + link)
        self.received = []
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind((address, 0))
        test.addCleanup(self._socket.close)

    def send(self, message):
        self._socket.sendto(message.encode("gbk") if isinstance(message, str) else message, self._service)

    def greet(self, name=""):
        """Greets until the service answers."""
        self.send("txHelloNx" + name)
        self.wait_for(b"txYesRigh")

    def wait_for(self, start, limit=LIMIT):
        """The next message that begins so."""
        end = time.monotonic() + limit
        while (left := end - time.monotonic()) > 0:
            self._socket.settimeout(left)
            try:
                message = self._socket.recv(65536)
            except TimeoutError:
                break
            except ConnectionRefusedError:
                continue  # the fate of an earlier message
            self.received.append(message)
            if message.startswith(b"tx-States"):
                self.send("txHeartSv")
            if message.startswith(start):
                return message
        raise AssertionError(f"not heard within {limit} s: {start}; heard: {self.received}")


class Site:
    """A place where one service is installed: folder, settings, address, and what stands around it.

    changes: settings by key, as "Check1(42)"="0"; without_log: no log database is made.
    """

    def __init__(self, test, log=True, **changes):
        self.test = test
        self.folder = tempfile.mkdtemp(prefix="tarnex-test-")
        test.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        os.mkdir(self.path("system"))
        self.address = "127.%d.%d.%d" % (
            random.randint(220, 250), random.randint(0, 255), random.randint(1, 254),
        )  # fmt: skip
        self.device = self.path("unit")
        self.log = self.path("log.db")
        self.settings = self.path("system/Tarnex.ini")
        if log:
            self.make_log()
        self._settings = {"Text1(37)": self.log, **changes}
        self.write_settings()

    def path(self, name):
        return os.path.join(self.folder, name)

    def give_away(self):
        """Gives all files to a user without rights, if there is one to give them to. Who owns them."""
        if os.geteuid() != 0:
            return None
        for top, _, names in os.walk(self.folder):
            for name in [top, *(os.path.join(top, name) for name in names)]:
                os.chown(name, NOBODY, NOBODY)
        return NOBODY

    # ---- settings

    def settings_text(self, changes=()):
        """The whole file as it was made, comments included, with other values for some keys."""
        ports = {f"COM{n}": self.device if n == 3 else self.path("no-port") for n in range(1, 21)}
        sections = {
            "SerialPorts": ports, "ControlLink": {"BindAddress": self.address}, **_SETTINGS,
        }  # fmt: skip
        left = self._settings | dict(changes)
        lines = []
        for section, keys in sections.items():
            lines += [f"; 注释: {section}", f"[{section}]"]
            for key, value in keys.items():
                lines.append(f"{key}={left.pop(key, value)}")
            added = [key for key in left if key.startswith(section + "1(")]
            lines += [f"{key}={left.pop(key)}" for key in added]
        lines += ["[Others]", "key=a value ; of another program ", ""]
        if left:
            raise KeyError(f"no such setting: {left}")
        return "\r\n".join(lines)

    def write_settings(self, changes=()):
        with open(self.settings, "wb") as file:
            file.write(self.settings_text(changes).encode("gbk"))

    def read_settings(self):
        with open(self.settings, "rb") as file:
            return file.read().decode("gbk")

    def setting(self, key):
        """The value in the file, or None."""
        for line in self.read_settings().splitlines():
            if line.startswith(key + "="):
                return line[len(key) + 1 :]
        return None

    def without_own_settings(self):
        """The whole file without what the service adds to it."""
        text = re.sub(r"Text1\(33\)=.*\r\n", "", self.read_settings())
        return re.sub(r"\[TarnexComm\]\r\n(\w+=.*\r\n)+$", "", text)

    # ---- log

    def make_log(self):
        with open(_SCHEMA, encoding="utf-8") as schema:
            database = sqlite3.connect(self.log)
            database.executescript(schema.read())
            database.close()

    def rows(self, columns="*"):
        database = sqlite3.connect(self.log)
        try:
            return database.execute(f"SELECT {columns} FROM Log ORDER BY Number").fetchall()
        finally:
            database.close()

    # ---- programs

    def service(self, *arguments, wait=True, **options):
        """Starts the service. It is awaited until its links are open, if it is to run."""
        environment = dict(
            os.environ, WINDIR=self.folder, TARNEXCOMM_LOCK=self.path("lock"),
            # Freed memory is given back soon, so that a growth shows.
            ASAN_OPTIONS="quarantine_size_mb=1:allocator_release_to_os_interval_ms=100",
        )  # fmt: skip
        for name in options.pop("without", ()):
            del environment[name]
        environment.update(options.pop("environment", {}))
        program = BINARIES + "/tarnexcomm"
        if options.get("user") is not None:  # who may not enter the folder of the programs
            program = shutil.copy(program, self.folder)
        service = Program(self.test, program, arguments, environment, **options)
        if wait:
            wait_until(lambda: self.is_open() or not service.runs(), "open links")
            self.test.assertTrue(service.runs(), "the service has ended")
        return service

    def is_open(self, link=4):
        """Whether anybody listens on a link."""
        number = "".join("%02X" % int(part) for part in reversed(self.address.split(".")))
        with open("/proc/net/udp") as table:
            return f" {number}:{7840 + link:04X} " in table.read()

    def unit(self, *arguments):
        """Starts the simulated unit on COM3."""
        unit = Program(self.test, BINARIES + "/tarnex-sim", ["--link", self.device, *arguments])
        unit.wait_for("plugged in")
        return unit

    def monitor(self, link=0):
        return Monitor(self.test, self.address, link)


BINARIES = ""


def run(tests):
    global BINARIES
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} FOLDER_OF_THE_PROGRAMS [TEST...]")
    BINARIES = os.path.abspath(sys.argv[1])
    names = [f"{tests.__name__}.{name}" for name in sys.argv[2:]]
    unittest.main(argv=[sys.argv[0], *names], verbosity=2)
