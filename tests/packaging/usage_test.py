"""Compares what the installed program says and does on its command line with its man page and the completions of shells.

CMAKE in the environment is the program and BUILD the build's folder.
"""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from installed_files import ZSH_COMPLETIONS

CMAKE, BUILD = os.environ["CMAKE"], os.environ["BUILD"]
SOURCE = Path(__file__).resolve().parents[2]
# The word on the cursor is the last one of the line.
BASH = """\
source "$0"
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_curtain
printf '%s\\n' "${COMPREPLY[@]}"
"""
# The function that zsh's completions call with what they have to offer.
ZSH = """\
_arguments() { print -l -- "$@" }
source "$1"
"""


def run(*argv, status=0, **options):
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False, timeout=60, **options)
    if done.returncode != status:
        raise AssertionError(f"{argv}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


class UsageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        cls.addClassCleanup(scratch.cleanup)
        cls.prefix = Path(scratch.name) / "prefix"
        run(CMAKE, "--install", BUILD, "--prefix", str(cls.prefix))
        cls.program = str(cls.prefix / "bin/curtain")
        cls.help = run(cls.program, "--help")
        cls.options = dict(re.findall(r"^  (--\w+) +(.+)$", cls.help, re.MULTILINE))
        page = cls.prefix / "share/man/man1/curtain.1"
        cls.complaints = subprocess.run(["man", "--warnings", "--local-file", page], env=os.environ | {"MAN_KEEP_STDERR": "1", "MANWIDTH": "200"},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=True).stderr
        text = run("man", "--local-file", str(page), env=os.environ | {"MANWIDTH": "200", "LC_ALL": "C", "MANOPT": "--no-justification"})
        cls.page = {name: body for name, body in re.findall(r"^([A-Z][A-Z -]+)\n(.*?)(?=^\S|\Z)", text, re.MULTILINE | re.DOTALL)}

    def test_the_first_line_names_every_option(self):
        self.assertTrue(self.options)
        self.assertEqual(self.help.splitlines()[0], f"usage: curtain [{' | '.join(sorted(self.options))}]")

    def test_the_man_page_is_well_formed(self):
        self.assertEqual(self.complaints, "")

    def test_the_man_page_has_the_options_of_the_program(self):
        found = dict(re.findall(r"^ +(--\w+)\s+(\S.*)$", self.page["OPTIONS"], re.MULTILINE))
        self.assertEqual(found, self.options)
        self.assertEqual(set(re.findall(r"--\w+", self.page["SYNOPSIS"])), set(self.options))

    def test_the_man_page_has_the_exit_statuses_of_the_program(self):
        self.assertEqual(re.findall(r"^ +(\d) ", self.page["EXIT STATUS"], re.MULTILINE), ["0", "1", "2"])
        for option in self.options:
            run(self.program, option, status=0)
        nowhere = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        run(self.program, env=nowhere, status=1)
        run(self.program, "--other", status=2)

    def test_the_man_page_has_the_environment_variables_that_the_program_reads(self):
        sources = [path.read_text() for folder in ("Curtain", "core", "hotkeys", "platform")
                   for path in (SOURCE / folder).rglob("*.cpp")]
        read = {name for text in sources
                for name in re.findall(r'(?:getenv|environment|variable|EnvironmentVariable\w+|Variable = )\(?"([A-Z][A-Z0-9_]+)"', text)}
        self.assertLessEqual({"CURTAIN_DEBUG", "DISPLAY", "QT_QPA_PLATFORM", "XDG_DATA_DIRS"}, read)
        named = set(re.findall(r"\b[A-Z][A-Z0-9_]+\b", self.page["ENVIRONMENT"]))
        self.assertEqual(read - named, set())

    def test_bash_completes_the_options(self):
        def complete(*words):
            return run("bash", "-c", BASH, str(self.prefix / "share/bash-completion/completions/curtain"), "curtain", *words).split()

        self.assertEqual(complete(""), list(self.options))
        self.assertEqual(complete("--ver"), ["--version"])
        self.assertEqual(complete("--help", ""), [])

    def test_fish_completes_the_options(self):
        def complete(line):
            script = str(self.prefix / "share/fish/vendor_completions.d/curtain.fish")
            told = run("fish", "--no-config", "-c", f"source {script}; complete --do-complete {line!r}")
            return dict(option.split("\t") for option in told.splitlines())

        self.assertEqual(complete("curtain --"), self.options)
        self.assertEqual(complete("curtain --help --"), {})

    def test_zsh_completes_the_options(self):
        script = self.prefix / ZSH_COMPLETIONS
        self.assertEqual(script.read_text().splitlines()[0], "#compdef curtain")
        offered = run("zsh", "-f", "-c", ZSH, "zsh", str(script)).splitlines()
        self.assertEqual(offered, [f"(- *){name}[{text}]" for name, text in self.options.items()])


if __name__ == "__main__":
    unittest.main()
