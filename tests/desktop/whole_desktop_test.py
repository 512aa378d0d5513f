"""Uses Curtain in a whole desktop: its own panel, window manager, desktop and notices.

It runs with a session of scripts/virtual-desktop whose name ends with "-desktop". What is seen is looked for on the screen: some
window managers keep the windows that they have hidden mapped.
"""

import os
import shutil
import subprocess
import unittest
from contextlib import contextmanager
from pathlib import Path

from desktop_case import (MOUSEPAD, SHORTCUT, URXVT_COLOUR, XTERM, XTERM_COLOUR, DesktopCase, Display, Rectangle, TimedOut, stays,
                          wait_until, write_preferences)
from kwin_scripts import gdbus
from screen_reader import ScreenReader

VIRTUAL_DESKTOP = Path(__file__).resolve().parents[2] / "scripts/virtual-desktop"
WIDTH, HEIGHT = 1280, 800
# A row of so many pixels of a colour is a window's.
ROW = 50
ESCAPE, RETURN, UP = 9, 36, 111
RIGHT = 3
# The desktop, where no window and no icon stands.
DESKTOP = (1000, 620)
# An icon in a panel is not larger, and there is no room for more than one between it and its popover.
ICON = 48
# Neither a tool tip nor an icon is as high; an icon on the desktop is not higher, with its name below.
LOWEST_MENU, HIGHEST_ICON = 90, 200
# Panels draw a new icon within so many seconds.
PATIENCE = 5
POPOVER_WIDTH, POPOVER_HEIGHT = 700, 618


def row_of(colour):
    red, green, blue = bytes.fromhex(colour[1:])
    return bytes((blue, green, red, 0)) * ROW


def is_plain(lines):
    """Whether all pixels have one colour."""
    return set(lines) == {lines[0][:4] * (len(lines[0]) // 4)}


class WholeDesktopTest(DesktopCase):
    second_app = MOUSEPAD

    def setUp(self):
        super().setUp()
        # Where the desktop's own programs have theirs.
        self.settings = Path(os.environ["XDG_CONFIG_HOME"])
        self.addCleanup(shutil.rmtree, self.settings / "curtain", True)
        # The one that the whole session stands on.
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)
        self.preferences(targetApps=[XTERM, self.second_app])
        self.move_pointer(*DESKTOP)

    def preferences(self, **values):
        write_preferences(self.settings, **{"hasOnboarded": True, "language": "en", "autoDetectEnabled": False,
                                            "showCameraPreview": False, "showMicrophoneCheck": False} | values)

    # What is to be seen

    def pixels(self):
        pixels = bytearray(self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT)))
        # Programs leave anything in the padding.
        pixels[3::4] = bytes(WIDTH * HEIGHT)
        return bytes(pixels)

    def shows(self, colour):
        return row_of(colour) in self.pixels()

    def shows_private(self):
        return self.shows(XTERM_COLOUR) or self.shows_second()

    def shows_all_private(self):
        return self.shows(XTERM_COLOUR) and self.shows_second()

    def shows_second(self):
        return not self.mousepad.is_hidden

    def shows_only_open(self):
        return not self.shows_private() and self.shows(URXVT_COLOUR)

    def still_screen(self):
        """What it shows once it does not change any more."""
        def still():
            before = self.pixels()
            return stays(lambda: self.pixels() == before) and before
        return wait_until(still, "the screen stands still")

    def difference(self, before, after):
        """The smallest rectangle that holds all of it, None if there is none."""
        lines = [y for y in range(HEIGHT) if before[y * WIDTH * 4:(y + 1) * WIDTH * 4] != after[y * WIDTH * 4:(y + 1) * WIDTH * 4]]
        if not lines:
            return None
        columns = [x for x in range(WIDTH) if any(
            before[(y * WIDTH + x) * 4:(y * WIDTH + x) * 4 + 4] != after[(y * WIDTH + x) * 4:(y * WIDTH + x) * 4 + 4]
            for y in lines)]
        return Rectangle(columns[0], lines[0], columns[-1] - columns[0] + 1, lines[-1] - lines[0] + 1)

    def changed_screen(self, before):
        """What it shows once it shows something else and does not change any more; None if nothing changes."""
        try:
            return wait_until(lambda: (now := self.still_screen()) != before and now, "something changes", PATIENCE)
        except TimedOut:
            return None

    def find_icon(self):
        """Its middle: while no private app runs, it is what privacy mode changes on the screen. Clocks, or the icon itself that comes
        up, may come between.
        """
        changes = []

        def place():
            off = self.still_screen()
            with self.privacy_mode():
                on = self.changed_screen(off)
            changes.append(on and self.difference(off, on))
            is_icon = on and max(changes[-1][2:]) <= ICON and self.changed_screen(on) == off
            return is_icon and (changes[-1].x + changes[-1].width // 2, changes[-1].y + changes[-1].height // 2)
        return wait_until(place, "privacy mode changes the icon and nothing else", seen=lambda: changes)

    @staticmethod
    def part(pixels, area):
        starts = [(y * WIDTH + area.x) * 4 for y in range(area.y, area.y + area.height)]
        return [pixels[start:start + area.width * 4] for start in starts]

    def comes_to_show(self, area, lines):
        try:
            return wait_until(lambda: stays(lambda: self.part(self.pixels(), area) == lines, 1), "it does and stays so", PATIENCE)
        except TimedOut:
            return False

    def put_icon_on_desktop(self):
        """Returns where it is seen, and that part of the screen without it and with it. Clocks, or a desktop that is still being
        drawn, may come between.
        """
        file = Path(os.environ["HOME"]) / "Desktop/plans.txt"
        file.parent.mkdir(exist_ok=True)
        self.addCleanup(file.unlink, True)
        changes = []

        def place():
            file.unlink(True)
            before = self.still_screen()
            file.write_text("")
            after = self.changed_screen(before)
            area = after and self.difference(before, after)
            changes.append(area)
            if not area or max(area[2:]) > HIGHEST_ICON:
                return None
            without, with_it = self.part(before, area), self.part(after, area)
            file.unlink()
            if not self.comes_to_show(area, without):
                return None
            file.write_text("")
            return self.comes_to_show(area, with_it) and (area, without, with_it)
        return wait_until(place, "an icon comes to the desktop", 60, seen=lambda: changes)

    # What a person does

    def act(self, action):
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path",
                        "/com/curtain/Curtain", "--method", "org.freedesktop.Application.ActivateAction", action, "[]",
                        "{}"], check=True, capture_output=True)

    def open_to_screen_readers(self):
        """What Curtain shows from then on."""
        gdbus("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set", "org.a11y.Status", "IsEnabled", "<true>")
        self.reader = ScreenReader()
        self.addCleanup(self.reader.close)

    def press(self, line, action="Press"):
        def found():
            return next((element for element in self.reader.elements() if str(element) == line), None)
        wait_until(found, line, seen=lambda: list(map(str, self.reader.elements()))).act(action)

    @contextmanager
    def privacy_mode(self):
        self.act("privacy-on")
        try:
            yield
        finally:
            self.act("toggle-privacy")

    def move_pointer(self, x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True,
                       env=os.environ | {"DISPLAY": os.environ["VIRTUAL_DESKTOP_SCREEN"]})

    def click(self, x, y, button=1):
        self.move_pointer(x, y)
        self.screen.click(button)

    def toggle(self):
        self.screen.strike(*SHORTCUT)

    def open_windows(self):
        self.open_xterm(x=60, y=60)
        self.open_second()
        self.open_urxvt(x=60, y=400)
        wait_until(lambda: self.shows_all_private() and self.shows(URXVT_COLOUR), "all windows are on the screen",
                   seen=self.desktop.describe)

    def open_second(self):
        self.mousepad = self.open_mousepad(x=640, y=80)

    def bring_back_each(self):
        """Yields after each private app."""
        for window in self.desktop.windows():
            if "URxvt" not in window.window_class:
                window.raise_from_task_list()
                yield window

    def places(self):
        return {window: (window.geometry, window.workspace) for window in self.desktop.windows()}

    def popover(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size[0] >= POPOVER_WIDTH and window.size[1] >= POPOVER_HEIGHT and self.display.is_viewable(window.id)),
                    None)

    def wait_popover(self):
        """Where it is."""
        def place():
            popover = self.popover()
            area = popover and popover.geometry
            return area and self.desktop.active_window == popover and stays(lambda: popover.geometry == area) and area
        return wait_until(place, "the popover is open and has the keyboard", seen=self.desktop.describe)

    def wait_closed(self, what):
        wait_until(lambda: not self.popover(), f"{what} closes the popover", seen=self.desktop.describe)

    # Tests

    def test_the_shortcut_hides_private_windows_and_gives_them_back_where_they_were(self):
        self.open_windows()
        self.start_curtain()
        before = self.places()
        for _ in range(2):
            self.toggle()
            wait_until(self.shows_only_open, "the private windows are hidden", seen=self.desktop.describe)
            self.assertTrue(stays(self.shows_only_open, 1), self.desktop.describe())
            self.toggle()
            wait_until(self.shows_all_private, "they are back", seen=self.desktop.describe)
            wait_until(lambda: self.places() == before, f"all stand as before: {before}", seen=self.places)

    def test_a_private_app_that_comes_back_is_hidden_again(self):
        self.open_windows()
        self.start_curtain()
        self.act("privacy-on")
        wait_until(self.shows_only_open, "the private windows are hidden", seen=self.desktop.describe)
        for window in self.bring_back_each():
            wait_until(lambda: stays(self.shows_only_open, 1), f"{window} is hidden again", seen=self.desktop.describe)

    def test_the_icon_in_the_panel_opens_the_popover_beside_it(self):
        self.start_curtain()
        x, y = self.find_icon()
        self.click(x, y)
        place = self.wait_popover()
        self.assertTrue(place.x <= x <= place.x + place.width, (x, place))
        gap = max(place.y - y, y - place.y - place.height)
        self.assertLessEqual(gap, ICON, (y, place))
        self.screen.strike(ESCAPE)
        self.wait_closed("Escape")

    def test_the_menu_of_the_icon_in_the_panel_ends_curtain(self):
        self.start_curtain()
        place = self.find_icon()
        before = self.still_screen()
        self.click(*place, RIGHT)

        def menu():
            area = self.difference(before, self.still_screen())
            return area and min(area[2:]) >= LOWEST_MENU
        wait_until(menu, "a menu is open", seen=lambda: self.difference(before, self.still_screen()))
        # To the last entry.
        self.screen.strike(UP)
        self.screen.strike(RETURN)
        wait_until(lambda: self.curtain.poll() == 0, "Curtain has ended", seen=self.curtain.poll)

    def test_a_click_elsewhere_closes_the_popover(self):
        self.open_urxvt(x=20, y=100)
        self.start_curtain()
        for place, what in (((60, 150), "a click on a window"), ((300, 600), "a click on the desktop")):
            self.act("open")
            area = self.wait_popover()
            self.assertFalse(area.x <= place[0] < area.x + area.width and area.y <= place[1] < area.y + area.height, area)
            self.click(*place)
            self.wait_closed(what)

    @unittest.skipIf(os.environ["VIRTUAL_DESKTOP_SESSION"] == "x11-lxde-desktop", "fails there now and then; why is not known yet")
    def test_the_icons_on_the_desktop_go_and_come_back(self):
        self.open_to_screen_readers()
        icon, without, with_it = self.put_icon_on_desktop()
        self.start_curtain()
        # Some draw no desktop at all then.
        for button, is_done in (("Hide desktop", lambda seen: seen == without or is_plain(seen)),
                                ("Show desktop", lambda seen: seen == with_it)):
            self.act("open")
            self.wait_popover()
            self.press(f"push button: {button}")
            self.screen.strike(ESCAPE)
            self.wait_closed("Escape")
            wait_until(lambda is_done=is_done: is_done(self.part(self.pixels(), icon)), f"{button} does", seen=lambda: icon)

    def test_it_starts_with_the_next_session(self):
        self.open_to_screen_readers()
        self.start_curtain()
        self.act("settings")
        self.press("check box: Launch at login", "Toggle")
        entry = self.settings / "autostart/com.curtain.Curtain.desktop"
        wait_until(entry.exists, "the entry is written")
        self.addCleanup(entry.unlink)
        self.end_curtain()
        home = self.scratch / "next/home"
        for folder in ("autostart", "curtain"):
            shutil.copytree(self.settings / folder, home / ".config" / folder)
        session = subprocess.run(
            [VIRTUAL_DESKTOP, "--session", os.environ["VIRTUAL_DESKTOP_SESSION"], "--deadline", "60", "--dir", home.parent, "--",
             "gdbus", "wait", "--session", "--timeout", "60", "com.curtain.Curtain"], capture_output=True, text=True, check=False)
        self.assertEqual(session.returncode, 0, session.stderr)

    def test_a_capture_of_the_screen_hides_and_its_end_gives_back(self):
        self.preferences(targetApps=[XTERM], autoDetectEnabled=True)
        xterm = self.open_xterm(x=60, y=60)
        before = self.places()
        self.start_curtain()
        # Looking at the screen again and again is a capture of it.
        wait_until(lambda: not self.shows(XTERM_COLOUR), "the private window is hidden", seen=self.desktop.describe, pause=0.1)
        wait_until(lambda: not xterm.is_hidden, "it is back when nobody looks any more", seen=self.desktop.describe, pause=0.1)
        wait_until(lambda: self.places() == before, f"it stands as before: {before}", seen=self.places)


if __name__ == "__main__":
    unittest.main()
