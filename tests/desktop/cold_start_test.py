"""Starts Curtain as a new user does: in an empty home, with nothing that says where settings and data lie."""

import stat
import unittest

from desktop_case import DesktopCase, wait_until

WIZARD = (420, 460)
SHORTCUT_FILE = ".config/curtain/KeyboardShortcuts_togglePrivacy"


class ColdStartTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.home = self.scratch / "home"
        self.home.mkdir()
        unknown = ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_DIRS")
        self.new_user = dict.fromkeys(unknown) | {"HOME": str(self.home)}

    def files(self):
        return {str(path.relative_to(self.home)) for path in self.home.rglob("*") if not path.is_dir()}

    def wizard(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size == WIZARD), None)

    def open_wizard(self):
        self.click_tray_icon()
        return wait_until(self.wizard, "the wizard is open")

    def test_greets_a_new_user_and_leaves_only_its_settings(self):
        self.start_curtain(**self.new_user)
        wait_until(self.desktop.tray_icon, "the icon is in the tray")
        self.assertEqual(self.desktop.windows_of(self.curtain), [])
        wait_until(lambda: self.files() == {SHORTCUT_FILE}, "there is the shortcut alone", seen=self.files)
        modes = {name: stat.S_IMODE((self.home / name).stat().st_mode) for name in (SHORTCUT_FILE, ".config/curtain")}
        self.assertEqual(modes, {SHORTCUT_FILE: 0o600, ".config/curtain": 0o700})
        self.open_wizard()

    def test_starts_again_as_before(self):
        self.start_curtain(**self.new_user)
        wait_until(self.desktop.tray_icon, "the icon is in the tray")
        before = (self.home / SHORTCUT_FILE).read_bytes()
        self.end_curtain()
        self.start_curtain(**self.new_user)
        self.open_wizard()
        self.assertEqual((self.home / SHORTCUT_FILE).read_bytes(), before)


if __name__ == "__main__":
    unittest.main()
