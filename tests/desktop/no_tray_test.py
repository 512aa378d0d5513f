"""Checks Curtain in a desktop without a tray; it runs with --tray none."""

import unittest

from desktop_case import XTERM, DesktopCase, wait_until


class NoTrayTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.assertFalse(self.display.selection_owner("_NET_SYSTEM_TRAY_S0"))
        self.xterm = self.open_xterm()
        self.start_curtain(XTERM)

    def assert_toggles(self):
        self.toggle()
        self.wait_hidden(self.xterm)
        self.toggle()
        self.wait_shown(self.xterm)

    def start_tray(self):
        tray = self.desktop.start("trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                                  "--height", "28")
        wait_until(self.desktop.tray_icon, "the icon is in the tray")
        return tray

    def test_works_without_a_tray(self):
        self.assert_toggles()
        self.assertEqual(self.desktop.windows(), [self.xterm])

    def test_moves_into_a_tray_that_comes_later(self):
        self.start_tray()
        self.assert_toggles()

    def test_comes_back_after_the_tray_was_restarted(self):
        tray = self.start_tray()
        tray.terminate()
        tray.wait(30)
        self.assert_toggles()
        self.start_tray()
        self.assert_toggles()


if __name__ == "__main__":
    unittest.main()
