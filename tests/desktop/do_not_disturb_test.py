"""Checks that dunst keeps quiet while the screen is shared, and is as it was afterwards."""

import re
import subprocess
import time
import unittest

from desktop_case import XTERM, DesktopCase, stays, wait_until, write_preferences

# For a machine that is busy.
PATIENCE = 20
# From the end of privacy mode until dunst may talk.
SECONDS_TO_TALK = 4
ORDER_TO_TALK = re.compile(r"time=([\d.]+) (?:(?! time=).)*?(?:boolean false|uint32 0\n)", re.DOTALL)


class DoNotDisturbTest(DesktopCase):
    def setUp(self):
        super().setUp()
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True)
        self.addCleanup(self.dunst, "set-paused", "false")

    def dunst(self, *words):
        return subprocess.run(["dunstctl", *words], check=True, text=True, capture_output=True).stdout.strip()

    def is_quiet(self):
        return self.dunst("is-paused") == "true"

    def shown(self):
        return int(self.dunst("count", "displayed"))

    def message(self):
        """Somebody writes something private."""
        subprocess.run(["gdbus", "call", "--session", "--dest", "org.freedesktop.Notifications", "--object-path",
                        "/org/freedesktop/Notifications", "--method", "org.freedesktop.Notifications.Notify", "Chat", "0",
                        "", "A friend", "Something private", "[]", "{}", "60000"], check=True, capture_output=True)

    def capture(self):
        capture = self.start_capture()
        wait_until(self.is_quiet, "dunst is quiet", PATIENCE, seen=capture.complaints)
        return capture

    def kill_curtain(self):
        curtain, self.curtain = self.curtain, None
        curtain.kill()
        curtain.wait()

    def test_nothing_is_shown_during_a_share_and_what_was_held_comes_after_it(self):
        self.start_curtain()
        capture = self.capture()
        self.message()
        self.assertTrue(stays(lambda: self.shown() == 0, 1), "the message was shown")
        capture.terminate()
        wait_until(lambda: not self.is_quiet(), "dunst talks again", PATIENCE)
        wait_until(lambda: self.shown() == 1, "the message is shown", PATIENCE)

    def test_a_second_share_does_not_show_what_the_first_held(self):
        self.start_curtain()
        xterm = self.open_xterm()
        first = self.capture()
        self.wait_hidden(xterm)
        self.message()
        orders = self.desktop.start("dbus-monitor", "--session", "member='Set'")
        wait_until(lambda: "NameAcquired" in orders.output() or "NameLost" in orders.output(), "the bus is watched",
                   seen=orders.output)
        end = time.time()
        first.terminate()
        first.wait()
        self.wait_shown(xterm)
        self.start_capture()

        def keeps_it_away():
            if self.shown() == 0:
                return self.is_quiet()
            # On a busy machine the second may begin so late that dunst was to talk in between.
            wait_until(lambda: ORDER_TO_TALK.search(orders.output()), "dunst was told to talk", seen=orders.output)
            self.assertGreaterEqual(float(ORDER_TO_TALK.search(orders.output())[1]), end + SECONDS_TO_TALK)
            return False
        wait_until(lambda: keeps_it_away() and xterm.is_hidden, "dunst keeps the message away", PATIENCE,
                   seen=lambda: (self.is_quiet(), self.shown()))
        self.assertTrue(stays(keeps_it_away, 6), "the message was shown")

    def test_the_next_start_gives_back_what_a_killed_one_held(self):
        self.start_curtain()
        capture = self.capture()
        self.kill_curtain()
        capture.terminate()
        capture.wait()
        self.assertTrue(self.is_quiet())
        # It takes privacy mode up, and waits ten seconds for the share to show.
        self.start_curtain()
        wait_until(lambda: not self.is_quiet(), "dunst talks again", PATIENCE + 10)

    def test_what_its_user_turns_is_left_alone(self):
        self.dunst("set-paused", "true")
        self.start_curtain()
        xterm = self.open_xterm()
        capture = self.capture()
        self.wait_hidden(xterm)
        capture.terminate()
        self.wait_shown(xterm)
        self.assertTrue(stays(self.is_quiet, 6))


if __name__ == "__main__":
    unittest.main(verbosity=2)
