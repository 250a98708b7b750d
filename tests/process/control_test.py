"""The operator's command beside a running service."""

import json
import os
import re
import signal
import subprocess
import unittest

import harness
from harness import NOBODY, READY, Site, linux_only

FIRST, SECOND, OTHER = "13900000001", "13900000002", "13900000009"
ANSWERS = ["--number-1", FIRST, "--number-2", SECOND]
ANSWERS += ["--sms-centre", "+8613800100500", "--mail-server", "none"]
# Long enough for two pieces.
ALARM = "1031010srv{[b^k^]}" + "98% of all that a processor can do for so long that people notice"


class ControlSite(Site):
    """A place where nothing is yet, for an operator to begin."""

    def __init__(self, test):
        super().__init__(test, log=False)
        self.settings.unlink()
        self.path("system").rmdir()

    def environment(self):
        return super().environment() | {"TARNEXCOMM_STATUS": harness.there(self.path("status.json"))}

    def run(self, *arguments, before=(), stdout=subprocess.PIPE):
        """tarnexctl, started by the program before."""
        command = [*before, *harness.command("tarnexctl", arguments)]
        streams = {"stdin": subprocess.DEVNULL, "stdout": stdout, "stderr": subprocess.PIPE, "encoding": "utf-8"}
        return subprocess.run(command, env=self.environment(), timeout=harness.LIMIT, **streams)

    def ctl(self, *arguments):
        """What tarnexctl prints when all is well."""
        result = self.run(*arguments)
        self._test.assertEqual((result.returncode, result.stderr), (0, ""), arguments)
        return result.stdout

    def ask(self, *arguments):
        return json.loads(self.ctl(*arguments, "--json"))

    def set_up(self):
        self.ctl("setup", "--port", self.path("unit"), *ANSWERS)
        # The usual address may be another service's.
        self.ctl("settings", "set", "bind-address", self.address)


class Control(unittest.TestCase):
    def fails(self, status, text, result):
        """It ended so and said why in one line."""
        self.assertEqual(result.returncode, status, result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertIn(text, result.stderr)

    def test_the_first_start(self):
        site = ControlSite(self)
        site.set_up()
        self.fails(69, harness.START_SERVICE, site.run("status"))
        self.assertIn("\ntarnexcomm_up 0\n", site.ctl("metrics"))

        unit = site.unit("--sms-seconds", "1")
        service = site.service()
        watch = site.start("tarnexctl", "status", "--watch", "--long")
        tail = site.start("tarnexctl", "log", "tail")
        monitor = site.monitor()
        monitor.greet("门卫")
        monitor.wait_for(READY)
        watch.wait_for("11 of 11 start-up steps done")
        self.assertTrue(watch.said("being searched for"))
        status = site.ask("status")
        gone = f"process {status['pid']} has gone"
        self.assertEqual((status["unit"]["port"], status["links"][0]["name"]), (1, "门卫"))

        why = site.ask("why", ALARM)
        self.assertEqual((len(why["pieces"]), why["sms_in_all"]), (2, 4))
        monitor.send("txSendSMS" + ALARM)
        watch.wait_for("sent 4, given up 0")
        told = [(str(sms["recipient"]), piece) for piece in why["pieces"] for sms in why["sms"] if sms["taken"]]
        sent = [re.search(r"SMS to number (\d) \(\d+\): (.*)", line).groups() for line in unit.said("SMS to number")]
        self.assertEqual(sent, told)
        self.assertIn("  " + why["text"], tail.wait_for(why["text"]))
        row = json.loads(site.ctl("log", "tail", "--once", "--json").splitlines()[-1])
        self.assertEqual((row["message"], row["by_sms"]), (why["text"], True))
        unit.tell(f"sms {FIRST} 1301")
        monitor.wait_for(b"txControl1301")

        site.ctl("settings", "set", "alarm-number-1", OTHER)
        unit.wait_for(f"command: WRNO1({OTHER})")
        service.stop(signal.SIGKILL)
        self.fails(69, gone, site.run("status"))
        watch.wait_for(gone)

    @linux_only
    def test_what_stands_in_the_way(self):
        site = ControlSite(self)
        site.set_up()
        with open("/dev/full", "w", encoding="ascii") as full:
            for command in ("metrics", "--help"):
                self.fails(74, "standard output", site.run(command, stdout=full))
        # No file that is written may take the place of a closed output.
        wanted = site.read_settings().replace("Check1(9)=1", "Check1(9)=0")
        closed = ["sh", "-c", '"$@" >&-', "sh"]
        self.fails(74, "standard output", site.run("settings", "set", "link-1", "off", before=closed))
        self.assertEqual(site.read_settings(), wanted)

        if os.geteuid() != 0:
            return  # only root can play two users
        stranger = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
        self.fails(77, "run this as root", site.run("settings", "list", before=stranger))
        site.settings.chmod(0o644)
        self.fails(77, "run this as root", site.run("settings", "set", "link-1", "on", before=stranger))
        self.fails(69, "does not run", site.run("status", before=stranger))

    @linux_only
    def test_root_has_no_more_rights_in_a_folder_than_its_owner(self):
        if os.geteuid() != 0:
            self.skipTest("only root can have more")
        site, of_root = ControlSite(self), ControlSite(self)
        os.chown(site.folder, NOBODY, NOBODY)
        site.set_up()
        for path in site.folder.rglob("*"):
            self.assertEqual(path.stat().st_uid, NOBODY, path)

        of_root.set_up()
        before = of_root.read_settings()
        for name in ("system/Tarnex.ini", "system"):
            site.path(name).rename(site.path("moved-" + name.replace("/", "-")))
            site.path(name).symlink_to(of_root.path(name))
            self.fails(77, "settings file", site.run("settings", "set", "link-1", "off"))
            self.assertEqual(of_root.read_settings(), before, name)

        may_not = ["setpriv", "--bounding-set=-setuid,-setgid"]
        self.fails(77, "root may not act as", site.run("settings", "set", "link-1", "off", before=may_not))

        of_root.edit_setting("Text1(37)", of_root.path("made.db"))
        os.chown(of_root.settings, NOBODY, NOBODY)
        self.fails(73, "cannot be made", of_root.run("log", "create"))
        self.assertFalse(of_root.path("made.db").exists())

    def test_what_a_kill_leaves_is_sent_and_sent_again_on_request(self):
        site = ControlSite(self)
        site.set_up()
        site.ctl("settings", "set", "sms-to-number-2", "off")

        def messages():
            lines = site.run("history", "--since", "1d", "--json").stdout.splitlines()
            return [row for row in map(json.loads, lines) if row.get("fate") not in (None, "held back")]

        unit = site.unit("--sms-seconds", "1")
        service = site.service()
        monitor = site.monitor()
        monitor.greet()
        for number in range(3):
            monitor.send(f"txSendSMS1031010srv{{[b^k^]}}nr{number}.")
        harness.wait_until(lambda: len(messages()) == 3, "three SMS")
        service.stop(signal.SIGKILL)

        service = site.service()
        service.wait_for("3 SMS that waited when the service ended were not sent, and are sent again")
        for number in range(3):
            unit.wait_for(f"nr{number}.")
        fates = ["lost"] * 3 + ["sent"] * 3
        harness.wait_until(lambda: [row["fate"] for row in messages()] == fates, "the fates of all")
        sent = str(messages()[3]["id"])
        if not harness.windows:  # which tells only who writes
            followed = site.run("history", "--follow", before=["sh", "-c", '"$@" | head -1', "sh"])
            self.assertEqual((followed.stdout.count("\n"), followed.stderr), (1, ""))
        many = 1500 if harness.windows else 5000  # no command line there is longer than 32767 characters
        answers = site.run("resend", sent, *["9" * 18] * many)
        self.assertEqual(answers.stdout.splitlines()[0], f"{sent} is queued again")
        self.assertEqual((answers.returncode, answers.stdout.count(" is no message")), (1, many))
        unit.wait_for("nr0.", 2)
        self.assertEqual(service.stop(), 0)
        self.fails(69, "it does not run", site.run("resend", "--unsent"))


harness.run(Control)
