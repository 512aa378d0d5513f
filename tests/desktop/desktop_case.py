"""What the desktop tests have in common: Curtain as installed, and other people's programs around it.

CURTAIN in the environment is the installed program. A test runs within scripts/virtual-desktop.
"""

import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
# pylint: disable=wrong-import-position,unused-import
from desktop_driver import (CHROMIUM, MOUSEPAD, SHORTCUT, SHORTCUT_MASK, SHORTCUT_MODIFIERS, XTERM, Desktop, Display,  # noqa
                            Key, Program, Rectangle, TimedOut, Window, chromium, stays, wait_until,
                            write_preferences)
from display_lock import DisplayLock  # noqa

CURTAIN = os.environ["CURTAIN"]
SECONDS_TO_END = 15
# The X server of a compositor does not keep others out while a grab is tried on it: Curtain could find its shortcut taken.
IS_WAYLAND = os.environ["DISPLAY"] != os.environ.get("VIRTUAL_DESKTOP_SCREEN", os.environ["DISPLAY"])

# Colours that tell the windows apart on a screenshot.
XTERM_COLOUR = "#2040a0"
URXVT_COLOUR = "#20a040"
# Of mousepad with the focus and without it, on Wayland.
EDITOR_COLOURS = ("#ffffff", "#fcfcfc")
PAGE_COLOUR = "#c04080"


class DesktopCase(unittest.TestCase):
    """Starts every test without programs and settings, and looks at the end that Curtain was quiet and ends well."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.settings = self.scratch / "settings"
        self.settings.mkdir()
        self.desktop = Desktop(self.scratch)
        self.display = self.desktop.display
        self.addCleanup(self.display.close)
        self.addCleanup(self.desktop.end_programs)
        self.addCleanup(self.let_all_keys_go)
        self.curtain = None
        self.expected_complaints = ""

    def run(self, result=None):
        """A check that fails shows the desktop as it was then, and what Curtain had written."""
        method = getattr(self, self._testMethodName)

        def with_the_desktop():
            try:
                method()
            except AssertionError as failure:
                failure.add_note(f"The desktop then:\n{self.desktop.describe()}")
                if self.curtain:
                    failure.add_note(f"Curtain, status {self.curtain.poll()}, had written: {self.curtain.complaints()!r}")
                raise
        setattr(self, self._testMethodName, with_the_desktop)
        return super().run(result)

    def tearDown(self):
        if self.curtain:
            self.end_curtain()

    def let_all_keys_go(self):
        self.display.release(*SHORTCUT, Key.SHIFT)
        for key, mask in ((Key.CAPS_LOCK, 2), (Key.NUM_LOCK, 16)):
            if self.display.modifiers() & mask:
                self.display.strike(key)
        wait_until(lambda: not self.display.modifiers(), "no modifier is on", seen=lambda: f"{self.display.modifiers():#x}")

    # Curtain

    def launch_curtain(self, **environment):
        """Without waiting for anything."""
        return self.desktop.start(CURTAIN, environment={"XDG_CONFIG_HOME": str(self.settings)} | environment)

    def write_private_apps(self, *apps):
        """Of somebody who has used Curtain before, whom it does not greet."""
        return write_preferences(self.settings, targetApps=apps, hasOnboarded=True)

    def start_curtain(self, *private_apps, **environment):
        """With what the settings hold already, if no private apps are named."""
        if private_apps:
            self.write_private_apps(*private_apps)
        self.curtain = self.launch_curtain(**environment)
        self.wait_until_ready(self.curtain)
        return self.curtain

    def wait_until_ready(self, curtain):
        def is_ready():
            self.assertIsNone(curtain.poll(), curtain.complaints())
            return self.is_on_bus() if IS_WAYLAND else self.display.is_key_taken(Key.H, SHORTCUT_MASK)
        wait_until(is_ready, "Curtain is on the bus" if IS_WAYLAND else "Curtain waits for its shortcut")

    def is_on_bus(self):
        question = ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
                    "org.freedesktop.DBus.NameHasOwner", "com.curtain.Curtain"]
        return "true" in subprocess.run(question, check=True, capture_output=True, text=True).stdout

    def end_curtain(self):
        curtain, self.curtain = self.curtain, None
        if curtain.poll() is None:
            curtain.send_signal(signal.SIGTERM)
        self.assertEqual(curtain.wait(SECONDS_TO_END), 0)
        self.assertEqual(curtain.complaints(), self.expected_complaints)

    def toggle(self):
        self.display.strike(*SHORTCUT)

    def click_tray_icon(self, button=1):
        place = self.desktop.place_of_tray_icon()
        subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2), str(place.y + place.height // 2), "click",
                        str(button)], check=True)

    def assert_hides_again(self, window):
        """While privacy mode is on, a private app is brought to the front, and away it goes."""
        self.display.watch_requests()

        def asks_to_hide():
            return self.display.has_request(window.id, "WM_CHANGE_STATE")
        # Curtain may ask twice: for its coming to the front, and for its return to the screen.
        wait_until(lambda: stays(lambda: not asks_to_hide()), "Curtain asks no more")
        window.raise_from_task_list()
        # It may be shown too shortly to be seen, but Curtain only asks to hide what it sees.
        wait_until(asks_to_hide, "Curtain asks to hide the window")
        self.wait_hidden(window)
        self.assert_stays_hidden(window)

    # Other people's programs

    def start_x_server(self, *options):
        """One beside that of the session; returns it and its display."""
        lock = DisplayLock()
        server = self.desktop.start("Xvfb", lock.display, "-displayfd", "1", "-nolisten", "tcp", *options)

        def end():
            server.kill()
            server.wait()
            lock.release()
        self.addCleanup(end)
        wait_until(lambda: server.output().strip(), "another X server is up", 60, server.complaints)
        return server, lock.display

    def pid_of_part(self, *names):
        """The process of a part with one of these names, of this virtual desktop, whose script is the parent of this process."""
        processes = subprocess.run(["ps", "-o", "pid=,comm=", "--ppid", str(os.getppid())], check=True, text=True,
                                   capture_output=True).stdout.splitlines()
        return next(int(pid) for pid, program in map(str.split, processes) if program in names)

    def start_xterm(self, x=60, y=80):
        return self.desktop.start("xterm", "-geometry", f"60x15+{x}+{y}", "-bg", XTERM_COLOUR, "-e", "cat")

    def start_urxvt(self, x=60, y=420):
        return self.desktop.start("urxvt", "-geometry", f"60x15+{x}+{y}", "-bg", URXVT_COLOUR, "+sb", "-e", "cat")

    def start_mousepad(self):
        """A second one only asks the first for a further window and ends."""
        # One whose settings outlive it asks whether to restore what was open when a test ended it.
        return self.desktop.start("mousepad", "--opening-mode=window", environment={"GSETTINGS_BACKEND": "memory"})

    def start_chromium(self):
        page = f"data:text/html,<title>page</title><body style='background:{PAGE_COLOUR.replace('#', '%23')}'>"
        return self.desktop.start(*chromium(self.scratch / "chromium", "--window-position=640,80",
                                            "--window-size=560,400", page))

    def open_xterm(self, **place):
        return self.desktop.window_of(self.start_xterm(**place))

    def open_urxvt(self, **place):
        return self.desktop.window_of(self.start_urxvt(**place))

    def open_mousepad(self, x=700, y=80, width=480, height=300):
        window = self.desktop.window_of(self.start_mousepad())
        window.place(x, y, width, height)
        return window

    def start_capture(self):
        """A program that records the screen."""
        return self.desktop.start("ffmpeg", "-nostdin", "-loglevel", "error", "-f", "x11grab", "-framerate", "15",
                                  "-video_size", "1280x800", "-i", os.environ["DISPLAY"], "-f", "null", "-")

    # What is to be seen

    def colour_of(self, window):
        """In the middle of its interior."""
        x, y, width, height = window.interior
        return self.display.colour(x + width // 2, y + height // 2)

    def wait_hidden(self, *windows):
        wait_until(lambda: all(window.is_hidden and not self.display.is_viewable(window.id) for window in windows),
                   f"{windows} are hidden", seen=self.desktop.describe)

    def wait_shown(self, *windows):
        wait_until(lambda: not any(window.is_hidden for window in windows) and
                   all(self.display.is_viewable(window.id) for window in windows), f"{windows} are shown",
                   seen=self.desktop.describe)

    def wait_geometry(self, geometries):
        """The window manager may let windows fly to where they belong."""
        wait_until(lambda: all(window.geometry == geometry for window, geometry in geometries.items()),
                   f"{geometries}", seen=lambda: [window.geometry for window in geometries])

    def wait_colour(self, window, colour):
        wait_until(lambda: self.colour_of(window) == colour, f"{window} shows {colour}", seen=lambda: self.colour_of(window))

    def assert_stays_shown(self, *windows):
        self.assertTrue(stays(lambda: not any(window.is_hidden for window in windows)), f"{windows} were hidden")

    def assert_stays_hidden(self, *windows):
        self.assertTrue(stays(lambda: all(window.is_hidden for window in windows)), f"{windows} were shown")
