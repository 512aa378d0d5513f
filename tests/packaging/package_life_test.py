"""Installs the Debian package into a folder of its own, upgrades and removes it, and uses the program meanwhile.

usage: package_life_test.py OLDER NEWER [unittest options]

OLDER and NEWER are folders with a package each. Runs within scripts/virtual-desktop.
"""

import json
import os
import subprocess
import sys
import unittest
from pathlib import Path

from desktop_case import XTERM, DesktopCase, Key, wait_until
from desktop_driver import CONTROL_MASK, SHIFT_MASK
from installed_files import files_below

OLDER = PACKAGE = None  # main() fills them in
F9 = 75
# As F9 with Ctrl and Shift is stored.
SHORTCUT = {"carbonKeyCode": 101, "carbonModifiers": 4096 + 512}


class PackageLifeTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.root = self.scratch / "root"
        database = self.root / "var/lib/dpkg"
        for name in ("info", "updates"):
            (database / name).mkdir(parents=True)
        (database / "status").touch()

    def dpkg(self, *arguments):
        """In the folder, where nothing that the package depends on is installed."""
        return subprocess.run(["dpkg", f"--root={self.root}", f"--log={self.scratch}/dpkg.log", "--force-depends",
                               "--force-not-root", "--force-bad-path", *arguments],
                              check=True, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE).stdout

    def version(self):
        return subprocess.run(["dpkg-query", f"--admindir={self.root}/var/lib/dpkg", "--show", "--showformat=${Version}",
                               "curtain"], check=True, text=True, stdout=subprocess.PIPE).stdout

    def installed_files(self):
        return {name for name in files_below(self.root) if not name.startswith("var/lib/dpkg/")}

    def stored(self):
        return {path.name: path.read_bytes() for path in (self.settings / "curtain").iterdir()}

    def launch_curtain(self, **environment):
        return self.desktop.start(str(self.root / "usr/bin/curtain"),
                                  environment={"XDG_CONFIG_HOME": str(self.settings)} | environment)

    def wait_until_ready(self, curtain):
        wait_until(lambda: self.display.is_key_taken(F9, CONTROL_MASK | SHIFT_MASK), "Curtain waits for the chosen shortcut")

    def toggle(self):
        self.display.strike(Key.CONTROL, Key.SHIFT, F9)

    def assert_works(self, window):
        self.toggle()
        self.wait_hidden(window)
        self.toggle()
        self.wait_shown(window)

    def test_an_upgrade_keeps_what_the_user_has_set(self):
        self.dpkg("--install", OLDER)
        older = self.version()
        xterm = self.open_xterm()
        self.write_private_apps(XTERM)
        (self.settings / "curtain/KeyboardShortcuts_togglePrivacy").write_text(json.dumps(SHORTCUT))
        self.start_curtain()
        self.assert_works(xterm)
        before = self.stored()

        self.dpkg("--install", PACKAGE)
        self.assertNotEqual(self.version(), older)
        # The one that was running still does.
        self.assert_works(xterm)
        self.end_curtain()

        self.start_curtain()
        self.assert_works(xterm)
        self.assertEqual(self.stored(), before)

    def test_leaves_nothing_but_what_the_user_has_set(self):
        self.dpkg("--install", PACKAGE)
        self.assertIn("usr/bin/curtain", self.installed_files())
        self.write_private_apps(XTERM)
        before = self.stored()
        self.dpkg("--remove", "curtain")
        self.assertEqual(self.installed_files(), set())
        self.dpkg("--purge", "curtain")
        self.assertEqual(files_below(self.root / "var/lib/dpkg/info") - {"format"}, set())
        self.assertEqual([path for path in self.root.rglob("*curtain*") if "var/lib/dpkg" not in str(path)], [])
        self.assertEqual(self.stored(), before)


if __name__ == "__main__":
    OLDER, PACKAGE = (str(max(Path(sys.argv.pop(1)).glob("*.deb"), key=os.path.getmtime)) for _ in range(2))
    unittest.main()
