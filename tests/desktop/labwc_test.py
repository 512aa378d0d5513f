"""Checks privacy mode and the popover in labwc, which lets other programs minimise windows, with other people's programs.

It looks at the screen that the whole session stands on. It runs with --session labwc, --accessibility and --tray sni.
"""

import unittest

import popover_window
from desktop_case import EDITOR_COLOURS, MOUSEPAD, URXVT_COLOUR, XTERM_COLOUR, stays, wait_until, write_preferences
from session_case import FOOT_COLOUR, X11_WINDOWS_ONLY

COLOURS = {"xterm": XTERM_COLOUR, "foot": FOOT_COLOUR, "urxvt": URXVT_COLOUR}


class LabwcTest(popover_window.HidingSessionCase):
    def seen(self):
        return {program for program, colour in COLOURS.items() if self.shows(colour)}

    def wait_seen(self, *programs):
        wait_until(lambda: self.seen() == set(programs), f"{programs} are seen", seen=self.seen)

    def open_three(self):
        self.start_xterm(x=30, y=40)
        self.wait_seen("xterm")
        self.start_foot(FOOT_COLOUR)
        self.wait_seen("xterm", "foot")
        self.start_urxvt(x=700, y=560)
        self.wait_seen("xterm", "foot", "urxvt")

    def wait_hidden(self):
        self.wait_seen("urxvt")

    def settled_screen(self):
        def settled():
            lines = self.lines_of_screen()
            return lines if stays(lambda: self.lines_of_screen() == lines) else None
        return wait_until(settled, "the screen is quiet", seen=self.seen)

    def test_hides_exactly_the_private_apps_and_gives_them_back_as_they_were(self):
        self.start_with_private_terminals()
        before = self.settled_screen()
        for _ in range(3):
            self.toggle()
            self.wait_seen("urxvt")
            self.assertTrue(stays(lambda: self.seen() == {"urxvt"}))
            self.toggle()
            wait_until(lambda: self.lines_of_screen() == before, "the screen is as it was", seen=self.seen)

    def test_after_a_crash_the_next_one_gives_back_what_was_hidden(self):
        self.start_with_private_terminals()
        self.toggle()
        self.wait_seen("urxvt")
        self.curtain.kill()
        self.curtain.wait()
        self.start_curtain()
        wait_until(lambda: self.icon() == "close", "privacy mode is on")
        self.assertTrue(stays(lambda: self.seen() == {"urxvt"}, 1))
        self.toggle()
        self.wait_seen("xterm", "foot", "urxvt")

    def test_hides_what_is_opened_meanwhile(self):
        self.start_with_private_terminals()
        self.toggle()
        self.wait_seen("urxvt")
        further = self.open_xterm(x=30, y=40)
        wait_until(lambda: further.is_hidden, "it is hidden", seen=self.desktop.describe)
        self.wait_seen("urxvt")
        self.assertTrue(stays(lambda: self.seen() == {"urxvt"}))
        self.toggle()
        self.wait_seen("xterm", "foot", "urxvt")
        wait_until(lambda: not further.is_hidden, "it is back", seen=self.desktop.describe)

    def test_hides_again_what_its_user_brings_back(self):
        self.start_with_private_terminals()
        xterm = next(window for window in self.desktop.windows() if "XTerm" in window.window_class)
        self.toggle()
        self.wait_seen("urxvt")
        watch = self.desktop.start("xprop", "-spy", "-id", str(xterm.id), "_NET_WM_STATE")

        def told():
            return ["_NET_WM_STATE_HIDDEN" in line for line in watch.output().splitlines()]
        for _ in range(3):
            wait_until(lambda: told()[-1:] == [True], "it is hidden", seen=watch.output)
            before = len(told())
            xterm.raise_from_task_list()
            # It may be on the screen too shortly to be seen.
            wait_until(lambda: False in told()[before:] and told()[-1], "it comes back and goes", seen=watch.output)
            self.wait_seen("urxvt")
            self.assertTrue(stays(lambda: self.seen() == {"urxvt"}))

    def test_an_editor_of_gtk_on_wayland_is_known_by_its_entry(self):
        self.start_urxvt(x=700, y=560)
        self.wait_seen("urxvt")
        self.start_mousepad()
        wait_until(self.shows_editor, "the editor is open")
        self.assertFalse(any("ousepad" in window.window_class for window in self.desktop.windows()), "it came over X11")
        write_preferences(self.settings, targetApps=[MOUSEPAD], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()
        before = self.settled_screen()
        for _ in range(2):
            self.toggle()
            wait_until(lambda: not self.shows_editor(), "the editor is hidden")
            self.assertEqual(self.seen(), {"urxvt"})
            self.toggle()
            wait_until(lambda: self.lines_of_screen() == before, "the screen is as it was", seen=self.seen)

    def shows_editor(self):
        return any(map(self.shows, EDITOR_COLOURS))

    def test_the_settings_say_where_the_shortcut_is_heard(self):
        self.start_curtain()
        self.act("settings")
        self.wait_lines("hotkey field: Global shortcut:", X11_WINDOWS_ONLY)


if __name__ == "__main__":
    unittest.main()
