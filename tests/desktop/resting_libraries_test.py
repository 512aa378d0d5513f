"""Checks which libraries Curtain maps while it only stands in the tray, and that its views come when they are asked for."""

import re
import shutil
import unittest
from pathlib import Path

from desktop_case import CURTAIN, DesktopCase, wait_until

DOCUMENT = Path(__file__).resolve().parents[2] / "docs/performance.md"
VIEWS = re.compile(r"curtain-views|libQt6(Quick|Qml|OpenGL|Network|Widgets)|libkrb5|libgssapi")


class RestingLibrariesTest(DesktopCase):
    def libraries(self):
        """Their names without the version, as they are mapped now."""
        maps = Path(f"/proc/{self.curtain.pid}/maps").read_text()
        return {match[1] for match in re.finditer(r"/([^/\n]+?)(?:-[\d.]+)?\.so(?:\.[\d.]+)?(?: \(deleted\))?$", maps, re.MULTILINE)}

    def views(self):
        return {name for name in self.libraries() if VIEWS.match(name)}

    def start_to_rest(self, program=CURTAIN):
        self.curtain = self.desktop.start(str(program), environment={"XDG_CONFIG_HOME": str(self.settings)})
        self.wait_until_ready(self.curtain)
        wait_until(self.desktop.tray_icon, "the icon is in the tray")

    def test_maps_views_when_the_first_is_opened(self):
        self.start_to_rest()
        self.assertEqual(self.views(), set())
        self.click_tray_icon()
        wait_until(lambda: self.desktop.windows_of(self.curtain), "a window is open")
        self.assertLess({"curtain-views", "libQt6Quick", "libQt6Qml"}, self.views())

    def test_maps_sound_when_the_microphone_is_asked_for(self):
        self.start_to_rest()
        sound = {"curtain-sound", "libpulse", "libsndfile"}
        self.assertEqual(self.libraries() & sound, set())
        self.click_tray_icon()
        wait_until(lambda: sound <= self.libraries(), "sound is there", seen=self.libraries)

    def test_every_library_at_rest_is_accounted_for(self):
        self.start_to_rest()
        documented = set(re.findall(r"`([^`\s]+)`", DOCUMENT.read_text()))
        self.assertLess({"libQt6Gui", "libQt6Core"}, self.libraries())
        self.assertEqual(self.libraries() - documented, set(), f"{DOCUMENT.name} does not name them")

    def test_opens_the_views_that_were_there_when_it_started(self):
        installation = self.scratch / "installation"
        shutil.copytree(Path(CURTAIN).parent.parent, installation)
        self.start_to_rest(installation / "bin/curtain")
        library = installation / "lib/curtain/curtain-views.so"
        library.unlink()
        library.write_text("another version")
        self.click_tray_icon()
        wait_until(lambda: self.desktop.windows_of(self.curtain), "a window is open")

    def test_goes_on_where_its_sound_cannot_be_loaded(self):
        installation = self.scratch / "installation"
        shutil.copytree(Path(CURTAIN).parent.parent, installation)
        library = installation / "lib/curtain/curtain-sound.so"
        library.write_text("what cannot be loaded")
        self.start_to_rest(installation / "bin/curtain")
        self.click_tray_icon()
        wait_until(lambda: self.desktop.windows_of(self.curtain), "a window is open")
        complaint = wait_until(lambda: self.curtain.complaints() if self.curtain.complaints().endswith("\n") else "", "it is told")
        self.assertRegex(complaint, r"^Curtain: its sound cannot be loaded, so no microphone can be checked: .*\n$")
        self.assertIsNone(self.curtain.poll(), "it goes on")
        self.expected_complaints = complaint

    def test_says_at_the_start_what_of_it_is_missing(self):
        for content, library in (("windows", "curtain-views.so"), ("sounds", "curtain-sound.so")):
            with self.subTest(library):
                installation = self.scratch / content
                shutil.copytree(Path(CURTAIN).parent.parent, installation)
                (installation / "lib/curtain" / library).unlink()
                curtain = self.desktop.start(str(installation / "bin/curtain"))
                self.assertEqual(curtain.wait(30), 1)
                self.assertRegex(curtain.complaints(), rf"^Curtain: its {content} are missing \(.*{library}.*\); install it again\n$")


if __name__ == "__main__":
    unittest.main()
