"""Checks that nothing of a private app is seen while privacy mode is on, and that nothing stays covered afterwards."""

import signal
import time
import unittest

from desktop_case import XTERM, DesktopCase, wait_until, write_preferences
from leak_meter import LeakMeter, PaintedProgram
from process_costs import switches

RETURNS = 5


class ShieldCase(DesktopCase):
    def go_private(self):
        self.app = PaintedProgram(self.display)
        self.addCleanup(self.app.end)
        self.window = self.app.tell("window")
        self.wait_shown(self.window)
        # The meter would switch privacy mode on by itself.
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()
        self.toggle()
        self.wait_hidden(self.window)
        self.meter = LeakMeter()
        self.addCleanup(self.meter.end)
        self.meter.wait_for(3)
        self.assertEqual(len(self.covers()), 1)

    def covers(self):
        """What is in the window that its program did not put there."""
        return self.display.children(self.window.id)

    def wait_uncovered(self):
        wait_until(lambda: not self.covers(), "nothing is covered")

    def assert_nothing_leaked_since(self, moment):
        self.meter.wait_for(3)
        self.assertEqual(self.meter.leaked_since(moment), 0)


class ShieldTest(ShieldCase):
    def setUp(self):
        super().setUp()
        self.go_private()

    def test_shows_nothing_of_a_window_that_returns(self):
        start = time.monotonic()
        for _ in range(RETURNS):
            self.assert_hides_again(self.window)
        self.assert_nothing_leaked_since(start)

    def test_sleeps_while_nothing_happens(self):
        def wake_ups():
            return [count for thread, count in switches(self.curtain.pid).items() if thread.startswith("shield ")]

        def sleeps():
            before = wake_ups()
            self.meter.wait_for(60)
            return len(before) == 1 and wake_ups() == before
        wait_until(sleeps, "the shield sleeps for a second", seen=lambda: switches(self.curtain.pid))

    def test_covers_nothing_once_privacy_mode_is_off(self):
        self.toggle()
        self.wait_shown(self.window)
        self.wait_uncovered()
        self.meter.wait_for(3, are_clean=False)

    def test_covers_nothing_once_curtain_is_killed(self):
        self.curtain.send_signal(signal.SIGKILL)
        self.curtain.wait()
        self.wait_uncovered()
        self.window.raise_from_task_list()
        self.wait_shown(self.window)
        self.meter.wait_for(3, are_clean=False)
        self.start_curtain()


if __name__ == "__main__":
    unittest.main()
