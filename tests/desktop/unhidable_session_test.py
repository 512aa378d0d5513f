"""Checks Curtain in sessions in which no window can be hidden yet: it runs, stays quiet and hides nothing halfway."""

import os
import subprocess
import unittest

from desktop_case import XTERM, XTERM_COLOUR, DesktopCase, Display, Rectangle, stays, wait_until

WIDTH, HEIGHT = 1280, 800


class UnhidableSessionTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)

    def wait_until_ready(self, curtain):
        """By its name on the bus: the X server of a compositor does not keep others out while a grab is tried on it."""
        question = ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
                    "org.freedesktop.DBus.NameHasOwner", "com.curtain.Curtain"]

        def is_ready():
            self.assertIsNone(curtain.poll(), curtain.complaints())
            return "true" in subprocess.run(question, check=True, capture_output=True, text=True).stdout
        wait_until(is_ready, "Curtain is on the bus")

    def shows_xterm(self):
        """Whether a person sees it, on the screen that the whole session stands on."""
        red, green, blue = bytes.fromhex(XTERM_COLOUR[1:])
        pixels = self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT))
        return bytes((blue, green, red, pixels[3])) * 50 in pixels

    def act(self, action):
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path",
                        "/com/curtain/Curtain", "--method", "org.freedesktop.Application.ActivateAction", action, "[]",
                        "{}"], check=True, capture_output=True)

    def test_leaves_the_windows_of_private_apps_alone(self):
        self.start_xterm()
        wait_until(self.shows_xterm, "the terminal is on the screen")
        self.start_curtain(XTERM)
        for _ in range(2):
            self.act("toggle-privacy")
            self.assertTrue(stays(self.shows_xterm, 1))

    def test_the_choice_of_wayland_for_other_programs_changes_nothing(self):
        self.start_curtain(XTERM, QT_QPA_PLATFORM="wayland")
        self.assertIn("\nCurtain is running: yes\n", subprocess.run(
            [os.environ["CURTAIN"], "--diagnose"], check=True, capture_output=True, text=True).stdout)


if __name__ == "__main__":
    unittest.main()
