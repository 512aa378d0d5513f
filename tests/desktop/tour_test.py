"""Checks that the tour tells the truth: that it ends well with Curtain, and only with it."""

import os
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
PICTURES = ["01-before-the-call.png", "02-wizard.png", "03-wizard-microphone.png", "04-wizard-camera.png",
            "05-check-before-the-call.png", "06-private-apps.png", "07-privacy-mode.png", "08-hidden-again.png",
            "09-risks.png", "10-fixed.png", "11-shared-screen.png", "12-settings.png", "13-settings-in-french.png",
            "14-check-in-french.png"]


class TourTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.pictures = Path(scratch.name) / "tour"

    def take(self, program):
        done = subprocess.run([SCRIPTS / "virtual-desktop", "--media", "--", SCRIPTS / "tour", program,
                               os.environ["VIRTUAL_CAMERA"], self.pictures], text=True, capture_output=True, timeout=240)
        return done.returncode, done.stdout, done.stderr

    def test_tells_and_shows_what_curtain_does(self):
        status, story, complaints = self.take(os.environ["CURTAIN"])
        self.assertEqual((status, complaints), (0, ""), story)
        self.assertIn("Everything happened as told.", story)
        self.assertEqual(sorted(path.name for path in self.pictures.iterdir()), PICTURES)
        for name in PICTURES:
            size = struct.unpack_from(">II", (self.pictures / name).read_bytes(), 16)
            self.assertEqual(size, (1280, 800), name)

    def test_fails_when_the_program_ends(self):
        status, _, complaints = self.take("/bin/true")
        self.assertEqual((status, complaints), (1, "The tour failed: Curtain ended by itself.\n"))

    def test_fails_without_a_program(self):
        status, _, complaints = self.take("/no/such/program")
        self.assertEqual((status, complaints), (1, "The tour failed: there is no program /no/such/program.\n"))


if __name__ == "__main__":
    unittest.main()
