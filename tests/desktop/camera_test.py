"""The camera check in the program: what is copied can be pasted elsewhere, and nothing keeps a camera on.

The tests need the microphone of scripts/virtual-desktop and bring a camera of their own.
"""

import subprocess
import unittest

from desktop_case import wait_until
from logged_camera import NAME, LoggedCamera
from popover_test import PHOTO_EDGE, PHOTO_MAT, TAKE_PHOTO, PopoverCase

PHOTO_COPY = (508, 328)

# Pastes as GTK's programs do.
PASTE = """
import gi
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk
Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD).wait_for_image().savev(r"{}", "png", [], [])
"""


class CameraTest(PopoverCase):
    def setUp(self):
        super().setUp()
        self.camera = LoggedCamera(self.desktop, self.scratch)

    def start(self, **preferences):
        super().start(selectedCameraID=NAME, **preferences)

    def open_with_picture(self):
        popover = self.open()
        wait_until(lambda: self.is_red(popover), "the camera is seen")
        return popover

    def test_the_popover_lets_the_camera_go(self):
        self.start()
        for close in (lambda: self.press_key("Escape"), lambda: self.click_at(200, 700), self.click_tray_icon):
            self.assertTrue(self.camera.is_let_go_in_time(self.open_with_picture, close))
            self.wait_closed()

    def test_a_camera_that_is_unplugged_leaves_darkness_and_returns(self):
        self.start()
        popover = self.open_with_picture()
        self.camera.unplug()
        wait_until(lambda: not self.is_red(popover), "the preview is dark")
        self.camera.plug_in()
        wait_until(lambda: self.is_red(popover), "the camera is seen again")

    def copy_photo(self):
        self.start()
        popover = self.open_with_picture()
        self.click(popover, TAKE_PHOTO)
        wait_until(lambda: self.colour(popover, PHOTO_EDGE) == PHOTO_MAT, "the photo is there for review",
                   seen=lambda: self.colour(popover, PHOTO_EDGE))
        self.click(popover, PHOTO_COPY)
        wait_until(lambda: b"image/png" in self.paste("TARGETS"), "the photo is in the clipboard",
                   seen=lambda: self.paste("TARGETS"))

    def paste(self, target):
        return subprocess.run(["xclip", "-selection", "clipboard", "-target", target, "-out"], check=False,
                              capture_output=True).stdout

    def pixels_of(self, image):
        return subprocess.run(["convert", "-", "-depth", "8", "rgb:-"], input=image, check=True, capture_output=True).stdout

    def test_a_copied_photo_is_the_cameras(self):
        self.copy_photo()
        file = self.paste("image/jpeg")
        self.assertIn(b"VirtualCamera test_camera frame", file)
        same = self.pixels_of(self.paste("image/png"))
        self.assertEqual(len(same), 1280 * 720 * 3)
        # Decoders may round differently.
        self.assertLessEqual(max(abs(one - other) for one, other in zip(same, self.pixels_of(file))), 8)

    def test_a_copied_photo_can_be_pasted_into_programs_of_gtk(self):
        self.copy_photo()
        pasted = self.scratch / "pasted.png"
        subprocess.run(["/usr/bin/python3", "-B", "-c", PASTE.format(pasted)], check=True)
        self.assertEqual(self.pixels_of(pasted.read_bytes()), self.pixels_of(self.paste("image/png")))


if __name__ == "__main__":
    unittest.main()
