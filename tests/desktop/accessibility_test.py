"""Uses Curtain as a screen reader does: reads every view over the bus of assistive technologies and acts over it.

It needs the microphone and the cameras of scripts/virtual-desktop --media --camera, and --accessibility.
"""

import json
import os
import signal
import subprocess
import unittest
from pathlib import Path

from desktop_case import XTERM, DesktopCase, wait_until, write_preferences
from screen_reader import ScreenReader

# Whatever of these is shown must say what it is.
SPOKEN = {"push button", "check box", "text", "combo box", "menu item", "list", "list item", "page tab list", "progress bar",
          "heading", "label", "graphic", "panel", "dialog", "hotkey field", "frame"}
# These have no words of their own; a menu is named by the button that it drops from.
SILENT = {"separator", "popup menu"}
CONTROLS = {"push button", "check box", "text", "combo box", "hotkey field"}

POPOVER = [
    "heading: Curtain",
    "label: Share your screen, not your secrets",
    "label: Sharing now could expose private stuff.",
    "push button: More options",
    "graphic: Camera Preview",
    "check box: Mirror picture",
    "push button: Camera",
    "panel: Screen Share Risk: 35 / 100, Medium Risk",
    "heading: Private apps",
    "check box: Edit apps",
    "list: Private apps",
    "list item: XTerm: Visible",
    "push button: Hide Private Apps",
    "heading: Readiness Check",
    "panel: Camera: Looks good",
    "push button: Take photo",
    "panel: Microphone: Say something…",
    "progress bar: Microphone",
    "push button: Record",
    "panel: Notifications: Notifications already handled",
    "push button: Open Do Not Disturb",
    "panel: Desktop: Desktop hidden",
    "push button: Show desktop",
    "panel: Private apps: 1 visible",
    "push button: Hide apps",
    "push button: Fix Everything",
    "push button: Restore",
]

# The pages of the wizard and the buttons that lead through them.
WIZARD = [(1, "See if my computer qualifies"), (2, "Continue"), (3, "Allow"), (3, "Continue"), (4, "Allow"), (4, "Continue"),
          (5, "Allow"), (5, "Continue"), (6, "Start using Curtain")]


class AccessibilityCase(DesktopCase):
    def setUp(self):
        super().setUp()
        self.reader = ScreenReader()
        self.addCleanup(self.reader.close)

    def start(self, **preferences):
        write_preferences(self.settings, **({"targetApps": [XTERM], "hasOnboarded": True, "autoDetectEnabled": False,
                                             "notificationsMarkedHandled": True} | preferences))
        self.start_curtain()

    def open(self, button=1):
        self.click_tray_icon(button)

    def lines(self):
        """Role and name of everything inside the windows."""
        return [str(element) for element in self.reader.elements() if element.depth > 1 or element.role != "panel"][1:]

    def wait_line(self, line):
        wait_until(lambda: line in self.lines(), lambda: f"{line}, not {self.lines()}", seen=lambda: self.lines())

    def find(self, line):
        return wait_until(lambda: next((element for element in self.reader.elements() if str(element) == line), None), line)

    def press(self, line, action="Press"):
        wait_until(lambda: self.reader.act(line, action), line, seen=self.lines)

    def press_button(self, name):
        self.press(f"push button: {name}")

    def wait_description(self, line, description):
        wait_until(lambda: self.find(line).description == description, f"{line} is described as {description}",
                   seen=lambda: self.find(line).description)

    def has(self, line, state):
        return any(str(element) == line and state in element.states for element in self.reader.elements())

    def wait_state(self, line, state, value=True):
        wait_until(lambda: self.has(line, state) == value, f"{line} is {'' if value else 'not '}{state}",
                   seen=lambda: self.has(line, state))

    def stored(self):
        path = self.settings / "curtain" / "curtain.preferences.v1"
        return json.loads(path.read_text()) if path.exists() else {}

    def assert_all_is_said(self):
        elements = wait_until(self.reader.elements, "something is shown")
        for element in elements:
            self.assertIn(element.role, SPOKEN | SILENT, str(element))
            self.assertTrue(element.name or element.role in SILENT, f"a {element.role} without a name: {list(map(str, elements))}")
        return elements


class AccessibilityTest(AccessibilityCase):
    def test_the_popover_is_read_from_top_to_bottom(self):
        self.start()
        self.open_xterm(x=60, y=500)
        self.open()
        wait_until(lambda: self.lines() == POPOVER, lambda: f"the popover is read, not {self.lines()}", seen=lambda: self.lines())
        self.assert_all_is_said()

    def test_the_keyboard_follows_the_reading_order(self):
        self.start()
        self.open()
        self.wait_line("panel: Camera: Looks good")
        controls = [str(element) for element in self.reader.elements() if element.role in CONTROLS]
        self.assertEqual(len(controls), 12)
        for control in controls:
            subprocess.run(["xdotool", "key", "Tab"], check=True)
            self.wait_state(control, "focused")

    def test_buttons_act_and_what_they_change_is_said(self):
        self.start()
        terminal = self.open_xterm(x=60, y=500)
        self.open()
        self.wait_line("list item: XTerm: Visible")
        self.press_button("Fix Everything")
        self.wait_hidden(terminal)
        for line in ("label: Privacy mode on", "label: You're ready.", "panel: Screen Share Risk: 0 / 100, Low Risk",
                     "list item: XTerm: Hidden", "panel: Private apps: You're ready."):
            self.wait_line(line)
        self.press_button("Restore")
        self.wait_shown(terminal)
        self.wait_line("panel: Private apps: 1 visible")

    def test_a_share_is_said_and_undone_where_its_notice_cannot_be_seen(self):
        def dunst(*words):
            return subprocess.run(["dunstctl", *words], check=True, text=True, capture_output=True).stdout.strip()

        self.addCleanup(dunst, "set-paused", "false")
        self.start(autoDetectEnabled=True, notificationsMarkedHandled=False)
        terminal = self.open_xterm(x=60, y=500)
        capture = self.start_capture()
        self.wait_hidden(terminal)
        wait_until(lambda: dunst("is-paused") == "true", "dunst is quiet", seen=capture.complaints)
        wait_until(lambda: dunst("count", "displayed") == "0", "dunst shows nothing")
        self.open()
        note = "label: Detected possible screen sharing."
        self.wait_line(note)
        self.wait_description("push button: Undo", note.removeprefix("label: "))
        self.press_button("Undo")
        self.wait_shown(terminal)
        wait_until(lambda: note not in self.lines(), "nothing is said of a share any more", seen=self.lines)
        self.wait_line("label: Share your screen, not your secrets")

    def test_the_voice_is_said(self):
        self.start()
        tone = self.scratch / "tone.wav"
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=440:r=48000", "-af", "volume=4", "-t", "60",
                        "-f", "wav", str(tone)], check=True)
        self.open()
        self.wait_line("panel: Microphone: Say something…")
        self.wait_description("progress bar: Microphone", "0%")
        self.desktop.start("paplay", "--device=microphone_feed", str(tone))
        self.wait_line("panel: Microphone: Working")
        wait_until(lambda: self.find("progress bar: Microphone").description != "0%", "the level is said",
                   seen=lambda: self.find("progress bar: Microphone").description)

    def test_switches_say_how_they_stand(self):
        self.start()
        self.open()
        self.wait_state("check box: Mirror picture", "checked", False)
        for action, value in (("Press", True), ("Toggle", False), ("Toggle", True)):
            self.press("check box: Mirror picture", action)
            self.wait_state("check box: Mirror picture", "checked", value)
        self.press_button("Camera")
        self.wait_state("menu item: Integrated Camera", "checked")
        self.assertFalse(self.has("menu item: Desk Camera", "checked"))
        self.assert_all_is_said()
        self.press("menu item: Desk Camera")
        wait_until(lambda: "desk_camera" in str(self.stored().get("selectedCameraID")), "the camera is chosen",
                   seen=lambda: str(self.stored().get("selectedCameraID")))

    def test_private_apps_are_edited(self):
        self.start()
        self.open()
        self.press("check box: Edit apps", "Toggle")
        self.wait_state("text: Search apps…", "focused")
        self.wait_state("check box: Edit apps", "checked")
        self.assert_all_is_said()
        self.press_button("Remove: XTerm")
        wait_until(lambda: self.stored()["targetApps"] == [], "the app is public", seen=lambda: self.stored()["targetApps"])
        self.press_button("Add: Mousepad")
        wait_until(lambda: [app["displayName"] for app in self.stored()["targetApps"]] == ["Mousepad"], "the app is private",
                   seen=lambda: [app["displayName"] for app in self.stored()["targetApps"]])
        self.press_button("Save")
        self.wait_line("list item: Mousepad: Not running")

    def test_the_menu_leads_to_the_panel_and_escape_closes_one_thing(self):
        self.start(notificationsMarkedHandled=False)
        self.open()
        self.press_button("More options")
        self.wait_line("menu item: Test Share Mode")
        self.assert_all_is_said()
        subprocess.run(["xdotool", "key", "Escape"], check=True)
        wait_until(lambda: "push button: More options" in self.lines() and "menu item: Quit" not in self.lines(),
                   "the menu alone is closed", seen=lambda: self.lines())
        self.press_button("More options")
        self.press("menu item: Test Share Mode")
        self.wait_line("dialog: If you shared your screen right now…")
        self.wait_line("label: Notifications")
        self.wait_line("label: Embarrassment Score: 30/100")
        self.assert_all_is_said()
        self.press_button("Back")
        wait_until(lambda: (lines := self.lines()) and not any("dialog" in line for line in lines), "the panel is closed",
                   seen=self.lines)

    def test_a_photo_is_taken_and_discarded(self):
        self.start()
        self.open()
        self.wait_line("panel: Camera: Looks good")
        self.press_button("Take photo")
        for line in ("graphic: Camera", "push button: Back", "push button: Copy", "push button: Save"):
            self.wait_line(line)
        self.assert_all_is_said()
        self.press_button("Back")
        self.wait_line("graphic: Camera Preview")

    def test_the_panel_for_a_photo_says_everything(self):
        self.start()
        self.open()
        self.wait_line("panel: Camera: Looks good")
        self.press_button("Take photo")
        self.press_button("Save")
        self.wait_line("text: Save")
        self.assert_all_is_said()
        subprocess.run(["xdotool", "key", "Escape"], check=True)
        wait_until(lambda: self.lines() and "text: Save" not in self.lines(), "the panel is closed", seen=lambda: self.lines())
        self.wait_line("push button: Back")

    def test_the_menu_of_the_icon_is_said_and_chooses(self):
        self.start()
        self.open(button=3)
        for word in ("Open", "Settings", "Quit"):
            self.wait_line(f"menu item: {word}")
        self.assert_all_is_said()
        wait_until(self.display.is_keyboard_taken, "the menu has the keyboard")
        subprocess.run(["xdotool", "key", "Down"], check=True)
        self.wait_state("menu item: Open", "focused")
        self.press("menu item: Quit")
        self.assertEqual(self.curtain.wait(30), 0)

    def test_the_settings_say_everything_and_act(self):
        self.start()
        self.open()
        self.press_button("More options")
        self.press("menu item: Settings")
        self.wait_line("hotkey field: Global shortcut:")
        self.wait_state("push button: General", "selected")
        self.assert_all_is_said()
        self.wait_description("combo box: Language", "System")
        self.press("check box: Run Test Share Mode on open", "Toggle")
        wait_until(lambda: self.stored().get("runTestShareModeOnOpen"), "the switch is stored")
        self.press("combo box: Language")
        self.press("list item: Français")
        wait_until(lambda: self.stored().get("language") == "fr", "the language is stored",
                   seen=lambda: self.stored().get("language"))
        self.wait_line("combo box: Langue")
        for tab in ("Apps", "Autorisations"):
            self.press_button(tab)
            self.wait_state(f"push button: {tab}", "selected")
            self.assert_all_is_said()

    def test_the_wizard_is_gone_through_to_its_end(self):
        self.start(hasOnboarded=False)
        self.open()
        for page, button in WIZARD:
            self.wait_line(f"progress bar: {page} / 6")
            self.wait_line(f"push button: {button}")
            elements = self.assert_all_is_said()
            self.assertEqual(sum(element.role == "heading" for element in elements), 1)
            self.press_button(button)
        wait_until(lambda: self.stored().get("hasOnboarded"), "the wizard is done")


class UnpluggingTest(AccessibilityCase):
    """In a world of its own, whose cameras are others afterwards."""

    def test_a_camera_that_is_unplugged_leaves_a_sign_until_it_is_back(self):
        self.start()
        self.open()
        self.wait_line("panel: Camera: Looks good")
        pids = Path(os.environ["VIRTUAL_DESKTOP_PIDS"])
        cameras = ("front_camera", "desk_camera")
        commands = [(Path("/proc") / (pids / name).read_text().strip() / "cmdline").read_bytes().decode().split("\0")[:-1]
                    for name in cameras]
        for name in cameras:
            os.kill(int((pids / name).read_text()), signal.SIGTERM)
        self.wait_line("label: No camera found")
        self.assert_all_is_said()
        for command in commands:
            os.posix_spawn(command[0], command, os.environ)
        self.wait_line("panel: Camera: Looks good")
        without_picture = {"label: No camera found", "label: Camera Preview"}
        wait_until(lambda: (lines := self.lines()) and without_picture.isdisjoint(lines), "there is a picture again",
                   seen=lambda: self.lines())


if __name__ == "__main__":
    unittest.main()
