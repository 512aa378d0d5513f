"""Goes the wizard's road with real clicks and keys, in a fresh home."""

import json
import subprocess
import unittest

from desktop_case import DesktopCase, wait_until

WINDOW = "#f4f5f8"
RETURN, SPACE = 36, 65
WIDTH, HEIGHT = 420, 460
PAGES = ["welcome", "compatibility", "desktop", "microphone", "camera", "summary"]

# Places in the window.
BUTTON = (210, 416)
WELCOME_BUTTON = (210, 390)
FILE = (352, 90)
PANEL_EDGE = (36, 141)
FIRST_BAR = (84, 129)
PICTURE = (210, 141)


def brightness(colour):
    return sum(int(colour[at:at + 2], 16) for at in (1, 3, 5))


class WizardTest(DesktopCase):
    has_devices = False

    def setUp(self):
        super().setUp()
        self.side = 80
        self.home = self.scratch / "home"
        (self.home / "Desktop").mkdir(parents=True)
        for name in ("letter.txt", "photo.txt", ".hidden"):
            (self.home / "Desktop" / name).write_text("")

    def start_fresh(self):
        self.start_curtain(HOME=str(self.home))

    def click_at(self, x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)

    def open_wizard(self):
        self.click_tray_icon()
        window = wait_until(self.wizard, "the wizard is open")
        wait_until(lambda: self.page(window), "the wizard shows a page")
        return window

    def wizard(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size == (WIDTH, HEIGHT)), None)

    def colour_at(self, window, place):
        area = window.geometry
        return area and self.display.colour(area.x + place[0], area.y + place[1])

    def page(self, window):
        """Told by the one dot that is long enough to reach there."""
        pages = [page for index, page in enumerate(PAGES)
                 if self.colour_at(window, (167 + 13 * index + 10, 27)) not in (WINDOW, None)]
        return pages[0] if len(pages) == 1 else None

    def shows_file(self, window):
        return brightness(self.colour_at(window, FILE)) > 750

    def wait_page(self, window, page):
        wait_until(lambda: self.page(window) == page, f"the page is {page}", seen=lambda: self.page(window))

    def wait_for_keyboard(self, window):
        wait_until(lambda: self.desktop.active_window == window, "the wizard has the keyboard")

    def click(self, window, place):
        """Never twice in the same place: a double click counts once."""
        self.side = -self.side
        area = window.geometry
        self.click_at(area.x + place[0] + self.side, area.y + place[1])

    def has_onboarded(self):
        path = self.settings / "curtain" / "curtain.preferences.v1"
        return path.exists() and json.loads(path.read_text()).get("hasOnboarded", False)

    def speak(self):
        tone = self.scratch / "tone.wav"
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=440:r=48000", "-af", "volume=4", "-t", "60",
                        "-f", "wav", str(tone)], check=True)
        return self.desktop.start("paplay", "--device=microphone_feed", str(tone))

    def go_to_the_microphone(self):
        self.start_fresh()
        window = self.open_wizard()
        self.wait_page(window, "welcome")
        self.wait_for_keyboard(window)
        self.display.strike(RETURN)
        self.wait_page(window, "compatibility")
        self.display.strike(SPACE)

        self.wait_page(window, "desktop")
        wait_until(lambda: self.shows_file(window), "the files are in the picture")
        self.display.strike(RETURN)
        wait_until(lambda: not self.shows_file(window), "the files are gone from the picture")
        self.click(window, BUTTON)

        self.wait_page(window, "microphone")
        return window

    def allow_the_microphone(self, window):
        wait_until(lambda: brightness(self.colour_at(window, PANEL_EDGE)) > 600, "no level is shown",
                   seen=lambda: self.colour_at(window, PANEL_EDGE))
        self.click(window, BUTTON)
        wait_until(lambda: brightness(self.colour_at(window, PANEL_EDGE)) < 200, "the level is shown",
                   seen=lambda: brightness(self.colour_at(window, PANEL_EDGE)))

    def allow_the_camera(self, window):
        self.wait_page(window, "camera")
        before = self.colour_at(window, PICTURE)
        self.click(window, BUTTON)
        wait_until(lambda: self.colour_at(window, PANEL_EDGE) != "#e5e6e9" and
                   self.colour_at(window, PICTURE) != before, "the camera is shown",
                   seen=lambda: self.colour_at(window, PANEL_EDGE))

    def test_leads_from_the_first_click_to_the_popover(self):
        window = self.go_to_the_microphone()
        self.allow_the_microphone(window)
        if self.has_devices:
            voice = self.speak()
            wait_until(lambda: brightness(self.colour_at(window, FIRST_BAR)) > 200, "the bars rise with the voice",
                       seen=lambda: brightness(self.colour_at(window, FIRST_BAR)))
            voice.terminate()
            wait_until(lambda: brightness(self.colour_at(window, FIRST_BAR)) < 200, "the bars fall",
                       seen=lambda: brightness(self.colour_at(window, FIRST_BAR)))
        self.click(window, BUTTON)
        self.allow_the_camera(window)
        self.click(window, BUTTON)

        self.wait_page(window, "summary")
        self.assertFalse(self.has_onboarded())
        self.click(window, BUTTON)
        wait_until(lambda: not self.wizard(), "the wizard is gone")
        wait_until(self.has_onboarded, "the wizard is done")

        self.click_tray_icon()
        wait_until(self.popover_is_open, "the popover is open")
        self.assertIsNone(self.wizard())

    def popover_is_open(self):
        return any((area := self.display.geometry(window)) and area.width == 700 and self.display.is_viewable(window)
                   for window in self.all_windows(self.display.root))

    def all_windows(self, window):
        for child in self.display.children(window):
            yield child
            yield from self.all_windows(child)

    def test_comes_back_where_it_was_closed(self):
        self.start_fresh()
        window = self.open_wizard()
        self.wait_for_keyboard(window)
        for page in ("compatibility", "desktop"):
            self.display.strike(RETURN)
            self.wait_page(window, page)
        self.display.strike(RETURN)
        wait_until(lambda: not self.shows_file(window), "the files are gone from the picture")
        subprocess.run(["wmctrl", "-i", "-c", hex(window.id)], check=True)
        wait_until(lambda: not self.wizard(), "the wizard is closed")
        self.assertFalse(self.has_onboarded())

        window = self.open_wizard()
        self.wait_page(window, "desktop")
        wait_until(lambda: not self.shows_file(window), "the files are not in the picture")
        self.assertIsNone(self.curtain.poll())

    def test_is_moved_by_its_background_and_not_by_its_buttons(self):
        self.start_fresh()
        window = self.open_wizard()
        place = window.geometry
        self.drag(window, WELCOME_BUTTON, 60)
        self.wait_page(window, "compatibility")
        self.assertEqual(window.geometry, place)
        self.drag(window, (210, 377), 100, follows=True)
        self.assertGreater(window.geometry.x, place.x)
        self.assertEqual(self.page(window), "compatibility")

    def drag(self, window, place, distance, follows=False):
        """Where the window follows, it may begin to do so later than a hand this fast."""
        area = window.geometry
        x, y = area.x + place[0], area.y + place[1]
        self.run_xdotool("mousemove", x, y, "mousedown", 1)
        for _ in range(10):
            self.run_xdotool("mousemove_relative", "--sync", distance // 10, 0)
        if follows:
            def is_followed():
                self.run_xdotool("mousemove", x + distance - 1, y, "mousemove", x + distance, y)
                return window.geometry.x > area.x
            wait_until(is_followed, "the window follows")
        self.run_xdotool("mouseup", 1)

    def run_xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], check=True)

    def test_a_click_on_the_icon_brings_the_wizard_to_the_front(self):
        self.start_fresh()
        window = self.open_wizard()
        terminal = self.open_xterm(x=420, y=150)
        terminal.raise_from_task_list()
        wait_until(lambda: self.desktop.active_window == terminal, "the terminal is in front")
        self.click_tray_icon()
        self.wait_for_keyboard(window)
        wait_until(lambda: self.page(window) == "welcome", "the wizard can be seen", seen=lambda: self.page(window))
        self.assertEqual(len(self.desktop.windows_of(self.curtain)), 1)


if __name__ == "__main__":
    unittest.main()
