"""Does what the documents tell their reader to type, as far as a test can, and follows their links.

CMAKE in the environment is the program and BUILD the build's folder. Runs within scripts/virtual-desktop.
"""

import os
import re
import shlex
import subprocess
import unittest
from pathlib import Path

from desktop_case import XTERM, DesktopCase
from installed_files import GNOME_EXTENSION

CMAKE, BUILD = os.environ["CMAKE"], os.environ["BUILD"]
SOURCE = Path(__file__).resolve().parents[2]
DOCUMENTS = [SOURCE / "README.md", SOURCE / "CONTRIBUTING.md", SOURCE / "CHANGELOG.md", *sorted((SOURCE / "docs").rglob("*.md"))]
PROGRAMS = r"make\b|scripts/[\w-]+(?!/)\b|cmake -|ctest -|gdbus call|curtain -|systemctl |sudo |rm -|flatpak-builder |build/debug/|gnome-extensions "
# What no test can do here, and why.
NOT_RUN = {
    r"sudo apt install ": "changes this machine; the test CleanSystem does it in a system of its own",
    r"flatpak-builder ": "needs a runtime from the network; docs/packaging.md says that it has not been run",
    r"scripts/setup\b": "may install packages; the tests Setup and Debian13 run it",
    r"scripts/virtual-desktop\b": "this test runs in one",
    r"scripts/debian-package\b": "takes long; the test BuildPackage runs it",
    r"scripts/rpm-package\b": "takes long; the test RpmPackage runs it",
    r"cmake --install BUILD ": "names a folder of the reader's; the test Install does it",
    r"scripts/repeat-tests\b": "takes hours",
}


def commands_in(text):
    """Lines of their own, without the explanation beside them, and those in the middle of a sentence."""
    lines = re.sub(r"\\\n\s+", "", text).splitlines()
    blocks = [re.split(r"\s{2,}", line.strip())[0] for line in lines if re.match(rf"    (?:{PROGRAMS})", line)]
    return blocks + re.findall(rf"`((?:{PROGRAMS})[^`]*)`", text)


def headings(path):
    """As links name them."""
    return {re.sub(r"[^\w -]", "", line.lstrip("# ").lower()).replace(" ", "-")
            for line in path.read_text().splitlines() if line.startswith("#")}


class DocumentsTest(DesktopCase):
    def setUp(self):
        super().setUp()
        # As a package has it, below a folder that stands for the root of the system.
        self.root = self.scratch / "root"
        self.prefix = self.root / "usr"
        self.run_there(CMAKE, "--install", BUILD, "--prefix", "/usr", DESTDIR=str(self.root))

    def run_there(self, *argv, **environment):
        done = subprocess.run(argv, cwd=SOURCE, env=os.environ | environment, text=True, check=False, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(done.returncode, 0, f"{argv}\n{done.stdout}")
        return done.stdout

    def launch_curtain(self, **environment):
        return self.desktop.start(str(self.prefix / "bin/curtain"), environment={"XDG_CONFIG_HOME": str(self.settings)} | environment)

    # What is typed

    def make(self, words):
        self.run_there("make", "--dry-run", *words[1:])

    def preset(self, words):
        kind = "build" if "--build" in words else "test" if words[0] == "ctest" else "configure"
        options = ["--list-presets"] if kind == "test" else [f"--list-presets={kind}"]
        known = self.run_there(*(["ctest"] if kind == "test" else [CMAKE]), *options)
        self.assertIn(f'"{words[words.index("--preset") + 1]}"', known)

    def curtain_option(self, words):
        return self.run_there(str(self.prefix / "bin/curtain"), *words[1:])

    def action(self, words):
        xterm = self.open_xterm()
        self.start_curtain(XTERM)
        self.run_there(*words)
        self.wait_hidden(xterm)
        self.run_there(*words)
        self.wait_shown(xterm)
        self.end_curtain()

    def unit(self, words):
        self.run_there("systemctl", "--global", f"--root={self.root}", *words[2:])
        wanted = self.root / "etc/systemd/user/graphical-session.target.wants/curtain.service"
        self.assertEqual(os.readlink(wanted), "/usr/lib/systemd/user/curtain.service")

    def fresh_settings(self, words):
        home = self.scratch / "home"
        home.mkdir()
        self.curtain = self.launch_curtain(HOME=str(home), XDG_CONFIG_HOME="")
        self.wait_until_ready(self.curtain)
        self.end_curtain()
        folder = home / ".config/curtain"
        self.assertTrue(folder.is_dir())
        self.run_there("sh", "-c", shlex.join(words).replace("'~", "~").replace("'", ""), HOME=str(home))
        self.assertFalse(folder.exists())

    def script(self, words):
        self.assertTrue((SOURCE / words[0]).is_file(), words)

    def compiler_of_texts(self, words):
        self.run_there(words[0].replace("build/debug", BUILD), *words[1:])

    def extension(self, words):
        self.assertEqual(words, ["gnome-extensions", "enable", Path(GNOME_EXTENSION).name])

    KINDS = [
        (r"make\b", make),
        (r"(cmake|ctest) .*--preset ", preset),
        (r"curtain --", curtain_option),
        (r"gdbus call .*ActivateAction toggle-privacy", action),
        (r"systemctl --user enable curtain$", unit),
        (r"rm -r ~/.config/curtain$", fresh_settings),
        (r"scripts/", script),
        (r"build/debug/core/TextCompiler ", compiler_of_texts),
        (r"gnome-extensions enable ", extension),
    ]

    def test_every_command_can_be_typed(self):
        commands = {command: path.name for path in DOCUMENTS for command in commands_in(path.read_text())}
        self.assertGreater(len(commands), 20)
        for command, document in commands.items():
            with self.subTest(f"{document}: {command}"):
                if any(re.match(pattern, command) for pattern in NOT_RUN):
                    continue
                run = next((run for pattern, run in self.KINDS if re.match(pattern, command)), None)
                self.assertIsNotNone(run, "no test knows what to do with it")
                run(self, shlex.split(command))

    def test_the_lines_of_the_diagnosis_that_the_guide_explains_are_there(self):
        guide = (SOURCE / "docs/guide.md").read_text()
        named = re.findall(r"`([A-Z][\w ]+:)`", guide)
        self.assertGreater(len(named), 5)
        told = [line.partition(":")[0] + ":" for line in self.curtain_option(["curtain", "--diagnose"]).splitlines()]
        self.assertEqual([name for name in named if name not in told], [])

    def test_the_man_page_names_what_curtain_writes(self):
        names = ("XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR")
        folders = {name: self.scratch / name.lower() for name in names}
        for folder in folders.values():
            folder.mkdir(mode=0o700)
        self.settings = folders["XDG_CONFIG_HOME"]
        xterm = self.open_xterm()
        self.start_curtain(XTERM, **{name: str(folder) for name, folder in folders.items()})
        self.toggle()
        self.wait_hidden(xterm)
        # Libraries have files of their own there.
        written = {f"${name}/{path.relative_to(folder)}" for name, folder in folders.items() for path in folder.rglob("*")
                   if path.is_file() and "curtain" in str(path.relative_to(folder))}
        self.toggle()
        self.wait_shown(xterm)
        self.end_curtain()
        self.assertTrue(any(name.startswith("$XDG_RUNTIME_DIR/") for name in written), written)
        page = (self.prefix / "share/man/man1/curtain.1").read_text()
        named = re.findall(r"^\.I (\$\S+)$", page, re.MULTILINE)
        self.assertEqual({name for name in written if not any(name.startswith(known.rstrip("*")) for known in named)}, set())

    def test_every_link_leads_somewhere(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)\s]+)\)", document.read_text()):
                if re.match(r"https?:", target):
                    continue
                name, _, heading = target.partition("#")
                path = (document.parent / name).resolve() if name else document
                with self.subTest(f"{document.name}: {target}"):
                    self.assertTrue(path.exists())
                    self.assertTrue(not heading or heading in headings(path))


if __name__ == "__main__":
    unittest.main()
