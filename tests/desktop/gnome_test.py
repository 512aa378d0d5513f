"""Drives Curtain in GNOME's Wayland session: its extension is installed beside it and switched on.

It runs with --session gnome, --tray sni and the installation's shared data. The windows are a terminal of X11's and one of
Wayland's, which are private, and another one.
"""

import os
import re
import subprocess
import unittest

from desktop_case import (URXVT_COLOUR, XTERM, XTERM_COLOUR, DesktopCase, Display, Rectangle, stays, wait_until,
                          write_preferences)
from desktop_driver import private_app
from gnome_shell import GnomeShell

WIDTH, HEIGHT = 1280, 800
FOOT = private_app("foot", "Foot")
# Of one that no rounding changes.
FOOT_COLOUR = "#ff00ff"
CONTROL, ALT, SUPER, TAB, ESCAPE, DOWN, H = 37, 64, 133, 23, 9, 116, 43
SHORTCUT = (CONTROL, ALT, SUPER, H)
# A row of so many pixels of a colour is a window's, or a picture of one.
ROW = 24

# Reads what a person sees of the windows' places: each by its class, bottom to top.
SCENE = """
const windows = global.display.sort_windows_by_stacking(global.get_window_actors().map(actor => actor.meta_window))
    .filter(window => !window.is_override_redirect());
JSON.stringify(windows.map(window => { const frame = window.get_frame_rect(); return [
    window.get_wm_class(), frame.x, frame.y, frame.width, frame.height, window.get_workspace().index(), window.is_fullscreen()]; }))
"""
FIND = "const find = name => global.get_window_actors().map(actor => actor.meta_window).find(w => w.get_wm_class() === name);"


class GnomeTest(GnomeShell, DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)
        # The windows of the test before fade away.
        wait_until(lambda: not self.scene() and not self.shows_private(), "the desktop is empty", seen=self.scene)
        self.addCleanup(self.switch_extension, True)
        self.addCleanup(self.evaluate, "Main.overview.hide(); global.workspace_manager.get_workspace_by_index(0).activate(0)")

    def let_all_keys_go(self):
        """None is pressed on the display of X11 programs."""

    # The shell

    def scene(self):
        return self.describe(SCENE)

    def do_with(self, name, action):
        self.evaluate(f"{FIND} (window => {{ {action}; }})(find('{name}')); 0")

    # The windows

    def shows(self, colour):
        """On the screen, as a person sees it, as a window or as a picture of one."""
        red, green, blue = bytes.fromhex(colour[1:])
        pixels = bytearray(self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT)))
        pixels[3::4] = bytes(WIDTH * HEIGHT)
        return bytes((blue, green, red, 0)) * ROW in pixels

    def shows_private(self):
        return [colour for colour in (XTERM_COLOUR, FOOT_COLOUR) if self.shows(colour)]

    def shows_all(self):
        return len(self.shows_private()) == 2

    def shows_only_open(self):
        return not self.shows_private() and self.shows(URXVT_COLOUR)

    def start_foot(self):
        return self.desktop.start("foot", "--override", f"colors.background={FOOT_COLOUR[1:]}", "--override",
                                  "initial-window-size-pixels=400x200", "--", "cat")

    def open_windows(self):
        self.start_xterm(x=20, y=60)
        wait_until(lambda: self.shows(XTERM_COLOUR), "the terminal of X11's is on the screen")
        foot = self.start_foot()
        wait_until(lambda: self.shows(FOOT_COLOUR), "the terminal of Wayland's is on the screen", seen=foot.complaints)
        self.do_with("foot", "window.move_frame(true, 520, 100)")
        self.start_urxvt(x=300, y=420)
        wait_until(lambda: self.shows_all() and self.shows(URXVT_COLOUR), "all windows are on the screen",
                   seen=self.scene)

    def start_with_windows(self):
        self.open_windows()
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()
        wait_until(lambda: self.icon() == "open", "the icon is there")

    # Curtain

    def toggle(self):
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path",
                        "/com/curtain/Curtain", "--method", "org.freedesktop.Application.ActivateAction", "toggle-privacy",
                        "[]", "{}"], check=True, capture_output=True)

    def hide(self):
        self.toggle()
        wait_until(self.shows_only_open, "the private windows are hidden", seen=self.shows_private)

    def give_back(self):
        self.toggle()
        wait_until(self.shows_all, "the private windows are back", seen=self.shows_private)

    def host(self, method, *arguments):
        return subprocess.run(["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher", "--object-path",
                               "/Host", "--method", f"com.curtain.TestHost.{method}", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def icon(self):
        """The name under which the panel finds the icon; None while there is none."""
        item = re.search("'(.+)'", self.host("Items"))
        name = item and re.match(r"\('com\.curtain\.Curtain-(\w+)-symbolic'", self.host("Icon", item[1]))
        return name and name[1]

    # Tests

    def test_windows_of_x11_and_of_wayland_are_hidden_and_come_back_as_they_were(self):
        self.start_with_windows()
        self.do_with("foot", "window.activate(global.display.get_current_time_roundtrip())")
        wait_until(lambda: self.scene()[-1][0] == "foot", "the terminal of Wayland's is in front", seen=self.scene)
        before = self.scene()
        for _ in range(3):
            self.hide()
            self.assertEqual(self.icon(), "close")
            self.assertTrue(stays(self.shows_only_open, 1))
            self.give_back()
            wait_until(lambda: self.scene() == before, f"the windows stand as before: {before}", seen=self.scene)

    def test_other_workspaces_and_fullscreen_windows_come_back_as_they_were(self):
        self.start_with_windows()
        self.do_with("foot", "window.make_fullscreen()")
        self.do_with("XTerm", "window.change_workspace_by_index(1, true)")
        wait_until(lambda: ["foot", True, 0] in [[name, full, space] for name, *_, space, full in self.scene()] and
                   ["XTerm", 1] in [[name, space] for name, *_, space, _ in self.scene()], "they stand there", seen=self.scene)
        before = {entry[0]: entry for entry in self.scene()}
        self.toggle()
        wait_until(self.shows_only_open, "the window over the whole screen is hidden", seen=self.scene)
        self.evaluate("global.workspace_manager.get_workspace_by_index(1).activate(0); 0")
        self.assertTrue(stays(lambda: not self.shows_private(), 1))
        self.evaluate("global.workspace_manager.get_workspace_by_index(0).activate(0); 0")
        wait_until(lambda: self.shows(URXVT_COLOUR), "the first workspace is in front")
        self.toggle()
        wait_until(lambda: self.shows(FOOT_COLOUR), "the window over the whole screen is back")
        wait_until(lambda: {entry[0]: entry for entry in self.scene()} == before, f"they stand as before: {before}", seen=self.scene)

    def test_the_overview_and_the_switchers_show_no_picture_of_them(self):
        self.start_with_windows()
        self.hide()
        self.set_overview(True)
        wait_until(lambda: self.shows(URXVT_COLOUR), "the overview shows the other window")
        self.assertTrue(stays(lambda: not self.shows_private()), self.shows_private())
        self.set_overview(False)
        # First the apps, then the windows of one.
        self.screen.press(ALT)
        self.screen.strike(TAB)
        wait_until(lambda: self.evaluate("Main.modalCount") == 1, "the switcher is open")
        self.assertTrue(stays(lambda: not self.shows_private(), 1), self.shows_private())
        self.screen.strike(DOWN)
        self.assertTrue(stays(lambda: not self.shows_private(), 1), self.shows_private())
        self.screen.strike(ESCAPE)
        self.screen.release(ALT)
        self.give_back()
        # What the colours are looked for in can hold them.
        self.set_overview(True)
        wait_until(self.shows_all, "the overview shows them again", seen=self.shows_private)
        self.set_overview(False)

    def test_what_comes_back_or_opens_is_hidden_again(self):
        self.start_with_windows()
        self.hide()
        for name in ("foot", "XTerm"):
            self.do_with(name, "Main.activateWindow(window)")
            wait_until(self.shows_only_open, f"{name} is hidden again", seen=self.shows_private)
        self.start_foot()
        wait_until(lambda: [entry[0] for entry in self.scene()].count("foot") == 2, "a second one has opened", seen=self.scene)
        wait_until(lambda: stays(self.shows_only_open, 1), "the new window is hidden", seen=self.shows_private)
        self.give_back()

    def test_an_extension_that_is_switched_off_is_noticed_and_back_when_it_is_on(self):
        self.start_with_windows()
        self.switch_extension(False)
        self.toggle()
        wait_until(lambda: self.icon() == "alert", "the icon says that nothing is hidden", seen=self.icon)
        self.assertTrue(self.shows_all())
        self.switch_extension(True)
        wait_until(lambda: self.icon() == "close", "the icon says that private apps are hidden", seen=self.icon)

    def test_the_shortcut_is_heard_whatever_has_the_focus(self):
        self.start_with_windows()
        for name in ("foot", "XTerm", "URxvt"):
            self.do_with(name, "window.activate(global.display.get_current_time_roundtrip())")
            wait_until(lambda name=name: self.scene()[-1][0] == name, f"{name} is in front", seen=self.scene)
            self.strike_shortcut()
            wait_until(self.shows_only_open, "the private windows are hidden", seen=self.shows_private)
            self.strike_shortcut()
            wait_until(self.shows_all, "the private windows are back", seen=self.shows_private)
        # A held key is one press.
        for key in SHORTCUT:
            self.screen.press(key)
        self.assertTrue(stays(self.shows_all, 1))
        # The modifiers first.
        for key in SHORTCUT:
            self.screen.release(key)
        wait_until(self.shows_only_open, "the private windows are hidden", seen=self.shows_private)
        self.assertTrue(stays(self.shows_only_open, 1))
        self.give_back()

    def strike_shortcut(self):
        for key in SHORTCUT:
            self.screen.press(key)
        for key in reversed(SHORTCUT):
            self.screen.release(key)

    def test_what_was_hidden_stays_hidden_when_curtain_is_killed(self):
        self.start_with_windows()
        self.hide()
        self.curtain.kill()
        self.curtain.wait()
        self.curtain = None
        self.assertTrue(stays(self.shows_only_open, 1))
        for name in ("foot", "XTerm"):
            self.do_with(name, "Main.activateWindow(window)")
        wait_until(self.shows_all, "their user has brought them back", seen=self.shows_private)
        # Else the start of another test would take the privacy mode up.
        self.start_curtain()
        wait_until(self.shows_only_open, "the next start hides them", seen=self.shows_private)
        self.give_back()

    def test_the_next_one_takes_up_what_a_killed_one_had_hidden(self):
        self.start_with_windows()
        self.hide()
        self.curtain.kill()
        self.curtain.wait()
        self.start_curtain()
        wait_until(lambda: self.icon() == "close", "the icon is there")
        self.assertTrue(stays(self.shows_only_open, 1))
        self.give_back()


if __name__ == "__main__":
    unittest.main()
