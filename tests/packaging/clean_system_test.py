"""Installs the Debian package with apt into a fresh system of the same distribution, uses it there, upgrades and removes it.

usage: clean_system_test.py OLDER NEWER

OLDER and NEWER are folders with a package each. The system is made from this machine's own package sources and is gone
afterwards. Nothing but what the package depends on is installed there; the desktop around it is a virtual one of this machine, in a
folder of that system.
"""

import json
import os
import platform
import shlex
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

VIRTUAL_DESKTOP = Path(__file__).resolve().parents[2] / "scripts/virtual-desktop"
INSIDE = "--inside"
NO_RECOMMENDS = "--no-install-recommends"
# The place of a switch in the settings, from the window's top left corner.
LAUNCH_AT_LOGIN = (391, 229)
WIZARD = (420, 460)
SETTINGS = (440, 430)
POPOVER = (700, 618)


def package_in(folder):
    return max(Path(folder).glob("*.deb"), key=os.path.getmtime)


def make_system(folders):
    """Returns the status of the tests, which run in the system while it is there."""
    places = [Path("/etc/apt/sources.list"), *sorted(Path("/etc/apt/sources.list.d").glob("*"))]
    sources = [str(place) for place in places if place.suffix in (".list", ".sources") and place.is_file() and place.read_text().strip()]
    packages = [str(package_in(folder).resolve()) for folder in folders]
    # mmdebstrap hands the system's folder to the hook.
    hook = shlex.join([sys.executable, "-B", str(Path(__file__).resolve()), INSIDE, *packages]) + ' "$1"'
    return subprocess.run(["mmdebstrap", "--quiet", "--variant=apt", "--format=null", f"--customize-hook={hook}",
                           platform.freedesktop_os_release()["VERSION_CODENAME"], "-", *sources], check=False).returncode


class CleanSystemTest(unittest.TestCase):
    def setUp(self):
        self.scratch = ROOT / "desktop/log"
        self.desktop = Desktop(self.scratch)
        self.addCleanup(self.desktop.display.close)
        self.addCleanup(self.desktop.end_programs)
        self.settings = ROOT / "desktop/home/.config/curtain"
        self.entry = ROOT / "desktop/home/.config/autostart/com.curtain.Curtain.desktop"
        # As the system sees it.
        self.environment = {name: value.replace(str(ROOT), "") for name, value in os.environ.items()}
        for package in (OLDER, NEWER):
            shutil.copy(package, ROOT)
        # While packages are installed it may only be read, and threads could not take their names.
        subprocess.run(["mount", "-o", "remount,rw", ROOT / "proc"], check=True)

    def run_there(self, *argv):
        done = subprocess.run(["chroot", ROOT, *argv], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def apt(self, *arguments):
        return self.run_there("env", "DEBIAN_FRONTEND=noninteractive", "apt-get", "-q", "-y", *arguments)

    def packages(self):
        return set(self.run_there("dpkg-query", "--show", "--showformat=${Package} ${Version}\n").splitlines())

    def stored(self):
        return {path.name: path.read_bytes() for path in [*self.settings.iterdir(), self.entry]}

    # Curtain

    def start(self):
        self.curtain = self.desktop.start("chroot", str(ROOT), "/usr/bin/curtain", environment=self.environment)
        wait_until(lambda: self.desktop.display.is_key_taken(Key.H, SHORTCUT_MASK), "Curtain waits for its shortcut")
        return wait_until(self.desktop.tray_icon, "the icon is in the tray")

    def act(self, action):
        """Through the session's bus, with the program that the package brings along."""
        self.run_there("env", f"DBUS_SESSION_BUS_ADDRESS={self.environment['DBUS_SESSION_BUS_ADDRESS']}", "gdbus", "call",
                       "--session", "--dest", "com.curtain.Curtain", "--object-path", "/com/curtain/Curtain", "--method",
                       "org.freedesktop.Application.ActivateAction", action, "[]", "{}")

    def wait_window(self, size):
        return wait_until(lambda: next((window for window in self.desktop.windows_of(self.curtain)
                                        if window.size == size), None), f"a window of {size}", 30)

    def wait_drawn(self, window):
        """Until there is more than one colour in it."""
        wait_until(lambda: window.geometry and len(set(memoryview(self.desktop.display.pixels(window.geometry)).cast("I"))) > 20,
                   f"{window} is drawn", 30)

    def quit(self):
        self.act("quit")
        self.assertEqual(self.curtain.wait(10), 0)
        self.assertEqual(self.curtain.complaints(), "")

    def switch_launch_at_login_on(self):
        self.act("settings")
        window = self.wait_window(SETTINGS)
        self.wait_drawn(window)
        x, y, _, _ = window.geometry
        subprocess.run(["xdotool", "mousemove", str(x + LAUNCH_AT_LOGIN[0]), str(y + LAUNCH_AT_LOGIN[1]), "click", "1"], check=True)
        wait_until(self.entry.exists, "the entry for the start with the session is written")
        self.assertIn('\nExec="/usr/bin/curtain"\n', self.entry.read_text())

    def test_from_the_installation_to_the_purge(self):
        bare = self.packages()
        self.apt("install", NO_RECOMMENDS, f"/{OLDER.name}")
        older = self.packages()
        self.start()
        self.act("open")
        self.wait_drawn(self.wait_window(WIZARD))
        self.switch_launch_at_login_on()
        self.quit()
        preferences = self.settings / "curtain.preferences.v1"
        preferences.write_text(json.dumps(json.loads(preferences.read_text()) | {"hasOnboarded": True, "language": "fr"}))
        before = self.stored()

        self.start()
        self.apt("install", NO_RECOMMENDS, f"/{NEWER.name}")
        self.assertEqual({line.split()[0] for line in self.packages() ^ older}, {"curtain"})
        # The one that was running still does.
        self.act("open")
        self.wait_drawn(self.wait_window(POPOVER))
        self.quit()

        self.start()
        self.act("open")
        self.wait_drawn(self.wait_window(POPOVER))
        self.quit()
        self.assertEqual(self.stored(), before)

        # What is recommended can be had.
        self.apt("--simulate", "install", "--install-recommends", "--reinstall", f"/{NEWER.name}")

        self.apt("purge", "curtain")
        for package in (OLDER, NEWER):
            (ROOT / package.name).unlink()
        left = self.run_there("find", "/", "-xdev", "-path", "/desktop", "-prune", "-o", "-iname", "*curtain*", "-print")
        self.assertEqual(left, "")
        self.assertEqual(self.stored(), before)
        self.apt("autoremove", "--purge")
        self.assertEqual(self.packages(), bare)


if __name__ == "__main__":
    if sys.argv[1] != INSIDE:
        sys.exit(make_system(sys.argv[1:]))
    OLDER, NEWER, ROOT = map(Path, sys.argv[2:5])
    if "VIRTUAL_DESKTOP_PIDS" not in os.environ:
        os.execv(VIRTUAL_DESKTOP, [VIRTUAL_DESKTOP, "--dir", ROOT / "desktop", "--", sys.executable, "-B", *sys.argv])
    sys.path.insert(0, str(VIRTUAL_DESKTOP.parent))
    from desktop_driver import SHORTCUT_MASK, Desktop, Key, wait_until
    unittest.TestCase.maxDiff = None
    unittest.main(argv=sys.argv[:1])
