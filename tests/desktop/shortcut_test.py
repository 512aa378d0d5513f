"""Checks the global shortcut with real presses of physical keys."""

import subprocess
import time
import unittest

from desktop_case import SHORTCUT_MASK, SHORTCUT_MODIFIERS, XTERM, DesktopCase, Display, Key, stays, wait_until

REPEATS_OF_A_HELD_KEY = 10


class ShortcutTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.xterm = self.open_xterm()

    def assert_toggles(self):
        self.toggle()
        self.wait_hidden(self.xterm)
        self.toggle()
        self.wait_shown(self.xterm)

    def test_acts_when_the_key_is_let_go(self):
        self.start_curtain(XTERM)
        self.display.press(*SHORTCUT_MODIFIERS, Key.H)
        self.assert_stays_shown(self.xterm)
        self.display.release(Key.H)
        self.wait_hidden(self.xterm)
        self.display.release(*SHORTCUT_MODIFIERS)
        self.assert_stays_hidden(self.xterm)

    def test_acts_on_a_key_that_outlasts_its_modifiers(self):
        self.start_curtain(XTERM)
        self.display.press(*SHORTCUT_MODIFIERS, Key.H)
        self.display.release(*SHORTCUT_MODIFIERS)
        self.assert_stays_shown(self.xterm)
        self.display.release(Key.H)
        self.wait_hidden(self.xterm)

    def test_acts_once_on_a_key_that_is_held(self):
        self.start_curtain(XTERM)
        self.addCleanup(self.set_repeats, "off")
        self.set_repeats("on")
        # A program that gets the presses of a held key shows how long it takes until they have repeated.
        witness = self.desktop.start("xev", "-geometry", "+640+420", "-event", "keyboard")
        window = wait_until(lambda: next((one for one in self.desktop.windows() if one != self.xterm), None),
                            "xev has a window")
        wait_until(lambda: self.desktop.active_window == window, "xev has the keyboard")
        start = time.monotonic()
        self.display.press(Key.H)
        wait_until(lambda: witness.output().count("KeyPress event") >= REPEATS_OF_A_HELD_KEY, "the key repeats",
                   seen=lambda: witness.output().count("KeyPress event"))
        seconds = time.monotonic() - start
        self.display.release(Key.H)

        self.display.press(*SHORTCUT_MODIFIERS, Key.H)
        self.assertTrue(stays(lambda: not self.xterm.is_hidden, seconds))
        self.display.release(Key.H)
        self.wait_hidden(self.xterm)
        self.assert_stays_hidden(self.xterm)

    @staticmethod
    def set_repeats(value):
        """Of held keys, which the virtual desktop has switched off."""
        subprocess.run(["xset", "r", value], check=True)

    def test_acts_with_the_locks_on(self):
        self.start_curtain(XTERM)
        for locks in ((Key.CAPS_LOCK,), (Key.NUM_LOCK,), (Key.CAPS_LOCK, Key.NUM_LOCK)):
            with self.subTest(locks):
                for lock in locks:
                    self.display.strike(lock)
                wait_until(lambda: bin(self.display.modifiers()).count("1") == len(locks), "the locks are on",
                           seen=lambda: bin(self.display.modifiers()).count("1"))
                self.assert_toggles()
                for lock in locks:
                    self.display.strike(lock)
                wait_until(lambda: not self.display.modifiers(), "the locks are off")

    def test_leaves_other_combinations_alone(self):
        self.start_curtain(XTERM)
        control, alt, super_ = SHORTCUT_MODIFIERS
        for modifiers in ((), (control, alt), (control, super_), (alt, super_), (control, alt, super_, Key.SHIFT)):
            with self.subTest(modifiers):
                self.display.strike(*modifiers, Key.H)
                self.assert_stays_shown(self.xterm)
        self.assert_toggles()

    def test_belongs_to_the_physical_key(self):
        def set_layout(name):
            subprocess.run(["setxkbmap", "-layout", name], check=True)
        self.addCleanup(set_layout, "us")
        self.start_curtain(XTERM)
        set_layout("ru")
        self.assert_toggles()
        self.end_curtain()
        self.start_curtain(XTERM)
        self.assert_toggles()
        set_layout("us")
        self.assert_toggles()

    def test_says_that_another_program_has_it(self):
        other = Display()
        self.addCleanup(other.close)
        self.assertTrue(other.grab_key(Key.H, SHORTCUT_MASK))
        self.expected_complaints = "Error registering hotkey Ctrl+Alt+Super+H: -9878\n"
        self.write_private_apps(XTERM)
        self.curtain = self.launch_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        wait_until(lambda: self.curtain.complaints() == self.expected_complaints, "Curtain says so",
                   seen=lambda: self.curtain.complaints())
        self.toggle()
        self.assert_stays_shown(self.xterm)
        self.assertIsNone(self.curtain.poll())
        self.assertTrue(self.desktop.tray_icon())

    def test_is_free_again_after_the_end(self):
        self.start_curtain(XTERM)
        self.end_curtain()
        # The server may hear of its end a moment later.
        wait_until(lambda: not self.display.is_key_taken(Key.H, SHORTCUT_MASK), "the shortcut is free")


if __name__ == "__main__":
    unittest.main()
