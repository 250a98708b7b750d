"""A clean system that systemd runs, like a machine of its own: own processes, network and devices."""

import os
import pathlib
import signal
import subprocess
import time

from clean_root import ENVIRONMENT, CleanRoot, mount, skip

LIMIT = 120  # seconds after which what is waited for does not come any more
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
        self.cgroup = self.make_cgroup()
        boot = [*NAMESPACES, "--fork", "--kill-child", "sh", "-c", BOOT, "boot", self.path, self.console]
        self.machine = subprocess.Popen(
            ["sh", "-c", OWN_CGROUP, "own-cgroup", self.cgroup, *boot],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )
        self.wait_for(self.is_up, "the system is up")

    def make_cgroup(self):
        tree = pathlib.Path(self.own, "cgroups")
        tree.mkdir()
        mount("cgroup2", "rw", tree)
        group = tree / os.path.basename(self.own)
        group.mkdir()
        return group

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
        with open(log, "w") as output:
            self.programs.append(
                subprocess.Popen(
                    [*self.enter("--mount", "--net"), *arguments],
                    env=ENVIRONMENT,
                    stdin=subprocess.DEVNULL,
                    stdout=output,
                    stderr=output,
                )
            )

    def switch_off(self):
        power_off = signal.SIGRTMIN + 4
        os.kill(self.init(), power_off)
        self.wait_for(lambda: self.machine.poll() is not None, "the end of the system")

    def wait_for(self, condition, what):
        end = time.monotonic() + LIMIT
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
