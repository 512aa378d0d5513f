"""Uses Curtain in Plasma's own Wayland session, with programs of X11 and of Wayland.

It runs with --session wayland-plasma-desktop.
"""

import os
import unittest
from pathlib import Path

import whole_desktop_test
from desktop_case import URXVT_COLOUR, XTERM_COLOUR, wait_until
from desktop_driver import private_app
from kwin_scripts import KWinScripts, owner_of_shortcut

WIDTH = whole_desktop_test.WIDTH
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


if __name__ == "__main__":
    unittest.main()
