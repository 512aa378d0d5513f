"""Runs scripts/setup on machines that are made up: what is installed there, what their releases have, and which packages it takes."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SETUP = Path(__file__).resolve().parents[2] / "scripts/setup"
PROGRAMS = {
    "dpkg-query": 'for package in $INSTALLED; do echo "ii  $package"; done',
    "apt-cache": 'for package in $RELEASE; do [ "$package" != "$2" ] || exit 0; done; exit 100',
    "apt-get": """\
case "$*" in
    *--assume-no*) printf 'Reading package lists...\\nNeed to get 7 MB of archives.\\nAbort.\\n'; exit 1 ;;
    *) echo "$@" >> "$CALLS"; [ "$1" != update ] || [ -z "${OFFLINE-}" ] ;;
esac""",
    "id": "echo 0",
}


def listed(*names):
    """The packages in those lists."""
    return {package for name in names for line in (SETUP.parent / "packages" / name).read_text().splitlines()
            if (package := line.partition("#")[0].strip().rstrip("?"))}


def named_in_control(*fields):
    """The packages that these fields of the Debian package name."""
    control = (SETUP.parents[1] / "debian/control").read_text()
    lists = [re.search(rf"^{field}:\n((?: .*\n)+)", control, re.MULTILINE)[1] for field in fields]
    return {name for text in lists for name in re.findall(r"(?:^| \|) ([a-z][\w.+-]+)", text, re.MULTILINE)}


class SetupTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        (self.folder / "packages").mkdir()
        (self.folder / "bin").mkdir()
        shutil.copy(SETUP, self.folder / "setup")
        for name, text in PROGRAMS.items():
            (self.folder / "bin" / name).write_text(f"#!/bin/sh\n{text}\n")
            (self.folder / "bin" / name).chmod(0o755)
        (self.folder / "packages/build-and-run").write_text("# A comment.\ncompiler\n\nplugins?  # in some\n")
        (self.folder / "packages/tour").write_text("camera\n")
        (self.folder / "packages/debian-package").write_text("packer\n")
        (self.folder / "packages/desktop-and-tests").write_text("desktop\nmagnifier?\n")
        (self.folder / "packages/long-tests").write_text("server\n")

    def install(self, *arguments, installed, release, **environment):
        """What apt-get is told to install; None if it is not even asked for the lists."""
        calls = self.folder / "calls"
        calls.write_text("")
        done = subprocess.run([self.folder / "setup", *arguments], text=True, capture_output=True, check=False, env=os.environ | environment | {
            "PATH": f"{self.folder}/bin:{os.environ['PATH']}", "CALLS": str(calls), "INSTALLED": installed, "RELEASE": release})
        self.status = done.returncode
        self.complaints = done.stderr
        self.said = done.stdout.splitlines()
        lines = calls.read_text().splitlines()
        if not lines:
            return None
        self.assertEqual(lines[0], "update -q")
        return [word for line in lines[1:] for word in line.partition("Timeout=600")[2].split()]

    def test_does_nothing_where_nothing_is_missing(self):
        self.assertIsNone(self.install(installed="compiler plugins", release="compiler plugins"))
        self.assertIsNone(self.install(installed="compiler", release="compiler"))
        self.assertEqual((self.status, self.complaints), (0, ""))

    def test_takes_what_is_missing_and_of_the_doubtful_what_the_release_has(self):
        self.assertEqual(self.install(installed="", release="compiler plugins"), ["compiler", "plugins"])
        self.assertEqual(self.install(installed="", release="compiler"), ["compiler"])
        self.assertEqual(self.install(installed="compiler", release="compiler plugins"), ["plugins"])
        self.assertEqual(self.install("--package", installed="compiler", release="packer"), ["packer"])
        self.assertEqual(self.install("--tour", installed="compiler", release="camera"), ["camera"])
        self.assertEqual(self.install("--tests", installed="compiler plugins camera packer", release="desktop magnifier"),
                         ["desktop", "magnifier"])
        self.assertEqual(self.install("--tests", installed="compiler packer desktop", release="camera"), ["camera"])
        self.assertEqual(self.install("--long", installed="compiler camera desktop packer", release="server"), ["--no-remove", "server"])

    def test_says_what_for_and_how_much_before_anything_is_fetched(self):
        self.install("--tour", installed="compiler", release="camera")
        purpose, size = self.said
        self.assertRegex(purpose, "^Curtain set-up: installing, to .* in a virtual desktop.*: camera$")
        self.assertEqual(size, "Need to get 7 MB of archives.")

    def test_what_no_release_may_lack_is_asked_for_all_the_same(self):
        self.assertEqual(self.install(installed="", release=""), ["compiler"])

    def test_the_lists_have_what_the_source_package_is_built_with(self):
        self.assertEqual(named_in_control("Build-Depends") - listed("build-and-run", "debian-package"), {"debhelper-compat"})
        self.assertIn("debhelper", listed("debian-package"))

    def test_what_builds_and_runs_curtain_has_nothing_that_the_packages_do_not_ask_for(self):
        asked = named_in_control("Build-Depends", "Depends", "Recommends", "Suggests")
        self.assertEqual(listed("build-and-run") - asked, {"g++", "make"})

    def test_the_packages_test_asks_for_what_the_tour_needs(self):
        control = (SETUP.parents[1] / "debian/tests/control").read_text()
        self.assertEqual(listed("tour") - set(re.findall(r"[\w.+-]+", control)), set())

    def test_says_so_when_the_lists_cannot_be_had(self):
        self.assertEqual(self.install(installed="", release="", OFFLINE="1"), [])
        self.assertEqual((self.status, self.complaints),
                         (1, "Curtain set-up: the package lists could not be fetched; is the network up?\n"))


if __name__ == "__main__":
    unittest.main()
