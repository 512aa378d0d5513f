"""What the tests have in common that look at a session from outside, as a person does: at the screen that it stands on, and
at what a screen reader is told.

They run with --accessibility and --tray sni.
"""

import os
import re
import subprocess

from desktop_case import DesktopCase, Display, Rectangle, wait_until
from desktop_driver import private_app
from screen_reader import ScreenReader

WIDTH, HEIGHT = 1280, 800
SESSION = os.environ["VIRTUAL_DESKTOP_SESSION"]
FOOT = private_app("foot", "Foot")
FOOT_COLOUR = "#804020"
ESCAPE = 9
X11_WINDOWS_ONLY = "label: The shortcut works only while a window of an X11 program has the focus."
POPOVER_COLOUR = "#f4f5f8"
# So many pixels beside each other are the popover's ground.
POPOVER_EDGE = 12


def pixel_of(colour):
    red, green, blue = bytes.fromhex(colour[1:])
    return bytes((blue, green, red, 0))


class SessionCase(DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)
        self.reader = ScreenReader()
        self.addCleanup(self.reader.close)

    # What is to be seen

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

    def shows(self, colour):
        return self.place_of(colour) is not None

    def start_foot(self, colour):
        """A terminal of Wayland's, which takes the keyboard."""
        self.desktop.start("foot", "--override", f"colors.background={colour[1:]}", "--", "cat")
        wait_until(lambda: self.place_of(colour), "the terminal of Wayland's is on the screen")

    def act(self, action):
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path",
                        "/com/curtain/Curtain", "--method", "org.freedesktop.Application.ActivateAction", action, "[]",
                        "{}"], check=True, capture_output=True)

    # What is said

    def host(self, method, *arguments):
        return subprocess.run(["gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher", "--object-path",
                               "/Host", "--method", f"com.curtain.TestHost.{method}", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def click_icon(self, x=1270, y=4):
        item = wait_until(lambda: re.search("'(.+)'", self.host("Items")), "an item is in the tray")[1]
        self.host("Send", item, "Activate", str(x), str(y))

    def icon(self):
        """The name under which the panel finds the icon."""
        item = wait_until(lambda: re.search("'(.+)'", self.host("Items")), "an item is in the tray")[1]
        return re.match(r"\('com\.curtain\.Curtain-(\w+)-symbolic'", self.host("Icon", item))[1]

    def lines(self):
        return [str(element) for element in self.reader.elements()]

    def wait_lines(self, *lines):
        wait_until(lambda: set(lines) <= set(self.lines()), f"{lines} are said", seen=self.lines)

    def press(self, line):
        wait_until(lambda: self.reader.act(line), line, seen=self.lines)

    def wait_closed(self):
        wait_until(lambda: not self.lines(), "no window of Curtain is open", seen=self.lines)

    # The popover's window

    def place_of_popover(self):
        row = pixel_of(POPOVER_COLOUR) * POPOVER_EDGE
        lines = {y: line for y, line in enumerate(self.lines_of_screen()) if row in line}
        if not lines:
            return None
        left = min(line.find(row) // 4 for line in lines.values())
        right = max(line.rfind(row) // 4 + POPOVER_EDGE for line in lines.values())
        return Rectangle(left, min(lines), right - left, max(lines) + 1 - min(lines))

    def click_at(self, x, y, button=1):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", str(button)], check=True,
                       env=os.environ | {"DISPLAY": os.environ["VIRTUAL_DESKTOP_SCREEN"]})
