"""Checks that the leak meter sees what a capture of the screen sees, by a program that leaks on purpose."""

import time
import unittest

from desktop_case import XTERM, DesktopCase, wait_until, write_preferences
from leak_meter import LeakMeter, PaintedProgram

# As PaintedProgram opens them.
WINDOW_PIXELS = 200 * 150
# The meter is to do sixty.
SLOWEST_RATE = 30


class LeakMeterTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.program = PaintedProgram(self.display)
        self.addCleanup(self.program.end)
        self.meter = LeakMeter()
        self.addCleanup(self.meter.end)
        self.meter.wait_for(3)

    def test_counts_no_pixel_where_nothing_is_shown(self):
        self.meter.wait_for(30)
        self.assertEqual(self.meter.leaked_since(0), 0)
        wait_until(lambda: self.meter.rate(30) > SLOWEST_RATE, "the meter is quick", seen=lambda: self.meter.rate(30))

    def test_counts_every_picture_of_a_window_and_every_pixel(self):
        for kind in ("window", "menu"):
            with self.subTest(kind):
                start = time.monotonic()
                self.program.tell(kind)
                wait_until(lambda: len([1 for frame in self.meter.since(start) if frame.pixels == WINDOW_PIXELS]) > 5,
                           "the whole window is in the pictures", seen=lambda: self.meter.since(start))
                self.program.tell("close")
                self.meter.wait_for(5)
                seen = [frame.pixels for frame in self.meter.since(start) if frame.pixels]
                self.assertEqual(self.meter.leaked_since(start), len(seen))
                self.assertEqual(max(seen), WINDOW_PIXELS)

    def test_counts_only_what_is_not_covered(self):
        self.program.tell("window")
        self.meter.wait_for(5, are_clean=False)
        urxvt = self.open_urxvt(x=10, y=10)
        self.meter.wait_for(5)
        urxvt.minimise()
        self.meter.wait_for(5, are_clean=False)

    def test_sees_a_private_app_until_it_is_hidden_and_no_longer(self):
        self.program.tell("window")
        # The meter would switch privacy mode on by itself.
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()
        self.meter.wait_for(5, are_clean=False)
        pressed = time.monotonic()
        self.toggle()
        self.meter.wait_for(10)
        hidden = max(frame.time for frame in self.meter.since(0) if frame.pixels)
        self.assertLess(hidden, time.monotonic())
        self.assertEqual(self.meter.leaked_since(hidden), 0)
        self.assertGreater(self.meter.leaked_since(0), self.meter.leaked_since(pressed))


if __name__ == "__main__":
    unittest.main()
