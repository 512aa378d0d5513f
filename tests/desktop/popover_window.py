"""How the popover's window behaves in a session that may place windows as it likes and takes the keyboard where it wants.

`SessionPopoverCase` is for sessions to derive their tests from, `HidingSessionCase` for those in which apps can be hidden.
"""

import unittest

from desktop_case import IS_WAYLAND, XTERM, XTERM_COLOUR, stays, wait_until, write_preferences
from session_case import ESCAPE, FOOT, SessionCase

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


class HidingSessionCase(SessionPopoverCase):
    # What is said of the terminal of Wayland's while it is in view, and while it is hidden.
    foot_states = ("Visible", "Hidden")

    def open_three(self):
        """A terminal of X11 and one of Wayland, which are private, and another one of X11."""
        raise NotImplementedError

    def wait_hidden(self):
        """The private ones, and no other."""
        raise NotImplementedError

    def toggle(self):
        self.act("toggle-privacy")

    def start_with_private_terminals(self):
        self.open_three()
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()

    def test_the_wizard_finds_that_all_is_well(self):
        self.start_curtain()
        self.click_icon()
        self.press("push button: See if my computer qualifies")
        self.wait_lines("heading: Your computer is perfect for this")

    def test_the_popover_and_the_icon_say_what_is_hidden(self):
        in_view, hidden = self.foot_states
        self.start_with_private_terminals()
        self.assertEqual(self.icon(), "open")
        self.click_icon()
        self.wait_lines("list item: XTerm: Visible", f"list item: Foot: {in_view}")
        self.screen.strike(ESCAPE)
        self.wait_closed()
        self.toggle()
        self.wait_hidden()
        wait_until(lambda: self.icon() == "close", "the icon says so", seen=self.icon)
        self.click_icon()
        self.wait_lines("list item: XTerm: Hidden", f"list item: Foot: {hidden}")
