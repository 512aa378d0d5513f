"""Checks Curtain in sessions in which no window can be hidden yet: it says so everywhere and hides nothing halfway.

It runs with --accessibility and --tray sni.
"""

import os
import re
import subprocess
import unittest

from desktop_case import IS_WAYLAND, XTERM, XTERM_COLOUR, DesktopCase, Display, Rectangle, stays, wait_until, write_preferences
from desktop_driver import private_app
from screen_reader import ScreenReader

WIDTH, HEIGHT = 1280, 800
SESSION = os.environ["VIRTUAL_DESKTOP_SESSION"]
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
FOOT_COLOUR, OTHER_COLOUR = "#20a040", "#802080"
POPOVER_COLOUR = "#f4f5f8"
# So many pixels beside each other are the popover's ground.
POPOVER_EDGE = 12


def pixel_of(colour):
    red, green, blue = bytes.fromhex(colour[1:])
    return bytes((blue, green, red, 0))


class UnhidableSessionTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)
        self.reader = ScreenReader()
        self.addCleanup(self.reader.close)

    def lines_of_screen(self):
        """Of the screen that the whole session stands on, as a person sees it: pixels as pixel_of() has them."""
        pixels = bytearray(self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT)))
        # Programs leave anything in the padding.
        pixels[3::4] = bytes(WIDTH * HEIGHT)
        return [bytes(pixels[start:start + WIDTH * 4]) for start in range(0, len(pixels), WIDTH * 4)]

    def place_of(self, colour):
        """Where some of it is seen."""
        row = pixel_of(colour) * 50
        return next(((line.find(row) // 4 + 25, y) for y, line in enumerate(self.lines_of_screen()) if row in line), None)

    def shows_xterm(self):
        return self.place_of(XTERM_COLOUR) is not None

    def start_foot(self, colour):
        """A terminal of Wayland's, which takes the keyboard."""
        self.desktop.start("foot", "--override", f"colors.background={colour[1:]}", "--", "cat")
        wait_until(lambda: self.place_of(colour), "the terminal of Wayland's is on the screen")

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
            self.start_foot(FOOT_COLOUR)
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()

    def host(self, method, *arguments):
        return subprocess.run(["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher", "--object-path",
                               "/Host", "--method", f"com.curtain.TestHost.{method}", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def click_icon(self):
        item = wait_until(lambda: re.search("'(.+)'", self.host("Items")), "an item is in the tray")[1]
        self.host("Send", item, "Activate", "1270", "4")

    def icon(self):
        """The name under which the panel finds the icon."""
        item = wait_until(lambda: re.search("'(.+)'", self.host("Items")), "an item is in the tray")[1]
        return re.match(r"\('com\.curtain\.Curtain-(\w+)-symbolic'", self.host("Icon", item))[1]

    def lines(self):
        return [str(element) for element in self.reader.elements()]

    def wait_lines(self, *lines):
        wait_until(lambda: set(lines) <= set(self.lines()), f"{lines} are said", seen=self.lines)

    def press(self, line):
        wait_until(lambda: next((element for element in self.reader.elements() if str(element) == line), None), line,
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
            button = wait_until(lambda: next((element for element in self.reader.elements() if str(element) == f"push button: {name}"),
                                             None), name, seen=self.lines)
            self.assertEqual(button.description, OBSTACLE)

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

    # The popover's window

    def open_popover(self):
        self.click_icon()
        self.wait_lines(f"label: {OBSTACLE}", "push button: More options")
        return wait_until(self.place_of_popover, "the popover is on the screen")

    def place_of_popover(self):
        row = pixel_of(POPOVER_COLOUR) * POPOVER_EDGE
        lines = {y: line for y, line in enumerate(self.lines_of_screen()) if row in line}
        if not lines:
            return None
        left = min(line.find(row) // 4 for line in lines.values())
        right = max(line.rfind(row) // 4 + POPOVER_EDGE for line in lines.values())
        return Rectangle(left, min(lines), right - left, max(lines) + 1 - min(lines))

    def click_at(self, x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True,
                       env=os.environ | {"DISPLAY": os.environ["VIRTUAL_DESKTOP_SCREEN"]})

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


if __name__ == "__main__":
    unittest.main()
