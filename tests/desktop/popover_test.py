"""Uses the popover as people do: with clicks on the icon, on its buttons and beside it, and with keys.

They need the microphone and the cameras of scripts/virtual-desktop.
"""

import json
import subprocess
import unittest

from desktop_case import MOUSEPAD, XTERM, DesktopCase, Rectangle, stays, wait_until, write_preferences

SIZE = (700, 618)
CARD = "#ffffff"
PHOTO_MAT = "#e2e5eb"

# Places in the popover.
FIX_EVERYTHING = (241, 582)
RESTORE = (589, 582)
HIDE_APPS_CHIP = (613, 527)
TAKE_PHOTO = (613, 399)
PHOTO_BACK, PHOTO_SAVE = (72, 328), (628, 328)
PHOTO_EDGE = (24, 70)
MENU, MENU_TEST_SHARE, MENU_SETTINGS = (668, 32), (580, 76), (580, 108)
BETWEEN_CARDS = (300, 350)
# Above the cards.
MENU_EDGE = (560, 57)
SURFACE = (8, 300)
MIRROR = (285, 87)
PICTURE_LEFT = (40, 155)
CAMERA_MENU, CAMERA_MENU_BELOW = (323, 87), (300, 115)
RECORD = (613, 431)
METER_START = (458, 431)
GREEN = "#1e9e57"
EDIT_FIELD_EDGE = (500, 107)
EDIT_FIRST_ICON, EDIT_SECOND_ICON = (390, 161), (390, 194)
EDIT, EDIT_FIRST_BUTTON = (658, 85), (646, 161)


class PopoverCase(DesktopCase):
    """What there is to do with the popover."""

    def start(self, **preferences):
        write_preferences(self.settings, **({"targetApps": [XTERM], "hasOnboarded": True, "autoDetectEnabled": False} | preferences))
        self.start_curtain()

    def click_at(self, x, y, button=1):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", str(button)], check=True)

    def press_key(self, *keys):
        subprocess.run(["xdotool", "key", *keys], check=True)

    def shown_popover(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size == SIZE and self.display.is_viewable(window.id)), None)

    def open(self):
        self.click_tray_icon()
        popover = wait_until(self.shown_popover, "the popover is open")
        wait_until(lambda: self.colour(popover, (30, 600)) is not None and
                   self.desktop.active_window == popover, "the popover has the keyboard",
                   seen=lambda: self.colour(popover, (30, 600)))
        wait_until(lambda: self.colour(popover, SURFACE) == "#f4f5f8", "the popover is drawn",
                   seen=lambda: self.colour(popover, SURFACE))
        return popover

    def wait_closed(self):
        wait_until(lambda: self.shown_popover() is None, "the popover is closed", seen=lambda: self.shown_popover())

    def colour(self, popover, place):
        area = popover.geometry
        return area and self.display.colour(area.x + place[0], area.y + place[1])

    def click(self, popover, place):
        area = popover.geometry
        self.click_at(area.x + place[0], area.y + place[1])

    def stored(self):
        return json.loads((self.settings / "curtain" / "curtain.preferences.v1").read_text())

    def is_red(self, popover):
        colour = self.colour(popover, PICTURE_LEFT) or "#000000"
        red, green, blue = (int(colour[at:at + 2], 16) for at in (1, 3, 5))
        return red > 200 and green < 60 and blue < 60

    def save_dialog(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size not in (None, SIZE) and self.display.is_viewable(window.id)), None)


class PopoverTest(PopoverCase):
    def test_opens_and_closes_by_the_icon(self):
        self.start()
        popover = self.open()
        icon = self.desktop.place_of_tray_icon()
        self.assertGreaterEqual(popover.geometry.y, icon.y + icon.height)
        self.assertLessEqual(popover.geometry.x + popover.geometry.width, icon.x + icon.width + 8)
        self.assertTrue(popover.has_state("SKIP_TASKBAR"))
        self.click_tray_icon()
        self.wait_closed()
        self.open()

    def test_a_slow_press_on_the_icon_does_not_open_it_again(self):
        self.start()
        self.open()
        icon = self.desktop.place_of_tray_icon()
        subprocess.run(["xdotool", "mousemove", str(icon.x + 8), str(icon.y + 8), "mousedown", "1"], check=True)
        self.assertTrue(stays(lambda: self.shown_popover() is not None))
        subprocess.run(["xdotool", "mouseup", "1"], check=True)
        self.wait_closed()
        self.assertTrue(stays(lambda: self.shown_popover() is None))

    def test_escape_closes_it(self):
        self.start()
        self.open()
        self.press_key("Escape")
        self.wait_closed()

    def test_a_click_elsewhere_closes_it_and_one_inside_does_not(self):
        self.start()
        terminal = self.open_xterm(x=60, y=500)
        popover = self.open()
        self.click(popover, SURFACE)
        self.assertTrue(stays(lambda: self.shown_popover() is not None))
        area = terminal.geometry
        self.click_at(area.x + 40, area.y + 40)
        self.wait_closed()

    def test_closes_when_another_workspace_comes_into_view(self):
        self.start()
        self.open()
        self.addCleanup(setattr, self.desktop, "workspace", self.desktop.workspace)
        self.desktop.workspace = self.desktop.workspace + 1
        # One that is only out of view is still a window of the session.
        wait_until(lambda: not self.desktop.windows_of(self.curtain), "the popover is closed", seen=self.desktop.describe)
        self.open()

    def test_hides_the_private_apps_and_restores_them(self):
        # A notice would lie over the popover of the next test.
        self.start(notificationsMarkedHandled=True)
        terminal = self.open_xterm(x=60, y=400)
        popover = self.open()
        self.click(popover, FIX_EVERYTHING)
        self.wait_hidden(terminal)
        self.click(popover, RESTORE)
        self.wait_shown(terminal)
        popover = self.shown_popover() or self.open()
        self.click(popover, HIDE_APPS_CHIP)
        self.wait_hidden(terminal)

    def test_the_menu_leads_to_test_share_mode_and_to_the_settings(self):
        self.start()
        popover = self.open()
        self.click(popover, MENU)
        wait_until(lambda: self.colour(popover, MENU_EDGE) == CARD, "the menu is open",
                   seen=lambda: self.colour(popover, MENU_EDGE))
        self.click(popover, MENU_TEST_SHARE)
        wait_until(lambda: self.colour(popover, SURFACE) not in ("#f4f5f8", None), "the panel lies over the popover",
                   seen=lambda: self.colour(popover, SURFACE))
        # Beside the panel.
        self.click(popover, SURFACE)
        wait_until(lambda: stays(lambda: self.colour(popover, BETWEEN_CARDS) == "#f4f5f8"), "the panel is gone")
        self.click(popover, MENU)
        wait_until(lambda: self.colour(popover, MENU_EDGE) == CARD, "the menu is open again",
                   seen=lambda: self.colour(popover, MENU_EDGE))
        self.click(popover, MENU_SETTINGS)
        self.wait_closed()
        wait_until(lambda: any(window.size == (440, 430)
                               for window in self.desktop.windows_of(self.curtain)), "the settings are open")

    def test_a_second_start_opens_the_first_ones_popover(self):
        self.start()
        second = self.launch_curtain()
        self.assertEqual(second.wait(30), 0)
        wait_until(self.shown_popover, "the popover is open")
        third = self.launch_curtain()
        self.assertEqual(third.wait(30), 0)
        self.assertTrue(stays(lambda: self.shown_popover() is not None))

    def test_shows_the_camera_and_saves_a_photo(self):
        self.start()
        popover = self.open()
        wait_until(lambda: self.is_red(popover), "the camera is seen")
        self.click(popover, MIRROR)
        wait_until(lambda: not self.is_red(popover), "it is mirrored")
        self.click(popover, TAKE_PHOTO)
        wait_until(lambda: self.colour(popover, PHOTO_EDGE) == PHOTO_MAT, "the photo is there for review",
                   seen=lambda: self.colour(popover, PHOTO_EDGE))
        self.click(popover, PHOTO_BACK)
        wait_until(lambda: self.colour(popover, PHOTO_EDGE) != PHOTO_MAT, "the camera is back",
                   seen=lambda: self.colour(popover, PHOTO_EDGE))
        self.click(popover, TAKE_PHOTO)
        wait_until(lambda: self.colour(popover, PHOTO_EDGE) == PHOTO_MAT, "the photo is there for review",
                   seen=lambda: self.colour(popover, PHOTO_EDGE))
        self.click(popover, PHOTO_SAVE)
        dialog = wait_until(self.save_dialog, "the dialog is open")
        wait_until(lambda: self.desktop.active_window == dialog, "the dialog has the keyboard")
        self.assertTrue(dialog.has_state("ABOVE"), "the popover must not cover it")
        self.press_key("Escape")
        wait_until(lambda: not self.save_dialog(), "the dialog is gone")
        self.assertTrue(stays(lambda: self.shown_popover() is not None), "Escape was for the dialog")
        wait_until(lambda: self.colour(popover, PHOTO_EDGE) == PHOTO_MAT, "the photo is still there for review",
                   seen=lambda: self.colour(popover, PHOTO_EDGE))
        self.click(popover, PHOTO_SAVE)
        dialog = wait_until(self.save_dialog, "the dialog is open again")
        wait_until(lambda: self.desktop.active_window == dialog, "the dialog has the keyboard")
        target = self.scratch / "me.jpg"
        self.press_key("ctrl+a")
        subprocess.run(["xdotool", "type", str(target)], check=True)
        self.press_key("Return")
        wait_until(target.exists, "the photo is saved")
        # As the camera encoded it.
        wait_until(lambda: b"VirtualCamera" in target.read_bytes(), "it is the camera's own")
        self.assertEqual(target.read_bytes()[:2], b"\xff\xd8")
        self.assertEqual(target.stat().st_mode & 0o777, 0o600)
        wait_until(lambda: not self.save_dialog(), "the dialog is gone")
        wait_until(self.shown_popover, "the popover has stayed")

    def test_switches_to_the_other_camera(self):
        self.start()
        popover = self.open()
        wait_until(lambda: self.is_red(popover), "the camera is seen")
        self.click(popover, CAMERA_MENU)
        wait_until(lambda: self.colour(popover, CAMERA_MENU_BELOW) == CARD, "the menu of the cameras is open",
                   seen=lambda: self.colour(popover, CAMERA_MENU_BELOW))
        # The first camera is the one in use.
        self.press_key("Down")
        self.press_key("Down")
        self.press_key("Return")
        wait_until(lambda: self.stored().get("selectedCameraID"), "the other camera is stored")
        wait_until(lambda: self.is_red(popover), "the other camera is seen")

    def test_shows_the_level_and_plays_the_echo(self):
        self.start()
        tone = self.scratch / "tone.wav"
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=440:r=48000", "-af", "volume=4", "-t", "60",
                        "-f", "wav", str(tone)], check=True)
        popover = self.open()
        self.desktop.start("paplay", "--device=microphone_feed", str(tone))
        wait_until(lambda: self.colour(popover, METER_START) == GREEN, "the meter moves with the voice",
                   seen=lambda: self.colour(popover, METER_START))
        area = popover.geometry
        subprocess.run(["xdotool", "mousemove", str(area.x + RECORD[0]), str(area.y + RECORD[1])], check=True)
        wait_until(lambda: stays(lambda seen=self.label(): self.label() == seen), "the button is at rest")
        idle = self.label()
        self.click(popover, RECORD)
        wait_until(lambda: self.label() != idle, "it records", seen=lambda: self.label())
        recording = self.label()
        wait_until(lambda: self.label() not in (idle, recording), "it plays what it heard", seen=lambda: self.label())
        wait_until(lambda: self.label() == idle, "it is ready for another test", seen=lambda: self.label())

    def label(self):
        """How the button of the echo test looks."""
        area = self.shown_popover().geometry
        return self.display.pixels(Rectangle(area.x + RECORD[0] - 50, area.y + RECORD[1] - 8, 100, 16))

    def test_makes_an_app_private_and_public_again(self):
        self.start(targetApps=[])
        popover = self.open()
        self.edit_apps(popover, "mousepad")
        self.click(popover, EDIT_FIRST_BUTTON)
        wait_until(lambda: [app["bundleID"] for app in self.stored()["targetApps"]] == [MOUSEPAD["bundleID"]],
                   "the app is private", seen=lambda: [app["bundleID"] for app in self.stored()["targetApps"]])
        self.wait_at_rest(popover)
        self.click(popover, EDIT_FIRST_BUTTON)
        wait_until(lambda: self.stored()["targetApps"] == [], "the app is public again", seen=lambda: self.stored()["targetApps"])

    def test_an_app_is_hidden_as_soon_as_it_is_made_private_while_privacy_mode_is_on(self):
        self.start(targetApps=[], notificationsMarkedHandled=True)
        editor = self.open_mousepad(x=60, y=60)
        self.toggle()
        popover = self.open()
        self.edit_apps(popover, "mousepad")
        self.click(popover, EDIT_FIRST_BUTTON)
        self.wait_hidden(editor)
        self.wait_at_rest(popover)
        self.click(popover, EDIT_FIRST_BUTTON)
        self.wait_shown(editor)

    def test_curtain_is_no_app_to_choose(self):
        self.start(targetApps=[])
        popover = self.open()
        self.edit_apps(popover, "curtain", finds_one=False)
        self.click(popover, EDIT_FIRST_BUTTON)
        self.assertTrue(stays(lambda: self.stored()["targetApps"] == []), "only a word stands there")

    def edit_apps(self, popover, query, finds_one=True):
        self.wait_at_rest(popover)
        self.click(popover, EDIT)
        wait_until(lambda: self.colour(popover, EDIT_FIELD_EDGE) not in (CARD, None), "there is a field to search in",
                   seen=lambda: self.colour(popover, EDIT_FIELD_EDGE))
        subprocess.run(["xdotool", "type", query], check=True)
        wait_until(lambda: (not finds_one or self.colour(popover, EDIT_FIRST_ICON) != CARD) and
                   self.colour(popover, EDIT_SECOND_ICON) == CARD, f"{query}: no more than one app is found",
                   seen=lambda: (self.colour(popover, EDIT_FIRST_ICON), self.colour(popover, EDIT_SECOND_ICON)))
        self.wait_at_rest(popover)

    def wait_at_rest(self, popover):
        wait_until(lambda: stays(lambda seen=self.edited(popover): self.edited(popover) == seen), "the list is at rest")

    def edited(self, popover):
        area = popover.geometry
        return self.display.pixels(Rectangle(area.x + 379, area.y + 145, 288, 140))


if __name__ == "__main__":
    unittest.main()
