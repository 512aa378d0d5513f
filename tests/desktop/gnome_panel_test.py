"""Drives Curtain by its button in GNOME Shell's own panel, where there is no tray.

It runs with --session gnome, --tray none, --accessibility and the installation's shared data.
"""

import os
import unittest
from pathlib import Path

import popover_window
from desktop_case import XTERM, XTERM_COLOUR, wait_until, write_preferences
from gnome_shell import GnomeShell
from session_case import ESCAPE, WIDTH, SessionCase

HOST = Path(__file__).resolve().parents[1] / "support/status-notifier-host"
RIGHT, MIDDLE = 3, 2
RETURN = 36
BUTTON = "Main.panel.statusArea.curtain"
# Gives the place of what is on the screen and has been laid out there.
PLACE = """(actor => { if (!actor?.mapped) return 'null';
    const [x, y] = actor.get_transformed_position(), [width, height] = actor.get_transformed_size();
    return JSON.stringify(Number.isFinite(x + width) ? [x, y, width, height].map(Math.round) : null); })"""
ENTRIES = f"({BUTTON}?.menu.isOpen ? {BUTTON}.menu._getMenuItems() : [])"
GAP = 6
# The popover's window in the shell's units, and in the pixels of X11 programs.
WINDOW = """(window => { if (!window) return 'null';
    const frame = window.get_frame_rect(), pixels = window.stage_to_protocol_rect?.(frame) ?? frame;
    return JSON.stringify([frame, pixels].map(({x, y, width, height}) => [x, y, width, height])); })(
    global.get_window_actors().map(actor => actor.meta_window).find(window => window.get_wm_class() === 'curtain'))"""
# As in platform/qt/views/QtPopover.cpp: the popover, its shadow at its sides and below, what is kept off an edge, and a panel of
# which nothing is known.
SIZE, SHADOW, EDGE, UNKNOWN_PANEL = (700, 618), (40, 48), 8, 36
IS_LAID_OUT_OTHERWISE = any(name.startswith("MUTTER_DEBUG_") for name in os.environ)


class PanelCase(GnomeShell, SessionCase):
    def setUp(self):
        super().setUp()
        # What the shell has to say would lie over the popover.
        self.evaluate("Main.messageTray.bannerBlocked = true; 0")

    def let_all_keys_go(self):
        """None is pressed on the display of X11 programs."""

    def start_ready_curtain(self, **preferences):
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False, **preferences)
        self.start_curtain()
        wait_until(self.button, "the button is in the panel")

    def button(self):
        """Its place; None while it is not to be seen."""
        return self.describe(f"{PLACE}({BUTTON})")

    def icon(self):
        return self.evaluate(f"{BUTTON}.get_children()[0].gicon.file.get_basename()")


@unittest.skipIf(IS_LAID_OUT_OTHERWISE, "the screen is not as large as what is looked at")
class GnomePanelTest(PanelCase, popover_window.SessionPopoverCase):
    def start_with_private_terminals(self):
        self.start_xterm(x=20, y=60)
        wait_until(lambda: self.shows(XTERM_COLOUR), "the terminal of X11's is on the screen")
        self.start_ready_curtain()

    def start_foot(self, colour):
        super().start_foot(colour)
        # The shell lets no program take it by itself.
        self.evaluate("Main.activateWindow(global.get_window_actors().map(actor => actor.meta_window)"
                      ".find(window => window.get_wm_class() === 'foot')); 0")

    # The panel

    def click_icon(self, button=1):
        self.click_in(wait_until(self.button, "the button is in the panel"), button)

    def click_in(self, place, button=1):
        x, y, width, height = place
        self.click_at(x + width // 2, y + height // 2, button)

    def menu(self):
        """The texts of its entries; none while it is closed."""
        return self.describe(f"JSON.stringify({ENTRIES}.map(item => item.label?.text ?? ''))")

    def open_menu(self):
        self.click_icon(RIGHT)
        return wait_until(self.menu, "the menu is open")

    def choose(self, text):
        self.click_in(wait_until(lambda: self.describe(f"{PLACE}({ENTRIES}.find(item => item.label?.text === '{text}'))"), text))

    # Tests

    def test_the_popover_hangs_from_the_button_which_closes_it_again(self):
        self.start_ready_curtain()
        for _ in range(3):
            place = self.open_popover()
            x, y, width, height = self.button()
            self.assertLessEqual(abs(place.y - (y + height + GAP)), 3, (place, self.button()))
            centre = min(x + width // 2, WIDTH - 8 - place.width // 2)
            self.assertLessEqual(abs(place.x + place.width // 2 - centre), 3, (place, self.button()))
            self.click_icon()
            self.wait_closed()

    def test_whatever_is_done_with_the_shell_closes_the_popover(self):
        self.start_ready_curtain()
        self.open_popover()
        # Between the buttons of the panel.
        self.click_at(WIDTH // 3, 10)
        self.wait_closed()
        self.open_popover()
        self.set_overview(True)
        self.wait_closed()
        self.set_overview(False)
        self.open_popover()
        self.evaluate("Main.sessionMode.pushMode('unlock-dialog'); 0")
        self.addCleanup(self.evaluate, "Main.sessionMode.currentMode === 'unlock-dialog' && Main.sessionMode.popMode('unlock-dialog'); 0")
        self.wait_closed()
        self.assertIsNone(self.button())
        self.evaluate("Main.sessionMode.popMode('unlock-dialog'); 0")
        wait_until(self.button, "the button is back with the session")

    def test_the_menu_is_that_of_the_tray(self):
        self.start_ready_curtain(language="es")
        self.assertEqual(self.open_menu()[2:], ["Abrir", "Configuración", "", "Salir"])
        self.click_icon()
        wait_until(lambda: not self.menu(), "the menu is closed", seen=self.menu)
        self.click_icon()
        wait_until(self.place_of_popover, "the popover is open")
        self.open_menu()
        self.wait_closed()
        self.choose("Abrir")
        wait_until(self.place_of_popover, "the popover is open")
        self.click_icon()
        self.wait_closed()
        self.open_menu()
        self.choose("Salir")
        wait_until(lambda: self.curtain.poll() == 0, "Curtain has ended", seen=self.curtain.poll)
        wait_until(lambda: not self.button(), "the button is gone", seen=self.button)

    def test_the_keyboard_opens_the_popover(self):
        self.start_ready_curtain()
        self.evaluate(f"{BUTTON}.grab_key_focus(); 0")
        self.screen.strike(RETURN)
        wait_until(self.place_of_popover, "the popover is open")
        self.screen.strike(ESCAPE)
        self.wait_closed()

    def test_the_icon_says_whether_privacy_mode_is_on(self):
        self.start_with_private_terminals()
        self.assertEqual(self.icon(), "com.curtain.Curtain-open-symbolic.svg")
        while_off = self.evaluate(f"{BUTTON}.accessible_name")
        self.assertTrue(while_off.startswith("Curtain"), while_off)
        self.click_icon(MIDDLE)
        wait_until(lambda: self.icon() == "com.curtain.Curtain-close-symbolic.svg", "the curtain is closed", seen=self.icon)
        wait_until(lambda: self.evaluate(f"{BUTTON}.accessible_name") != while_off, "it says so")
        self.assertFalse(self.menu() or self.lines())
        self.act("toggle-privacy")
        wait_until(lambda: self.icon() == "com.curtain.Curtain-open-symbolic.svg", "the curtain is open", seen=self.icon)

    def test_there_is_one_icon_wherever_trays_come_and_go(self):
        self.start_ready_curtain()
        tray = self.desktop.start(str(HOST))
        wait_until(lambda: not self.button(), "the tray has the icon", seen=self.button)
        tray.kill()
        wait_until(self.button, "the panel has the icon")
        self.switch_extension(False)
        self.assertIsNone(self.button())
        self.switch_extension(True)
        wait_until(self.button, "the panel has the icon again")

    def test_the_button_goes_with_a_curtain_that_is_killed(self):
        self.start_ready_curtain()
        self.curtain.kill()
        self.curtain.wait()
        self.curtain = None
        wait_until(lambda: not self.button(), "the button is gone", seen=self.button)


class GnomeMonitorsTest(PanelCase):
    def test_the_popover_hangs_from_the_button(self):
        self.start_ready_curtain()
        self.evaluate(f"{BUTTON}._activate(); 0")
        wait_until(lambda: self.describe(WINDOW), "the popover is open")
        self.wait_lines("push button: More options")
        (_, _, width, _), (left, top, pixel_width, pixel_height) = self.describe(WINDOW)
        pixels = pixel_width // width
        x, y, width, height = (number * pixels for number in self.button())
        monitor = self.evaluate("Main.layoutManager.primaryMonitor.width") * pixels
        self.assertLessEqual(abs(left + SHADOW[0] - min(x + width // 2 - SIZE[0] // 2, monitor - EDGE - SIZE[0])), 3, (left, x, width))
        hang = top + pixel_height - SIZE[1] - SHADOW[1] - y - height
        self.assertTrue(0 < hang <= GAP + max(0, UNKNOWN_PANEL - height) + 1, (top, pixel_height, hang))


if __name__ == "__main__":
    unittest.main()
