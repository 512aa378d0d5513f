"""Checks the settings window with real clicks and keys."""

import json
import subprocess
import unittest

from desktop_case import XTERM, DesktopCase, Key, wait_until
from desktop_driver import Rectangle, Window

# Places in the window, from its top left corner.
LANGUAGE = (334, 83)
LAUNCH_AT_LOGIN = (391, 229)
SHORTCUT_FIELD = (300, 287)
CLEAR_SHORTCUT = (394, 287)
APPS_TAB = (205, 30)
INSTALLED = (220, 215)
RESTART = (304, 122)
SEARCH = (200, 255)
FIRST_APP = (391, 298)
SECOND_APP = (391, 334)

FIELD_BORDER = (239, 287)

CARD = "#ffffff"
ACCENT = "#3b55d6"
SWITCH_OFF = "#8c93a2"
CHIP = "#eceef2"
F9 = 75
CONTROL_SHIFT = 5


def language_row(number):
    """In the picker's list; the system's language is the first."""
    return 334, 108 + 32 * number + 16


class SettingsTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.autostart = self.settings / "autostart" / "com.curtain.Curtain.desktop"
        applications = self.scratch / "data" / "applications"
        applications.mkdir(parents=True)
        (applications / "meeting.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Zoom Meeting\nExec=true\n")

    def start_with_settings(self, **environment):
        self.start_curtain(XDG_DATA_HOME=str(self.scratch / "data"), **environment)
        return self.open_settings()

    def open_settings(self):
        others = self.desktop.windows()
        self.click_tray_icon(button=3)
        wait_until(lambda: self.has_menu() and self.display.is_keyboard_taken(), "the menu has the keyboard")
        # Open, then Settings.
        self.run_xdotool("key", "Down", "Down", "Return")
        window, = wait_until(lambda: [window for window in self.desktop.windows() if window not in others],
                             "the settings window is up")
        wait_until(lambda: self.desktop.active_window == window, "the settings window is active")
        wait_until(lambda: self.colour_at(window, 40, 70) == CARD, "the window is drawn",
                   seen=lambda: self.colour_at(window, 40, 70))
        return window

    def has_menu(self):
        return any(self.display.is_viewable(child) and "curtain" in Window(self.display, child).window_class
                   for child in self.display.children(self.display.root))

    def run_xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], check=True, capture_output=True)

    def colour_at(self, window, x, y):
        area = window.geometry
        return area and self.display.colour(area[0] + x, area[1] + y)

    def click(self, window, place):
        x, y, _, _ = window.geometry
        self.run_xdotool("mousemove", x + place[0], y + place[1], "click", 1)

    def preferences(self):
        path = self.settings / "curtain" / "curtain.preferences.v1"
        return json.loads(path.read_text()) if path.exists() else {}

    def shortcut(self):
        return (self.settings / "curtain" / "KeyboardShortcuts_togglePrivacy").read_text()

    def search(self, window, text):
        """Waits until a single app is found, which is not private."""
        wait_until(lambda: self.colour_at(window, *SEARCH) == CARD, "the field is there",
                   seen=lambda: self.colour_at(window, *SEARCH))
        self.click(window, SEARCH)
        self.run_xdotool("key", "ctrl+a")
        self.run_xdotool("type", text)
        self.wait_switch(window, SWITCH_OFF)
        wait_until(lambda: self.colour_at(window, *SECOND_APP) == CARD, "one app is found",
                   seen=lambda: self.colour_at(window, *SECOND_APP))

    def wait_switch(self, window, colour):
        """Of the first app; its middle is the track, whichever way it stands."""
        wait_until(lambda: self.colour_at(window, *FIRST_APP) == colour, f"the first app's switch is {colour}",
                   seen=lambda: self.colour_at(window, *FIRST_APP))

    def wait_preference(self, name, value):
        wait_until(lambda: self.preferences().get(name) == value, f"{name} is {value}", seen=lambda: self.preferences().get(name))

    def wait_private_apps(self, *identifiers):
        wait_until(lambda: tuple(app["bundleID"] for app in self.preferences().get("targetApps", ())) == identifiers,
                   f"the private apps are {identifiers}",
                   seen=lambda: tuple(app["bundleID"] for app in self.preferences().get("targetApps", ())))

    def test_launch_at_login_writes_and_removes_the_autostart_entry(self):
        window = self.start_with_settings()
        self.click(window, LAUNCH_AT_LOGIN)
        wait_until(self.autostart.exists, "the entry is written")
        self.assertIn(f'Exec="{self.curtain.args[0]}"\n', self.autostart.read_text())
        self.wait_preference("launchAtLogin", True)
        self.click(window, LAUNCH_AT_LOGIN)
        wait_until(lambda: not self.autostart.exists(), "the entry is removed")
        self.wait_preference("launchAtLogin", False)

    def test_a_refused_entry_is_said_and_the_wish_kept(self):
        # Root may write into any folder, so there is none.
        (self.settings / "autostart").write_text("")
        window = self.start_with_settings()
        self.click(window, LAUNCH_AT_LOGIN)
        self.wait_preference("launchAtLogin", True)
        wait_until(lambda: self.curtain.complaints().startswith("Curtain SMAppService: "), "the error is said")
        self.expected_complaints = self.curtain.complaints()
        self.assertEqual(self.expected_complaints.count("\n"), 1)

    def test_a_shortcut_is_recorded_used_and_cleared_for_good(self):
        xterm = self.open_xterm()
        self.write_private_apps(XTERM)
        window = self.start_with_settings()
        self.click(window, SHORTCUT_FIELD)
        wait_until(lambda: not self.display.is_key_taken(Key.H, 4 | 8 | 64), "the old one does not act while recording")
        wait_until(lambda: self.colour_at(window, *FIELD_BORDER) == ACCENT, "the field records",
                   seen=lambda: self.colour_at(window, *FIELD_BORDER))
        self.display.strike(Key.CONTROL, Key.SHIFT, F9)
        recorded = {"carbonKeyCode": 101, "carbonModifiers": 4096 + 512}
        wait_until(lambda: json.loads(self.shortcut()) == recorded, "the new one is stored",
                   seen=lambda: json.loads(self.shortcut()))
        wait_until(lambda: self.display.is_key_taken(F9, CONTROL_SHIFT), "the new one acts")
        wait_until(lambda: self.colour_at(window, *FIELD_BORDER) != ACCENT, "the field has let the keyboard go",
                   seen=lambda: self.colour_at(window, *FIELD_BORDER))
        self.assertFalse(xterm.is_hidden, "recording is no use of it")
        self.display.strike(Key.CONTROL, Key.SHIFT, F9)
        self.wait_hidden(xterm)
        self.click(window, CLEAR_SHORTCUT)
        wait_until(lambda: self.shortcut() == "false", "it is cleared", seen=lambda: self.shortcut())
        wait_until(lambda: not self.display.is_key_taken(F9, CONTROL_SHIFT), "it does not act any more")
        self.end_curtain()
        self.curtain = self.launch_curtain()
        wait_until(self.desktop.tray_icon, "the icon is there again")
        self.assertEqual(self.shortcut(), "false")
        self.assertFalse(self.display.is_key_taken(F9, CONTROL_SHIFT))
        self.assertFalse(self.display.is_key_taken(Key.H, 4 | 8 | 64))

    def test_running_and_installed_apps_are_added(self):
        self.open_xterm()
        window = self.start_with_settings()
        self.click(window, APPS_TAB)
        self.search(window, "xterm")
        self.click(window, FIRST_APP)
        self.wait_private_apps("debian-xterm")
        self.click(window, INSTALLED)
        self.search(window, "zo")
        self.click(window, FIRST_APP)
        self.wait_private_apps("debian-xterm", "meeting")

    def test_restarting_is_for_times_without_privacy_mode(self):
        xterm = self.open_xterm()
        self.write_private_apps(XTERM)
        window = self.start_with_settings()
        self.click(window, APPS_TAB)
        self.wait_for_restart(window, True)
        self.toggle()
        self.wait_hidden(xterm)
        self.wait_for_restart(window, False)
        self.toggle()
        self.wait_shown(xterm)
        self.wait_for_restart(window, True)
        before = self.owner_of_name()
        self.click(window, RESTART)
        wait_until(lambda: self.owner_of_name() not in (None, before), "another run has the name")
        # In the same process, whose end its starter would take for that of Curtain.
        self.wait_until_ready(self.curtain)
        self.toggle()
        self.wait_hidden(xterm)

    def wait_for_restart(self, window, is_offered):
        wait_until(lambda: (self.colour_at(window, *RESTART) == CHIP) == is_offered,
                   "there is a button" if is_offered else "there is none",
                   seen=lambda: self.colour_at(window, *RESTART))

    def owner_of_name(self):
        """Of Curtain's on the bus; no two connections have the same."""
        question = ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
                    "org.freedesktop.DBus.GetNameOwner", "com.curtain.Curtain"]
        return subprocess.run(question, capture_output=True, text=True).stdout or None

    def test_another_language_changes_the_labels(self):
        window = self.start_with_settings()
        x, y, _, _ = window.geometry
        labels = Rectangle(x + 20, y + 15, 400, 30)
        before = self.display.pixels(labels)
        french = language_row(7)
        row = Rectangle(french[0] - 60, french[1] - 16, 120, 32)
        closed = window.pixels(row)
        self.click(window, LANGUAGE)
        wait_until(lambda: window.pixels(row) not in (closed, None), "the list of languages is open")
        self.click(window, french)
        self.wait_preference("language", "fr")
        wait_until(lambda: self.display.pixels(labels) != before, "the labels are others")

    def test_escape_and_the_close_key_close_the_window(self):
        self.start_with_settings()
        for key in ("Escape", "ctrl+w"):
            self.run_xdotool("key", key)
            wait_until(lambda: not self.desktop.windows(), f"{key} closed the window")
            self.open_settings()


if __name__ == "__main__":
    unittest.main()
