"""Checks what Curtain answers on its command line, with and without a display, and that it starts nothing for it."""

import os
import subprocess
import unittest

from desktop_case import CURTAIN, DesktopCase

SESSIONS = {
    "x11-openbox": ("Session: X11", "Window manager: Openbox", "Windows: X11 windows are listed and hidden"),
    "x11-i3": ("Session: X11", "Window manager: i3", "Windows: X11 windows are listed; none can be hidden, since i3"),
    "sway": ("Session: Wayland, with an X server", "Window manager: sway", "Windows: X11 windows are listed; none"),
    "weston": ("Session: Wayland, with an X server", "Window manager: weston", "Windows: X11 windows are listed; none"),
}


def ask(*options, **changes):
    environment = {name: value for name, value in {**os.environ, **changes}.items() if value is not None}
    done = subprocess.run([CURTAIN, *options], env=environment, capture_output=True, text=True, timeout=30)
    return done.returncode, done.stdout, done.stderr


class CommandLineTest(DesktopCase):
    def test_tells_its_version_and_its_options(self):
        for display in (os.environ["DISPLAY"], None):
            status, output, complaints = ask("--version", DISPLAY=display)
            self.assertRegex(output, r"^curtain \d+\.\d+\.\d+\n$")
            self.assertEqual((status, complaints), (0, ""))
            status, output, complaints = ask("--help", DISPLAY=display)
            self.assertEqual((status, complaints), (0, ""))
            for option in ("--diagnose", "--help", "--version"):
                self.assertIn(option, output)

    def test_refuses_what_it_does_not_know(self):
        for options in (["--other"], ["file"], ["--version", "--other"]):
            status, output, complaints = ask(*options)
            self.assertEqual((status, output, len(complaints.splitlines())), (2, "", 1), complaints)
            self.assertIn(options[-1], complaints)

    def diagnosis(self, **changes):
        status, output, complaints = ask("--diagnose", **changes)
        self.assertEqual((status, complaints), (0, ""))
        for private in (os.environ["HOME"], os.environ["XDG_RUNTIME_DIR"], str(self.scratch)):
            self.assertNotIn(private, output)
        return output

    def test_diagnoses_this_session(self):
        output = self.diagnosis()
        for line in SESSIONS[os.environ["VIRTUAL_DESKTOP_SESSION"]]:
            self.assertIn("\n" + line, output)
        self.assertIn("\nNotifications: dunst", output)
        self.assertIn("\nCurtain is running: no\n", output)

    def test_diagnoses_without_a_display(self):
        output = self.diagnosis(DISPLAY=None, WAYLAND_DISPLAY=None)
        self.assertIn("\nSession: none", output)
        self.assertIn("\nShortcut: none", output)

    def test_diagnoses_without_a_bus(self):
        output = self.diagnosis(DBUS_SESSION_BUS_ADDRESS="nonsense")
        self.assertIn("\nSession bus: none\n", output)


if __name__ == "__main__":
    unittest.main()
