"""Checks Curtain in sessions in which no window can be hidden yet: it says so everywhere and hides nothing halfway.

It runs with --accessibility and --tray sni.
"""

import os
import re
import subprocess
import unittest

from desktop_case import XTERM, XTERM_COLOUR, DesktopCase, Display, Rectangle, stays, wait_until, write_preferences
from desktop_driver import private_app
from screen_reader import Gone, ScreenReader

WIDTH, HEIGHT = 1280, 800
SESSION = os.environ["VIRTUAL_DESKTOP_SESSION"]
IS_WAYLAND = SESSION in {"sway", "weston"}
FOOT = private_app("foot", "Foot")
OBSTACLE, REMEDY = (
    ("This Wayland desktop offers no way to hide other apps.",
     "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce.") if IS_WAYLAND else
    ("The window manager of this session doesn't hide windows when it is asked to.",
     "At the login screen, choose a desktop such as Xfce, MATE or LXQt."))
# What the popover says of a terminal of X11 and of one of Wayland. Weston lists no windows at all.
XTERM_STATE = "Can't tell" if SESSION == "weston" else "Visible"
FOOT_STATE = "Can't tell" if IS_WAYLAND else "Not running"
X11_WINDOWS_ONLY = "label: The shortcut works only while a window of an X11 program has the focus."
NOTICE = "Privacy mode has no effect"
ESCAPE = 9


class UnhidableSessionTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)
        self.reader = ScreenReader()
        self.addCleanup(self.reader.close)

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

    # What is said

    def start_with_private_terminals(self):
        self.start_xterm()
        wait_until(self.shows_xterm, "the terminal is on the screen")
        if IS_WAYLAND:
            self.desktop.start("foot", "--", "cat")
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()

    def host(self, method, *arguments):
        return subprocess.run(["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher", "--object-path",
                               "/Host", "--method", f"com.curtain.TestHost.{method}", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def click_icon(self):
        item = wait_until(lambda: re.search("'(.+)'", self.host("Items")), "an item is in the tray")[1]
        self.host("Send", item, "Activate", "1270", "4")

    def elements(self):
        try:
            return self.reader.elements()
        except Gone:
            return []

    def lines(self):
        return [str(element) for element in self.elements()]

    def wait_lines(self, *lines):
        wait_until(lambda: set(lines) <= set(self.lines()), f"{lines} are said", seen=self.lines)

    def press(self, line):
        wait_until(lambda: next((element for element in self.elements() if str(element) == line), None), line,
                   seen=self.lines).act()

    def wait_closed(self):
        wait_until(lambda: not self.lines(), "no window of Curtain is open", seen=self.lines)

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

    def test_the_settings_say_it_too(self):
        self.start_with_private_terminals()
        self.act("settings")
        self.wait_lines("hotkey field: Global shortcut:", f"label: {OBSTACLE}")
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

    @unittest.skipIf(SESSION == "weston", "weston gives the popover no keyboard")
    def test_escape_closes_the_popover(self):
        self.start_with_private_terminals()
        self.click_icon()
        self.wait_lines(f"label: {OBSTACLE}", "push button: More options")
        self.screen.strike(ESCAPE)
        self.wait_closed()


if __name__ == "__main__":
    unittest.main()
