"""Checks Curtain in sessions in which no window can be hidden yet: it says so everywhere and hides nothing halfway.

It runs with --accessibility and --tray sni.
"""

import os
import subprocess
import unittest

import popover_window
from desktop_case import IS_WAYLAND, XTERM, XTERM_COLOUR, stays, wait_until, write_preferences
from session_case import FOOT, SESSION, X11_WINDOWS_ONLY

OBSTACLE, REMEDY = (
    ("This Wayland desktop offers no way to hide other apps.",
     "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce.") if IS_WAYLAND else
    ("The window manager of this session doesn't hide windows when it is asked to.",
     "At the login screen, choose a desktop such as Xfce, MATE or LXQt."))
# What the popover says of a terminal of X11 and of one of Wayland. Weston lists no windows at all.
XTERM_STATE = "Can't tell" if SESSION == "weston" else "Visible"
FOOT_STATE = "Can't tell" if IS_WAYLAND else "Not running"
NOTICE = "Privacy mode has no effect"
FOOT_COLOUR = "#20a040"


class UnhidableSessionTest(popover_window.SessionPopoverCase):
    def test_leaves_the_windows_of_private_apps_alone(self):
        self.start_xterm()
        wait_until(lambda: self.shows(XTERM_COLOUR), "the terminal is on the screen")
        self.start_curtain(XTERM)
        for _ in range(2):
            self.act("toggle-privacy")
            self.assertTrue(stays(lambda: self.shows(XTERM_COLOUR), 1))

    def test_the_choice_of_wayland_for_other_programs_changes_nothing(self):
        self.start_curtain(XTERM, QT_QPA_PLATFORM="wayland")
        self.assertIn("\nCurtain is running: yes\n", subprocess.run(
            [os.environ["CURTAIN"], "--diagnose"], check=True, capture_output=True, text=True).stdout)

    # What is said

    def start_with_private_terminals(self):
        self.start_xterm()
        wait_until(lambda: self.shows(XTERM_COLOUR), "the terminal is on the screen")
        if IS_WAYLAND:
            self.start_foot(FOOT_COLOUR)
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()

    def watch_notices(self):
        monitor = self.desktop.start("dbus-monitor", "--session",
                                     "interface='org.freedesktop.Notifications',member='Notify'")
        wait_until(lambda: "NameAcquired" in monitor.output() or "NameLost" in monitor.output(), "the bus is watched",
                   seen=monitor.output)
        return monitor.output

    def test_the_wizard_names_the_obstacle_and_what_to_choose_and_closes(self):
        self.start_curtain()
        self.click_icon()
        self.press("push button: See if my computer qualifies")
        self.wait_lines("heading: Curtain can't hide apps in this session. Please log in to another one to continue.",
                        f"label: {OBSTACLE}", f"label: {REMEDY}")
        self.press("push button: Close")
        self.wait_closed()

    def test_the_popover_says_what_is_known(self):
        self.start_with_private_terminals()
        self.click_icon()
        self.wait_lines(f"list item: XTerm: {XTERM_STATE}", f"list item: Foot: {FOOT_STATE}", f"label: {OBSTACLE}")
        self.assertNotIn("label: You're ready.", self.lines())
        self.assertNotIn("panel: Private apps: You're ready.", self.lines())

    def test_the_icon_claims_no_protection(self):
        self.start_with_private_terminals()
        self.assertEqual(self.icon(), "open")
        for expected in ("alert", "open"):
            self.act("toggle-privacy")
            wait_until(lambda: self.icon() == expected, expected, seen=self.icon)

    def test_buttons_that_could_only_be_in_vain_say_why(self):
        self.start_with_private_terminals()
        self.click_icon()
        for name in ("Hide Private Apps", "Hide apps"):
            def said():
                return [element.description for element in self.reader.elements() if str(element) == f"push button: {name}"]
            wait_until(lambda: said() == [OBSTACLE], f"{name} says why", seen=lambda: (said(), self.lines()))

    def test_the_settings_say_it_too(self):
        self.start_with_private_terminals()
        self.act("settings")
        self.wait_lines("hotkey field: Global shortcut:", f"label: {OBSTACLE}", *[X11_WINDOWS_ONLY] * IS_WAYLAND)
        self.assertEqual(X11_WINDOWS_ONLY in self.lines(), IS_WAYLAND)
        self.press("push button: Apps")
        self.wait_lines("push button: Installed", f"label: {OBSTACLE}")

    def test_one_notice_says_that_privacy_mode_has_no_effect(self):
        self.start_with_private_terminals()
        notices = self.watch_notices()
        self.act("toggle-privacy")
        wait_until(lambda: f'string "{NOTICE}"\n   string "{OBSTACLE}"' in notices(), "the notice is posted", seen=notices)
        self.assertTrue(stays(lambda: notices().count("member=Notify") == 1, 2), notices())
        self.click_icon()
        self.wait_lines(f"label: {NOTICE}")


if __name__ == "__main__":
    unittest.main()
