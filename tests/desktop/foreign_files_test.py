"""Shows every app of a machine full of faulty icons, desktop entries and fonts, and looks at what Curtain writes about them."""

import subprocess
import unittest

from desktop_case import DesktopCase, stays, wait_until
from desktop_driver import Rectangle
from faulty_files import NAME, write_faulty_files

SETTINGS = (440, 430)
APPS_TAB = (205, 30)
INSTALLED = (220, 215)
SEARCH = (200, 255)
LIST = Rectangle(20, 286, 400, 120)
IN_LIST = (200, 330)
SHOWN = "Curtain: somebody else's file: "
# What is written of some of them, and what they are called in the list.
FAULTS = {"garbage.svg": "garbage.svg", "unsupported.svg": "unsupported.svg", "allocation limit": "enormous.png",
          "load glyph failed": "glyph"}
MAGENTA = bytes([255, 0, 255])


def has_magenta(pixels):
    return any(pixels[start:start + 3] == MAGENTA for start in range(0, len(pixels), 4))


class ForeignFilesTest(DesktopCase):
    def setUp(self):
        super().setUp()
        write_faulty_files(self.scratch / "data")
        picture = self.scratch / "magenta.svg"
        picture.write_text('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 1 1"><rect width="1" height="1" fill="#f0f"/></svg>')
        (self.scratch / "data/applications/the-last.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Zzz the last\nExec=true\nIcon={picture}\n")

    def show_every_app(self, **environment):
        self.start_curtain(XDG_DATA_HOME=str(self.scratch / "data"), **environment)
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path", "/com/curtain/Curtain",
                        "--method", "org.freedesktop.Application.ActivateAction", "settings", "[]", "{}"], check=True,
                       stdout=subprocess.DEVNULL)
        self.window = wait_until(lambda: next((window for window in self.desktop.windows_of(self.curtain)
                                               if window.size == SETTINGS), None), "the settings are open")
        self.list_at_rest()
        self.click(APPS_TAB)
        running = self.list_at_rest()
        self.click(INSTALLED)
        wait_until(lambda: self.window.pixels(LIST) not in (None, running), "the installed apps are listed")
        self.click(IN_LIST)
        pages = 1
        while not has_magenta(shown := self.list_at_rest()):
            pages += 1
            # Less than what is shown at once.
            subprocess.run(["xdotool", "click", "5"], check=True)
            wait_until(lambda: self.window.pixels(LIST) not in (None, shown), "the list goes on")
        return pages

    def click(self, place):
        x, y, _, _ = self.window.geometry
        subprocess.run(["xdotool", "mousemove", str(x + place[0]), str(y + place[1]), "click", "1"], check=True)

    def search(self, text):
        self.click(SEARCH)
        subprocess.run(["xdotool", "key", "ctrl+a"], check=True)
        subprocess.run(["xdotool", "type", text], check=True)

    def list_at_rest(self):
        def picture():
            pixels = self.window.pixels(LIST)
            return pixels and stays(lambda: self.window.pixels(LIST) == pixels, 0.15) and pixels
        return wait_until(picture, "the list is at rest", seen=lambda: "it moves")

    def test_nothing_is_written_about_them(self):
        self.assertGreater(self.show_every_app(), 10)

    def test_each_fault_is_written_once_when_asked(self):
        self.show_every_app(CURTAIN_DEBUG="1")
        # The list may have gone on before an icon was read.
        for word, name in FAULTS.items():
            self.search(f"{NAME} {name}")
            wait_until(lambda: word in self.curtain.complaints(), f"{word} is written", seen=self.curtain.complaints)
        lines = self.curtain.complaints().splitlines()
        self.expected_complaints = "".join(f"{line}\n" for line in lines)
        self.assertEqual([line for line in lines if not line.startswith(SHOWN)], [])
        self.assertEqual(len(lines), len(set(lines)), lines)


if __name__ == "__main__":
    unittest.main()
