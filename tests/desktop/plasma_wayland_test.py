"""Uses Curtain in Plasma's own Wayland session, with programs of X11 and of Wayland.

It runs with --session wayland-plasma-desktop and --media: where nobody can tell whether the screen is shared, there are no notices.
"""

import os
import unittest
from pathlib import Path

import whole_desktop_test
from desktop_case import URXVT_COLOUR, XTERM_COLOUR, Rectangle, stays, wait_until
from desktop_driver import private_app
from kwin_scripts import KWinScripts, gdbus, owner_of_shortcut

WIDTH, HEIGHT = whole_desktop_test.WIDTH, whole_desktop_test.HEIGHT
# It is not higher, nor is the gap below it.
PANEL = 60
LOWEST_NOTICE = 100
# From the lower and the right edge of a notice to its last button.
NOTICE_EDGE, BUTTON_EDGE = 24, 40
KONSOLE = private_app("org.kde.konsole", "Konsole")
KONSOLE_COLOUR = "#a06020"
# Terminals of Plasma's take colours from files only.
KONSOLE_FILES = {
    "Tinted.colorscheme": "[Background]\nColor={red},{green},{blue}\n\n[General]\nDescription=Tinted\n",
    "Tinted.profile": "[Appearance]\nColorScheme=Tinted\n\n[General]\nName=Tinted\nParent=FALLBACK/\n",
}


class PlasmaWaylandTest(KWinScripts, whole_desktop_test.WholeDesktopTest):
    second_app = KONSOLE
    # Here looking at the screen is a matter of casts, for which KWin wants OpenGL; it has none on a virtual screen.
    test_a_capture_of_the_screen_hides_and_its_end_gives_back = None

    def setUp(self):
        super().setUp()
        # Until it is, a click there reaches nobody.
        wait_until(self.has_wallpaper, "the desktop is drawn", 60)
        red, green, blue = bytes.fromhex(KONSOLE_COLOUR[1:])
        folder = Path(os.environ["XDG_DATA_HOME"]) / "konsole"
        folder.mkdir(parents=True, exist_ok=True)
        for name, text in KONSOLE_FILES.items():
            (folder / name).write_text(text.format(red=red, green=green, blue=blue))

    def wait_until_ready(self, curtain):
        super().wait_until_ready(curtain)
        wait_until(lambda: "'curtain'" in owner_of_shortcut(), "Curtain has the shortcut", seen=owner_of_shortcut)

    def shows_second(self):
        return self.shows(KONSOLE_COLOUR)

    def open_second(self):
        self.desktop.start("konsole", "--separate", "--profile", "Tinted", "--hide-menubar", "-e", "cat",
                           environment={"DISPLAY": None})
        wait_until(self.shows_second, "the terminal of Wayland's is on the screen")

    def bring_back_each(self):
        yield from super().bring_back_each()
        self.choose("konsole")
        yield "the terminal of Wayland's"

    def places(self):
        """Also of what is seen of the programs, whose titles may look otherwise."""
        return super().places(), [self.place_of(colour) for colour in (XTERM_COLOUR, KONSOLE_COLOUR, URXVT_COLOUR)]

    def place_of(self, colour):
        """Where a row of it begins; None while none is seen."""
        found = self.pixels().find(whole_desktop_test.row_of(colour))
        return (found // 4 % WIDTH, found // 4 // WIDTH) if found >= 0 else None

    def test_a_click_on_a_window_of_waylands_closes_the_popover(self):
        self.open_second()
        self.start_curtain()
        self.act("open")
        self.wait_popover()
        x, y = self.place_of(KONSOLE_COLOUR)
        self.click(x + whole_desktop_test.ROW // 2, y)
        self.wait_closed("a click on the terminal")

    # Activities

    @staticmethod
    def activities(method, *arguments):
        answer = gdbus("org.kde.ActivityManager", "/ActivityManager/Activities", f"org.kde.ActivityManager.Activities.{method}", *arguments)
        return answer.strip("(),'\n")

    def choose_activity(self, activity):
        self.activities("SetCurrentActivity", activity)
        wait_until(lambda: self.activities("CurrentActivity") == activity, "the activity is chosen")

    def test_a_window_of_another_activity_stays_there(self):
        xterm = self.open_xterm(x=60, y=60)
        wait_until(lambda: self.shows(XTERM_COLOUR), "the terminal is on the screen")
        first = self.activities("CurrentActivity")
        second = self.activities("AddActivity", "Work")
        self.addCleanup(self.activities, "RemoveActivity", second)
        self.addCleanup(self.choose_activity, first)
        self.choose_activity(second)
        wait_until(lambda: not self.shows(XTERM_COLOUR), "the terminal is in the first activity")
        self.start_curtain()
        self.act("privacy-on")
        wait_until(lambda: xterm.is_hidden, "it is hidden", seen=self.desktop.describe)
        self.act("privacy-off")
        wait_until(lambda: not xterm.is_hidden, "it is given back", seen=self.desktop.describe)
        self.assertTrue(stays(lambda: not self.shows(XTERM_COLOUR), 1))
        self.assertEqual(self.activities("CurrentActivity"), second)
        self.choose_activity(first)
        wait_until(lambda: self.shows(XTERM_COLOUR), "it is in the first activity")

    # Notices

    def change_since(self, before):
        """Where the screen that stands still again looks otherwise, but for the panel, which has a clock."""
        end = (HEIGHT - PANEL) * WIDTH * 4
        return self.difference(before[:end], self.still_screen()[:end])

    def has_wallpaper(self):
        line, = self.part(self.pixels(), Rectangle(0, HEIGHT // 2, WIDTH, 1))
        return line != line[:4] * WIDTH

    def test_a_notice_in_plasmas_own_server_reveals_what_it_tells_of(self):
        xterm = self.open_xterm(x=60, y=60)
        pressed = self.desktop.start("dbus-monitor", "--session", "member='ActionInvoked'")
        self.start_curtain()
        self.act("privacy-on")
        wait_until(lambda: not self.shows_private(), "the private window is hidden", seen=self.desktop.describe)
        before = self.still_screen()
        xterm.raise_from_task_list()

        def notice():
            area = self.change_since(before)
            return area and area.x > WIDTH // 2 and area.height > LOWEST_NOTICE and area
        x, y, width, height = wait_until(notice, "a notice is shown", seen=lambda: self.change_since(before))
        self.click(x + width - BUTTON_EDGE, y + height - NOTICE_EDGE)
        wait_until(lambda: self.shows(XTERM_COLOUR), "its button reveals the app", seen=self.desktop.describe)
        self.assertTrue(stays(lambda: self.shows(XTERM_COLOUR), 1), self.desktop.describe())
        self.assertIn('"CURTAIN_REVEAL"', pressed.output())


if __name__ == "__main__":
    unittest.main()
