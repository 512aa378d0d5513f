"""Reads off the installed program how it is guarded against what strangers send.

CMAKE in the environment is the program and BUILD the build's folder.
"""

import os
import platform
import subprocess
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD = (os.environ[name] for name in ("CMAKE", "BUILD"))
SOURCE = Path(__file__).resolve().parents[2]


def output(*argv):
    return subprocess.run(argv, stdout=subprocess.PIPE, text=True, check=True, env=os.environ | {"LC_ALL": "C"}).stdout


class HardeningTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        cls.addClassCleanup(scratch.cleanup)
        output(CMAKE, "--install", BUILD, "--prefix", scratch.name)
        cls.program = Path(scratch.name) / "bin/curtain"

    def read(self, option):
        return output("readelf", "--wide", option, self.program)

    def test_it_is_loaded_at_a_place_of_the_systems_choice(self):
        self.assertIn("DYN (Position-Independent Executable file)", self.read("--file-header"))

    def test_addresses_of_functions_are_found_at_the_start_and_kept_from_changes(self):
        self.assertIn("GNU_RELRO", self.read("--program-headers"))
        self.assertRegex(self.read("--dynamic"), r"\(FLAGS_1\) .*NOW")

    def test_no_memory_can_be_both_written_and_run(self):
        segments = [line.split() for line in self.read("--program-headers").splitlines()]
        stack = [line for line in segments if line[:1] == ["GNU_STACK"]]
        self.assertEqual([line[6] for line in stack], ["RW"])
        self.assertNotIn("RWE", self.read("--program-headers"))

    def test_libraries_come_from_the_system_only(self):
        self.assertNotRegex(self.read("--dynamic"), "RPATH|RUNPATH")

    def test_stacks_and_buffers_are_guarded(self):
        imported = self.read("--dyn-syms")
        self.assertIn("__stack_chk_fail", imported)
        self.assertRegex(imported, "__[a-z]+_chk@")
        # What the library's containers say before they end the program.
        self.assertIn("__glibcxx_assert_fail", imported)

    @unittest.skipUnless(platform.machine() == "x86_64", "another processor's marks")
    def test_jumps_land_only_where_they_may(self):
        """The mark of the whole program says so only where the C library's start files are marked, which Debian's are not."""
        landings = output("objdump", "--disassemble", "--no-show-raw-insn", self.program).count("endbr64")
        self.assertGreater(landings, 1000)

    def test_it_does_not_tell_where_it_was_built(self):
        program = self.program.read_bytes()
        for folder in (SOURCE, Path(BUILD)):
            self.assertNotIn(os.fsencode(f"{folder}/"), program)


if __name__ == "__main__":
    unittest.main()
