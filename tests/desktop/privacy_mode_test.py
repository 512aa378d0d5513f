"""Checks privacy mode against other people's programs, with real key presses."""

import os
import signal
import unittest
from pathlib import Path

from desktop_case import (CHROMIUM, MOUSEPAD, PAGE_COLOUR, URXVT_COLOUR, XTERM, XTERM_COLOUR, DesktopCase, stays,
                          wait_until)


class PrivacyModeTest(DesktopCase):
    def test_hides_exactly_the_private_apps_and_brings_them_back(self):
        xterm, urxvt, mousepad = self.open_xterm(), self.open_urxvt(), self.open_mousepad()
        for window, colour in ((xterm, XTERM_COLOUR), (urxvt, URXVT_COLOUR), (mousepad, "#ffffff")):
            self.wait_colour(window, colour)
        before = {window: window.geometry for window in (xterm, urxvt, mousepad)}
        areas = {window: window.interior for window in before}
        root = self.display.colour(20, 750)
        urxvt_pixels = self.display.pixels(areas[urxvt])
        self.start_curtain(XTERM, MOUSEPAD)

        self.toggle()
        self.wait_hidden(xterm, mousepad)
        for window in (xterm, mousepad):
            x, y, width, height = areas[window]
            wait_until(lambda: self.display.colour(x + width // 2, y + height // 2) == root, f"{window} left the screen",
                       seen=lambda: self.display.colour(x + width // 2, y + height // 2))
        self.assert_stays_shown(urxvt)
        self.assertEqual(urxvt.geometry, before[urxvt])
        self.assertEqual(self.display.pixels(areas[urxvt]), urxvt_pixels)

        self.toggle()
        self.wait_shown(xterm, mousepad)
        self.wait_geometry(before)
        for window, colour in ((xterm, XTERM_COLOUR), (urxvt, URXVT_COLOUR), (mousepad, "#ffffff")):
            self.wait_colour(window, colour)

    def test_hides_and_shows_many_times(self):
        xterm, urxvt = self.open_xterm(), self.open_urxvt()
        geometry = xterm.geometry
        self.start_curtain(XTERM)
        for _ in range(5):
            self.toggle()
            self.wait_hidden(xterm)
            self.toggle()
            self.wait_shown(xterm)
        self.wait_geometry({xterm: geometry})
        self.assertFalse(urxvt.is_hidden)

    def test_hides_again_what_is_raised(self):
        xterm, urxvt = self.open_xterm(), self.open_urxvt()
        self.start_curtain(XTERM)
        self.toggle()
        self.wait_hidden(xterm)
        for _ in range(3):
            self.assert_hides_again(xterm)
        self.assertFalse(urxvt.is_hidden)
        self.toggle()
        self.wait_shown(xterm)

    def test_hides_again_what_is_raised_while_it_is_being_hidden(self):
        xterm, urxvt = self.open_xterm(), self.open_urxvt()
        self.start_curtain(XTERM)
        self.toggle()
        self.wait_hidden(xterm)
        window_manager = self.pid_of_part("openbox", "xfwm4")
        for process in (window_manager, self.curtain.pid):
            self.addCleanup(lambda pid=process: os.kill(pid, signal.SIGCONT) if Path(f"/proc/{pid}").exists() else None)
        self.display.watch_requests()
        os.kill(self.curtain.pid, signal.SIGSTOP)
        xterm.raise_from_task_list()
        self.wait_shown(xterm)
        # The window manager gets Curtain's request and the user's next one at once, and Curtain learns of both together.
        os.kill(window_manager, signal.SIGSTOP)
        os.kill(self.curtain.pid, signal.SIGCONT)

        def asks_to_hide():
            return self.display.has_request(xterm.id, "WM_CHANGE_STATE")
        wait_until(asks_to_hide, "Curtain asks to hide the window")
        # Once for its coming to the front, once for its return to the screen.
        wait_until(lambda: stays(lambda: not asks_to_hide()), "Curtain asks no more")
        os.kill(self.curtain.pid, signal.SIGSTOP)
        xterm.raise_from_task_list()
        urxvt.ask_for_state("ABOVE")
        os.kill(window_manager, signal.SIGCONT)
        wait_until(lambda: urxvt.has_state("ABOVE"), "the window manager has done it all")
        self.assertFalse(xterm.is_hidden)
        os.kill(self.curtain.pid, signal.SIGCONT)
        self.wait_hidden(xterm)
        self.assert_stays_hidden(xterm)

    def test_hides_a_further_instance_and_brings_it_back_with_its_app(self):
        first = self.open_xterm()
        self.start_curtain(XTERM)
        self.toggle()
        self.wait_hidden(first)
        second = self.open_xterm(x=500)
        self.wait_hidden(second)
        self.toggle()
        self.wait_shown(first, second)

    def test_leaves_hidden_what_was_only_launched_meanwhile(self):
        xterm = self.open_xterm()
        self.start_curtain(XTERM, MOUSEPAD)
        self.toggle()
        self.wait_hidden(xterm)
        mousepad = self.desktop.window_of(self.start_mousepad())
        self.wait_hidden(mousepad)
        self.toggle()
        self.wait_shown(xterm)
        self.assert_stays_hidden(mousepad)

    def test_lets_launched_apps_be_after_the_second_press(self):
        xterm = self.open_xterm()
        self.start_curtain(XTERM)
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)
        self.assert_stays_shown(self.open_xterm(x=500))

    def test_brings_windows_back_to_their_workspaces(self):
        here, elsewhere = self.open_xterm(), self.open_xterm(x=500)
        elsewhere.send_to_workspace(2)
        workspace = self.desktop.workspace
        geometry = elsewhere.geometry
        self.start_curtain(XTERM)

        self.toggle()
        wait_until(lambda: here.is_hidden and elsewhere.is_hidden, "both are hidden")
        self.desktop.workspace = 2
        self.assertFalse(self.display.is_viewable(elsewhere.id))
        self.desktop.workspace = workspace
        self.assert_stays_hidden(here, elsewhere)

        self.toggle()
        self.wait_shown(here)
        wait_until(lambda: not elsewhere.is_hidden, "the window on the other workspace is back")
        self.assert_stays_shown(here, elsewhere)
        self.assertEqual((elsewhere.workspace, self.desktop.workspace), (2, workspace))
        self.assertFalse(self.display.is_viewable(elsewhere.id))
        self.desktop.workspace = 2
        self.wait_shown(elsewhere)
        self.wait_geometry({elsewhere: geometry})
        self.desktop.workspace = workspace

    def test_does_not_change_the_workspace_for_an_app_that_is_elsewhere(self):
        xterm = self.open_xterm()
        xterm.send_to_workspace(1)
        self.start_curtain(XTERM)
        for is_hidden in (True, False):
            self.toggle()
            wait_until(lambda: xterm.is_hidden == is_hidden, f"hidden: {is_hidden}", seen=lambda: xterm.is_hidden)
        self.assert_stays_shown(xterm)
        self.assertEqual((self.desktop.workspace, xterm.workspace), (0, 1))

    def test_brings_large_windows_back_large(self):
        for states in (("MAXIMIZED_VERT", "MAXIMIZED_HORZ"), ("FULLSCREEN",)):
            with self.subTest(states):
                xterm = self.open_xterm()
                small = xterm.geometry
                xterm.ask_for_state(*states)
                # Window managers answer one state after the other.
                wait_until(lambda: all(map(xterm.has_state, states)) and xterm.geometry.width > small.width
                           and xterm.geometry.height > small.height, "it is large", seen=lambda: xterm.geometry.width)
                large = xterm.geometry
                self.start_curtain(XTERM)
                self.toggle()
                self.wait_hidden(xterm)
                self.toggle()
                self.wait_shown(xterm)
                self.assertTrue(all(map(xterm.has_state, states)))
                self.wait_geometry({xterm: large})
                self.wait_colour(xterm, XTERM_COLOUR)
                self.end_curtain()
                self.desktop.end_programs()

    def test_hides_every_window_of_an_app(self):
        program = self.start_mousepad()
        first = self.desktop.window_of(program)
        self.start_mousepad().wait(30)
        second = self.desktop.window_of(program, 1)
        places = {first: (60, 80, 480, 300), second: (700, 80, 480, 300)}
        for window, place in places.items():
            window.place(*place)
        self.start_curtain(MOUSEPAD)
        self.toggle()
        self.wait_hidden(first, second)
        self.toggle()
        self.wait_shown(first, second)
        self.wait_geometry(places)

    def test_hides_dialogs_with_their_app(self):
        program = self.start_mousepad()
        mousepad = self.desktop.window_of(program)
        wait_until(lambda: self.desktop.active_window == mousepad, "the editor has the keyboard")
        self.display.strike(37, 32)
        dialog = self.desktop.window_of(program, 1)
        self.start_curtain(MOUSEPAD)
        self.toggle()
        self.wait_hidden(mousepad, dialog)
        self.toggle()
        self.wait_shown(mousepad, dialog)

    def test_leaves_a_minimised_app_minimised(self):
        xterm, mousepad = self.open_xterm(), self.open_mousepad()
        xterm.minimise()
        self.start_curtain(XTERM, MOUSEPAD)
        self.toggle()
        self.wait_hidden(mousepad)
        self.toggle()
        self.wait_shown(mousepad)
        self.assert_stays_hidden(xterm)

    def test_leaves_a_minimised_window_of_an_app_minimised(self):
        program = self.start_mousepad()
        first = self.desktop.window_of(program)
        self.start_mousepad().wait(30)
        second = self.desktop.window_of(program, 1)
        first.minimise()
        self.start_curtain(MOUSEPAD)
        self.toggle()
        self.wait_hidden(second)
        self.toggle()
        self.wait_shown(second)
        self.assert_stays_hidden(first)

    def test_hides_a_browser_with_all_its_processes(self):
        urxvt = self.open_urxvt()
        program = self.start_chromium()
        chromium = self.desktop.window_of(program)
        self.wait_colour(chromium, PAGE_COLOUR)
        geometry = chromium.geometry
        self.start_curtain(CHROMIUM)
        self.toggle()
        self.wait_hidden(chromium)
        self.assert_stays_shown(urxvt)
        self.toggle()
        self.wait_shown(chromium)
        self.wait_geometry({chromium: geometry})
        self.wait_colour(chromium, PAGE_COLOUR)


if __name__ == "__main__":
    unittest.main()
