"""Builds the Debian source package and what it makes, with Debian's own flags, and checks both.

usage: debian_package_test.py FOLDER [unittest options]

FOLDER is made anew. VERSION in the environment is Curtain's version.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

FOLDER = None  # main() fills it in
VERSION = os.environ["VERSION"]
SOURCE = Path(__file__).resolve().parents[2]


def run(*argv):
    return subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)


class DebianPackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        built = run(str(SOURCE / "scripts/debian-package"), str(FOLDER), f"--jobs={os.cpu_count()}")
        cls.log = built.stdout
        if built.returncode:
            raise AssertionError("\n".join(cls.log.splitlines()[-100:]))
        cls.architecture = run("dpkg", "--print-architecture").stdout.strip()

    def extract(self, name):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        done = run("dpkg-deb", "--extract", str(FOLDER / name), scratch.name)
        self.assertEqual(done.returncode, 0, done.stdout)
        return Path(scratch.name)

    def test_makes_a_source_package_a_package_and_one_of_symbols(self):
        self.assertEqual({path.name for path in FOLDER.iterdir()}, {
            f"curtain_{VERSION}.dsc", f"curtain_{VERSION}.tar.xz", f"curtain_{VERSION}_{self.architecture}.deb",
            f"curtain-dbgsym_{VERSION}_{self.architecture}.deb", *(f"curtain_{VERSION}_{self.architecture}.{kind}"
                                                                   for kind in ("buildinfo", "changes"))})

    def test_runs_the_tests_that_need_no_display(self):
        passed = re.search(r"100% tests passed, 0 tests failed out of (\d+)", self.log)
        self.assertTrue(passed, self.log[-3000:])
        self.assertGreater(int(passed[1]), 500)

    def test_lintian_has_nothing_to_say(self):
        done = run("lintian", "--no-cfg", "--display-info", "--pedantic", "--allow-root", "--fail-on", "none",
                   str(FOLDER / f"curtain_{VERSION}_{self.architecture}.changes"))
        # As for the package of the day's build.
        said = [line for line in done.stdout.splitlines() if "appstream-metadata-validation-failed" not in line]
        self.assertEqual((done.returncode, said), (0, []))

    def test_the_symbols_are_those_of_the_program(self):
        program = self.extract(f"curtain_{VERSION}_{self.architecture}.deb") / "usr/bin/curtain"
        identifier = re.search(r"Build ID: (\w+)", run("readelf", "--notes", str(program)).stdout)[1]
        symbols = self.extract(f"curtain-dbgsym_{VERSION}_{self.architecture}.deb")
        file = symbols / f"usr/lib/debug/.build-id/{identifier[:2]}/{identifier[2:]}.debug"
        self.assertIn(".debug_info", run("readelf", "--section-headers", "--wide", str(file)).stdout)


if __name__ == "__main__":
    FOLDER = Path(sys.argv.pop(1))
    unittest.main()
