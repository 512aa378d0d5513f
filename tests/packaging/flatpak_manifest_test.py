"""Checks what can be known of the Flatpak manifest without building it."""

import re
import unittest
from pathlib import Path

import yaml

SOURCE = Path(__file__).resolve().parents[2]
IDENTIFIER = "com.curtain.Curtain"
PATH = SOURCE / f"packaging/flatpak/{IDENTIFIER}.yml"
# What gives away the sandbox.
TOO_MUCH = {"--filesystem=host", "--filesystem=home", "--device=all", "--socket=session-bus", "--socket=system-bus",
            "--share=network", "--talk-name=org.freedesktop.Flatpak"}
ARGUMENT = re.compile(
    r"--(socket=(x11|pulseaudio)|share=ipc|filesystem=xdg-[a-z]+(/[\w.-]+)?(:ro)?|(system-)?talk-name=[A-Za-z][\w-]*(\.[A-Za-z][\w-]*)+)")


class FlatpakManifestTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.manifest = yaml.safe_load(PATH.read_text())

    def test_has_the_identifier_of_the_desktop_entry_and_the_metainfo(self):
        self.assertEqual(self.manifest["id"], IDENTIFIER)
        self.assertTrue((SOURCE / f"packaging/{IDENTIFIER}.desktop.in").exists())
        self.assertIn(f"<id>{IDENTIFIER}</id>", (SOURCE / f"packaging/{IDENTIFIER}.metainfo.xml.in").read_text())
        self.assertIn(f"Name={IDENTIFIER}\n", (SOURCE / f"packaging/{IDENTIFIER}.service.in").read_text())
        self.assertEqual(self.manifest["command"], "curtain")

    def test_names_a_runtime_and_its_sdk(self):
        self.assertEqual((self.manifest["runtime"], self.manifest["sdk"]), ("org.kde.Platform", "org.kde.Sdk"))
        # A number would lose its last zero.
        self.assertIsInstance(self.manifest["runtime-version"], str)

    def test_asks_for_no_more_than_it_uses(self):
        arguments = self.manifest["finish-args"]
        self.assertEqual(len(arguments), len(set(arguments)))
        self.assertEqual(set(arguments) & TOO_MUCH, set())
        for argument in arguments:
            self.assertRegex(argument, f"^{ARGUMENT.pattern}$")
        code = "".join(path.read_text() for pattern in ("*.cpp", "*.h") for path in (SOURCE / "platform").rglob(pattern))
        for argument in arguments:
            if "talk-name=" in argument:
                self.assertTrue(f'"{argument.partition("=")[2]}"' in code, argument)

    def test_builds_curtain_from_this_tree_last(self):
        *_, curtain = self.manifest["modules"]
        self.assertEqual((curtain["name"], curtain["buildsystem"]), ("curtain", "cmake-ninja"))
        source, = curtain["sources"]
        self.assertEqual((source["type"], (PATH.parent / source["path"]).resolve()), ("dir", SOURCE))
        self.assertIn("-DCURTAIN_BUILD_TESTS=OFF", curtain["config-opts"])


if __name__ == "__main__":
    unittest.main()
