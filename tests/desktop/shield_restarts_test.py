"""Checks that private apps stay covered while window managers come and go.

It runs with --session x11-bare --tray none --media and brings its own window managers and trays.
"""

import time
import unittest

from desktop_case import wait_until
from restarts_test import NO_WINDOW_MANAGER, RestartCase
from shield_test import ShieldCase

NEVER_TRIED = ("icewm",)


class ShieldRestartsTest(ShieldCase, RestartCase):
    def end_curtain(self):
        # It looks once, fifteen seconds after its start, when there may be none.
        if self.curtain.complaints() == NO_WINDOW_MANAGER:
            self.expected_complaints = NO_WINDOW_MANAGER
        super().end_curtain()

    def test_stays_on_while_the_window_manager_is_replaced(self):
        self.start_window_manager("openbox")
        self.go_private()
        start = time.monotonic()
        for name in ("openbox", "xfwm4"):
            self.start_window_manager(name, "--replace")
            self.assert_hides_again(self.window)
        self.assert_nothing_leaked_since(start)

    def test_stays_on_while_there_is_no_window_manager(self):
        for name in ("openbox", "xfwm4"):
            with self.subTest(name):
                manager = self.start_window_manager(name)
                self.go_private()
                start = time.monotonic()
                manager.kill()
                manager.wait()
                wait_until(lambda: self.display.is_viewable(self.window.id), "the server has given the window back")
                self.assert_nothing_leaked_since(start)
                self.start_window_manager("openbox")
                self.end_curtain()
                self.app.end()
                self.desktop.end_programs()
                self.end_services()
                self.start_tray()

    def test_covers_nothing_under_a_window_manager_that_was_never_tried(self):
        self.start_window_manager("openbox")
        self.go_private()
        self.start_service(*NEVER_TRIED, "--replace")
        self.wait_uncovered()


if __name__ == "__main__":
    unittest.main()
