"""A Debian system of a test's own, in a folder, with nothing in it but what a package needs.

A RunningSystem is like a machine of its own: own processes, network and devices. What takes long is
kept in a cache folder for the next time; what a test does to the system is kept in memory, and nobody
else sees it. Where there can be no such system the tests are skipped.
"""

import ctypes
import fcntl
import glob
import hashlib
import os
import pathlib
import platform
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SKIPPED = 77
LIMIT = 600  # seconds after which a program hangs
PRINTED = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "text": True}
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"}


def skip(reason):
    raise unittest.SkipTest(reason)


def main(tests, names):
    """Runs the named tests, or all; exit status SKIPPED when one of them could not run."""
    names = [f"{tests.__name__}.{name}" for name in names]
    result = unittest.main(argv=[sys.argv[0], *names], exit=False).result
    for _, reason in result.skipped:
        print("SKIPPED:", reason)
    sys.exit(1 if not result.wasSuccessful() else SKIPPED if result.skipped else 0)


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def find_package(folder, name):
    (deb,) = glob.glob(f"{folder}/{name}_*.deb")
    return deb


def needed_packages(deb):
    """The packages that a package depends on; of alternatives the first."""
    depends = output_of("dpkg-deb", "--field", deb, "Depends")
    return [entry.split("|")[0].split()[0] for entry in depends.split(",")]


def own_mirror(release):
    """Where this machine has its own Debian packages from."""
    form = "$(ORIGIN) $(CODENAME) $(SITE)"
    for target in output_of("apt-get", "indextargets", "--format", form, "Created-By: Packages").splitlines():
        origin, codename, site = target.split()
        if (origin, codename) == ("Debian", release):
            return site
    skip(f"apt knows no mirror for Debian {release}")


def make_base(base, packages):
    release = platform.freedesktop_os_release()["VERSION_CODENAME"]
    if not shutil.which("debootstrap", path=ENVIRONMENT["PATH"]):
        skip("debootstrap is not installed")
    half_made = base.with_suffix(".new")
    shutil.rmtree(half_made, ignore_errors=True)
    command = ["debootstrap", "--variant=minbase", "--include=" + ",".join(packages)]
    command += [release, half_made, own_mirror(release)]
    result = subprocess.run(command, env=os.environ | ENVIRONMENT, **PRINTED)
    if "Couldn't find these debs" in result.stdout:
        raise AssertionError(result.stdout)
    if result.returncode != 0:
        skip("debootstrap failed: " + result.stdout.strip().rpartition("\n")[2])
    for archive in (half_made / "var/cache/apt/archives").glob("*.deb"):
        archive.unlink()
    half_made.rename(base)


def mount(kind, options, where):
    subprocess.run(["mount", "-t", kind, "-o", options, kind, where], check=True)


def hide_mounts():
    """What this process mounts from now on is seen by it and its children, and goes with them."""
    if os.geteuid() != 0:
        skip("only the superuser can make a system of its own")
    new_namespace = 0x00020000
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(new_namespace) != 0:
        skip("mounts of its own are forbidden: " + os.strerror(ctypes.get_errno()))
    if subprocess.run(["mount", "--make-rprivate", "/"]).returncode != 0:
        skip("mounts cannot be kept apart here, perhaps in a changed root")


class CleanRoot:
    """A fresh system with the given packages, in the folder path, until it is closed."""

    def __init__(self, cache, packages):
        hide_mounts()
        cache = pathlib.Path(cache).resolve()
        cache.mkdir(parents=True, exist_ok=True)
        packages = sorted(set(packages))
        base = cache / ("base-" + hashlib.sha256(" ".join(packages).encode()).hexdigest()[:12])
        with open(base.with_suffix(".lock"), "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            if not base.exists():
                make_base(base, packages)
        self.own = tempfile.mkdtemp()
        mount("tmpfs", "mode=755", self.own)
        self.path = pathlib.Path(self.own, "root")
        for name in ("root", "changes", "work"):
            pathlib.Path(self.own, name).mkdir()
        mount("overlay", f"lowerdir={base},upperdir={self.own}/changes,workdir={self.own}/work", self.path)

    def close(self):
        subprocess.run(["umount", self.path, self.own], check=True)
        os.rmdir(self.own)

    def command(self, *arguments):
        """The command line that runs a program in the system, without a network, as root."""
        own = ["unshare", "--mount", "--net", "--pid", "--fork", "--kill-child", f"--root={self.path}", "--mount-proc"]
        return own + ["--", *arguments]

    def run(self, *arguments):
        """Runs a program; gives what it prints. A failure is an error that shows it."""
        result = subprocess.run(self.command(*arguments), env=ENVIRONMENT, timeout=LIMIT, **PRINTED)
        if result.returncode != 0:
            raise AssertionError(f"{arguments} ended with {result.returncode}:\n{result.stdout}")
        return result.stdout

    def copy_in(self, file):
        """Puts a file into the folder for temporary files; gives its name there."""
        shutil.copy(file, self.path / "tmp")
        return f"/tmp/{os.path.basename(file)}"


WAIT_LIMIT = 120  # seconds after which what is waited for does not come any more
NAMESPACES = ("--mount", "--pid", "--net", "--uts", "--ipc", "--cgroup")

# The kernel's own settings stay out of its reach: they are those of the real machine.
BOOT = """
set -e
cd "$1"
mount -t proc proc proc
mount --bind proc/sys proc/sys
mount -o remount,bind,ro proc/sys
mount -t sysfs -o ro sysfs sys
mount -t cgroup2 cgroup2 sys/fs/cgroup
mount -t tmpfs -o mode=755 tmpfs run
mount -t tmpfs -o mode=755 tmpfs dev
for device in 'null 1 3' 'zero 1 5' 'full 1 7' 'random 1 8' 'urandom 1 9' 'tty 5 0'; do
    mknod -m 666 "dev/${device%% *}" c ${device#* }
done
# Serial adapters that no driver knows: whoever may open them is told that there is no such device.
mknod -m 666 dev/ttyUSB0 c 188 255
mknod -m 666 dev/ttyACM0 c 166 255
mkdir dev/pts dev/shm
mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts dev/pts
ln -s pts/ptmx dev/ptmx
ln -s /proc/self/fd dev/fd
touch dev/console
mount --bind "$2" dev/console
exec env -i container=oci PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot . /lib/systemd/systemd --log-target=console
"""


# Its own branch of the tree of control groups is all that it sees of the tree.
OWN_CGROUP = 'echo $$ >"$1/cgroup.procs" && shift && exec unshare "$@"'


class RunningSystem(CleanRoot):
    """Runs until it is closed or switched off."""

    def __init__(self, cache, packages):
        super().__init__(cache, [*packages, "systemd", "systemd-sysv", "dbus", "udev"])
        self.programs = []
        self.console = pathlib.Path(self.own, "console")
        self.console.touch()
        tree = pathlib.Path(self.own, "cgroups")
        tree.mkdir()
        mount("cgroup2", "rw", tree)
        self.cgroup = tree / os.path.basename(self.own)
        self.cgroup.mkdir()
        boot = [*NAMESPACES, "--fork", "--kill-child", "sh", "-c", BOOT, "boot", self.path, self.console]
        self.machine = subprocess.Popen(["sh", "-c", OWN_CGROUP, "own-cgroup", self.cgroup, *boot], **PRINTED)
        self.wait_for(self.is_up, "the system is up")

    def is_up(self):
        if self.machine.poll() is not None:
            skip("systemd cannot run here: " + self.machine.communicate()[0].strip())
        state = subprocess.run(self.command("systemctl", "is-system-running"), capture_output=True, text=True)
        return state.stdout.strip() in ("running", "degraded")

    def init(self):
        """The process number of systemd; 0 when it has none yet."""
        children = pathlib.Path(f"/proc/{self.machine.pid}/task/{self.machine.pid}/children").read_text()
        return int((children.split() or ["0"])[0])

    def enter(self, *namespaces):
        return ["nsenter", f"--target={self.init()}", *namespaces, "--root", "--wd", "--"]

    def command(self, *arguments):
        """The command line that runs a program in the running system, as root."""
        return [*self.enter(*NAMESPACES), *arguments]

    def start(self, log, *arguments):
        """Starts a program that goes on; what it prints goes to the file log.

        It sees the system's files and network but is none of its processes: it outlives the system.
        """
        command = [*self.enter("--mount", "--net"), *arguments]
        with open(log, "w") as output:
            self.programs.append(subprocess.Popen(command, env=ENVIRONMENT, **(PRINTED | {"stdout": output})))

    def switch_off(self):
        power_off = signal.SIGRTMIN + 4
        os.kill(self.init(), power_off)
        self.wait_for(lambda: self.machine.poll() is not None, "the end of the system")

    def wait_for(self, condition, what):
        end = time.monotonic() + WAIT_LIMIT
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(f"not seen: {what}\n{self.console.read_text()}")
            time.sleep(0.1)

    def close(self):
        for program in self.programs:
            program.kill()
            program.wait()
        if self.machine.poll() is None:
            os.kill(self.init() or self.machine.pid, signal.SIGKILL)
        self.machine.communicate()
        for folder, _, _ in os.walk(self.cgroup, topdown=False):
            os.rmdir(folder)
        subprocess.run(["umount", self.cgroup.parent], check=True)
        super().close()
