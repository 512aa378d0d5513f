"""Checks that scripts/repeat-tests counts every failure and hides none.

    repeat_tests_test.py
"""

import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "repeat-tests"


class RepeatTestsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.build = Path(folder.name)
        self.tests = []

    def add(self, name, script, label="platform", properties=""):
        self.tests.append(f'add_test({name} "/bin/sh" "-c" [==[{script}]==])\n'
                          f'set_tests_properties({name} PROPERTIES LABELS "{label}" {properties})\n')

    def run_script(self, *options):
        (self.build / "CTestTestfile.cmake").write_text("".join(self.tests))
        return subprocess.run([SCRIPT, "--times", "3", *options, self.build], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=60, check=False)

    def report(self):
        lines = (self.build / "repeated" / "report.txt").read_text().splitlines()[1:]
        return {name: (int(runs), int(failures)) for runs, failures, name in map(str.split, lines)}

    def marks(self, name):
        return len((self.build / name).read_text())

    def add_marking(self, name, label):
        self.add(name, f"printf x >>'{self.build}/{name}'", label)

    def test_runs_each_test_of_the_labels_so_often(self):
        for label in ("platform", "desktop", "views"):
            self.add_marking(label, label)
        self.add("unit", "exit 1", "unit")
        self.add("long", "exit 1", "desktop;long")
        result = self.run_script()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(self.report(), dict.fromkeys(("platform", "desktop", "views"), (3, 0)))
        self.assertEqual([self.marks(name) for name in ("platform", "desktop", "views")], [3, 3, 3])

    def test_one_failure_of_three_is_a_failure_with_its_log(self):
        self.add("good", "exit 0")
        self.add("flaky", f"printf x >>'{self.build}/count'; echo what it said; "
                          f"[ $(wc -c <'{self.build}/count') -ne 2 ]")
        result = self.run_script()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(self.report(), {"good": (3, 0), "flaky": (3, 1)})
        self.assertEqual(self.marks("count"), 3, "it is not tried again")
        self.assertIn("flaky: failed 1 times, ran 3 times", result.stdout)
        logs = list((self.build / "repeated").glob("*.log"))
        self.assertEqual([log.name for log in logs], ["flaky-2.log"])
        self.assertIn("what it said", logs[0].read_text())

    def test_one_that_does_not_run_has_failed(self):
        self.add("fixture", "exit 1", "unit", "FIXTURES_SETUP world")
        self.add("needy", "exit 0", "desktop", "FIXTURES_REQUIRED world")
        result = self.run_script()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(self.report()["needy"], (0, 3))

    def test_one_that_takes_too_long_has_failed(self):
        self.add("slow", "exec sleep 30", "desktop", "TIMEOUT 1")
        result = self.run_script("--times", "1")
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(self.report(), {"slow": (1, 1)})

    def test_no_test_is_a_failure(self):
        self.add("unit", "exit 0", "unit")
        self.assertNotEqual(self.run_script().returncode, 0)

    def test_the_machine_is_busy_meanwhile_and_idle_afterwards(self):
        self.add("looks", f"ps -o args= --ppid $(ps -o ppid= -p $(ps -o ppid= -p $$)) >>'{self.build}/programs'")
        result = self.run_script("--times", "1", "--loops", "3")
        self.assertEqual(result.returncode, 0, result.stdout)
        programs = (self.build / "programs").read_text()
        self.assertEqual(programs.count("os.getppid() == parent"), 3, programs)


if __name__ == "__main__":
    unittest.main()
