"""How the popover's window behaves in a session that may place windows as it likes and takes the keyboard where it wants.

`SessionPopoverCase` is for sessions to derive their tests from.
"""

import unittest

from desktop_case import IS_WAYLAND, XTERM_COLOUR, stays, wait_until
from session_case import ESCAPE, SessionCase

# Of one that no rounding changes.
OTHER_COLOUR = "#ff00ff"


class SessionPopoverCase(SessionCase):
    def start_with_private_terminals(self):
        """One of X11, which is to be seen, and Curtain."""
        raise NotImplementedError

    def open_popover(self):
        self.click_icon()
        self.wait_lines("push button: More options")
        return wait_until(self.place_of_popover, "the popover is on the screen")

    def test_the_popover_is_all_on_the_screen_each_time_and_closes_with_escape(self):
        self.start_with_private_terminals()
        places = []
        for _ in range(3):
            self.open_popover()
            self.assertTrue(stays(self.place_of_popover, 1))
            places.append(self.place_of_popover())
            self.screen.strike(ESCAPE)
            self.wait_closed()
            wait_until(lambda: not self.place_of_popover(), "the popover is gone", seen=self.place_of_popover)
        self.assertEqual(len(set(places)), 1, places)
        # Its edge is lighter.
        self.assertTrue(696 <= places[0].width <= 700 and 614 <= places[0].height <= 618, places)

    def test_a_click_outside_closes_the_popover(self):
        self.start_with_private_terminals()
        place = self.open_popover()
        self.click_at(place.x + 20, place.y + 8)
        self.assertTrue(stays(self.place_of_popover, 1), "a click inside closed it")
        self.click_at(*self.place_of(XTERM_COLOUR))
        self.wait_closed()

    @unittest.skipUnless(IS_WAYLAND, "on X11 every click is heard of")
    def test_a_program_that_takes_the_keyboard_closes_the_popover(self):
        self.start_with_private_terminals()
        self.open_popover()
        self.start_foot(OTHER_COLOUR)
        self.wait_closed()
