"""The manual pages and the shell completion of the installed programs.

Usage: documents_test.py CMAKE BUILD_FOLDER
"""

import gzip
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

CMAKE, BUILD = sys.argv[1:3]

COMPLETE = """
source /usr/share/bash-completion/bash_completion
source "$1/share/bash-completion/completions/$2"
PATH=$1/bin:$PATH
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
COMP_LINE="$*"
COMP_POINT=${#COMP_LINE}
complete=($(complete -p "$1"))
"${complete[-2]}" "$1" "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"
printf '%s\\n' "${COMPREPLY[@]}"
"""


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout


def options_in_help(*command):
    """The long options of a program and of all its commands."""
    text = output_of(*command, "--help")
    options = set(re.findall(r"--[a-z][a-z0-9-]*", text))
    commands = re.search(r"^Subcommands:\n(.*?)\n\n", text, re.MULTILINE | re.DOTALL)
    for name in re.findall(r"^  ([a-z]+)", commands[1], re.MULTILINE) if commands else []:
        options |= options_in_help(*command, name)
    return options


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.installed = pathlib.Path(folder.name)
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", folder.name], check=True, stdout=subprocess.DEVNULL)
        cls.pages = {path.name.split(".")[0]: path for path in (cls.installed / "share/man").glob("man*/*.gz")}

    def test_pages_are_well_formed(self):
        for page in self.pages.values():
            with self.subTest(page.name):
                self.assertEqual(output_of("mandoc", "-T", "lint", "-W", "warning", page), "")

    def test_pages_have_the_options_of_the_programs(self):
        for program in (self.installed / "bin").iterdir():
            if program.name == "tarnexcomm":
                continue  # any argument that it does not know ends it
            with self.subTest(program.name):
                page = gzip.decompress(self.pages[program.name].read_bytes()).decode()
                options = re.findall(r"\bFl (-[a-z][a-z0-9-]*)", page)
                self.assertEqual({"-" + option for option in options}, options_in_help(program))

    def test_completion_knows_what_comes_next(self):
        settings = ("tarnexctl", "--settings-file", "/elsewhere", "settings")
        for words, offered in [
            ((*settings, ""), ["list", "get", "set", "unset", "check"]),
            ((*settings, "set", "alarm-"), ["alarm-number-1", "alarm-number-2"]),
            ((*settings, "set", "alarm-number-1", ""), []),
            ((*settings, "set", "quiet-time", ""), ["on", "off"]),
            ((*settings, "set", "link-events-way", ""), ["SMS", "Email", "S+E"]),
            ((*settings, "set", "com1-device", "/dev/nul"), ["/dev/null"]),
            (("tarnexctl", "setup", "--port", "sea"), ["search"]),
            (("tarnexctl", "resend", "--"), ["--help", "--settings-file", "--status-file", "--unsent", "--version"]),
            (("tarnexctl", "log", "create", "/usr/lib/os-r"), ["/usr/lib/os-release"]),
            (("tarnex-monitor", "notify", "--state", ""), ["abnormal", "normal", "lost"]),
            (("tarnex-sim", "--li"), ["--link"]),
            (("tarnex-mail-sink", "--refuse", "rc"), ["rcpt"]),
        ]:
            with self.subTest(words=words):
                self.assertEqual(output_of("bash", "-c", COMPLETE, "bash", self.installed, *words).split(), offered)


os.environ["LC_ALL"] = "C.UTF-8"
unittest.main(argv=sys.argv[:1])
