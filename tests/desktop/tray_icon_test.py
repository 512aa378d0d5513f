"""Checks the icon in the tray, by its pixels."""

import unittest

from desktop_case import DesktopCase, stays, wait_until


class TrayTest(DesktopCase):
    def icon_pixels(self):
        icon = self.desktop.tray_icon()
        area = icon and icon.geometry
        return area and self.display.pixels(area)

    def wait_icon(self, is_right, what):
        """Waits for an icon that shows more than one colour and is as it should be."""
        def pixels():
            seen = self.icon_pixels()
            colours = {seen[at:at + 3] for at in range(0, len(seen), 4)} if seen else set()
            # The tray may still be giving a new icon its place and size.
            return len(colours) > 1 and is_right(seen) and stays(lambda: self.icon_pixels() == seen) and seen
        return wait_until(pixels, what)

    def test_shows_whether_privacy_mode_is_on(self):
        self.start_curtain()
        is_off = self.wait_icon(lambda seen: True, "the icon is there")
        self.toggle()
        is_on = self.wait_icon(lambda seen: seen != is_off, "the icon tells that privacy mode is on")
        self.toggle()
        self.wait_icon(lambda seen: seen == is_off, "the icon tells that privacy mode is off")
        self.toggle()
        self.wait_icon(lambda seen: seen == is_on, "the icon tells again that privacy mode is on")

    def test_is_an_icon_and_not_a_window(self):
        self.start_curtain()
        self.wait_icon(lambda seen: True, "the icon is there")
        self.assertEqual(self.desktop.windows(), [])

    def test_is_gone_with_curtain(self):
        self.start_curtain()
        self.wait_icon(lambda seen: True, "the icon is there")
        self.end_curtain()
        wait_until(lambda: not self.desktop.tray_icon(), "the icon is gone")


if __name__ == "__main__":
    unittest.main()
