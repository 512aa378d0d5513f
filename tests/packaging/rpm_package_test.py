"""Builds the RPM packages, checks them, and installs and removes the program's in a folder of its own.

usage: rpm_package_test.py FOLDER [unittest options]

FOLDER is made anew. BUILD in the environment is the build's folder, which is packed, and VERSION Curtain's version.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from installed_files import INSTALLED_FILES, files_below

FOLDER = None  # main() fills it in
VERSION = os.environ["VERSION"]
SOURCE = Path(__file__).resolve().parents[2]


def run(*argv, **environment):
    return subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, env=os.environ | environment)


def output(*argv):
    return subprocess.run(argv, stdout=subprocess.PIPE, text=True, check=True).stdout


class RpmPackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # What it is built with is here, but no database of RPM knows.
        built = run(str(SOURCE / "scripts/rpm-package"), str(FOLDER), "--nodeps", CURTAIN_BUILD=os.environ["BUILD"])
        if built.returncode:
            raise AssertionError("\n".join(built.stdout.splitlines()[-100:]))
        cls.path, = FOLDER.glob("RPMS/*/curtain-[0-9]*.rpm")
        cls.source, = FOLDER.glob("SRPMS/*.rpm")

    def field(self, name):
        return output("rpm", "--query", "--package", "--queryformat", f"%{{{name}}}", str(self.path))

    def rpm(self, root, *arguments):
        done = run("rpm", "--root", str(root), *arguments)
        # Debian says there that its own packages are better.
        said = [line for line in done.stdout.splitlines() if not line.startswith("rpm: ")]
        self.assertEqual((done.returncode, said), (0, []))

    def test_rpmlint_has_nothing_to_say(self):
        done = run("rpmlint", "--rpmlintrc", str(SOURCE / "packaging/rpm/curtain.rpmlintrc"), str(self.path), str(self.source))
        self.assertRegex(done.stdout, r"\b0 errors, 0 warnings\b", done.stdout)

    def test_says_the_same_as_the_debian_package(self):
        control = (SOURCE / "debian/control").read_text()
        summary, description = re.search(r"^Description: (.*)\n((?: .*\n)+)", control, re.MULTILINE).groups()
        self.assertEqual(self.field("NAME"), "curtain")
        self.assertEqual(self.field("VERSION"), VERSION)
        self.assertEqual(self.field("SUMMARY"), summary[:1].upper() + summary[1:])
        self.assertEqual(self.field("DESCRIPTION"), re.sub(r"^ \.?", "", description, flags=re.MULTILINE).strip())

    def test_requires_the_libraries_of_the_program(self):
        with tempfile.TemporaryDirectory(prefix="curtain-test-") as scratch:
            archive = subprocess.run(["rpm2cpio", self.path], check=True, stdout=subprocess.PIPE).stdout
            subprocess.run(["cpio", "--extract", "--make-directories", "--quiet"], input=archive, cwd=scratch, check=True)
            programs = [Path(scratch) / "usr/bin/curtain", *Path(scratch).rglob("curtain-*.so")]
            self.assertEqual(len(programs), 3)
            needed = {name for program in programs
                      for name in re.findall(r"\(NEEDED\).*\[(lib.*)\]", output("readelf", "--dynamic", str(program)))}
        required = {line.partition("(")[0] for line in output("rpm", "--query", "--package", "--requires", str(self.path)).splitlines()}
        self.assertTrue(needed)
        self.assertEqual(needed - required, set())

    def test_is_installed_and_removed_without_a_trace(self):
        with tempfile.TemporaryDirectory(prefix="curtain-test-") as scratch:
            root = Path(scratch)
            self.rpm(root, "--nodeps", "--install", str(self.path))
            installed = {name for name in files_below(root) if name.startswith("usr/") and not name.startswith("usr/lib/sysimage/")}
            plain = {re.sub(r"^usr/|\.gz$", "", name) for name in installed}
            self.assertEqual({name for name in plain if not re.search("/doc/|/licenses/|/.build-id/", name)}, INSTALLED_FILES)
            self.rpm(root, "--erase", "curtain")
            self.assertEqual([path for path in root.rglob("*[cC]urtain*")], [])


if __name__ == "__main__":
    FOLDER = Path(sys.argv.pop(1))
    unittest.main()
