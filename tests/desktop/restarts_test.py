"""Checks that privacy mode stays truly on while parts of the desktop break, restart or are replaced.

It runs with --session x11-bare --tray none --media and brings its own window managers and trays.
"""

import contextlib
import os
import signal
import subprocess
import unittest
from pathlib import Path

from desktop_case import MOUSEPAD, XTERM, DesktopCase, Program, TimedOut, Window, stays, wait_until, write_preferences

PIDS = Path(os.environ["VIRTUAL_DESKTOP_PIDS"])
TRAYER = ("trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28")
NO_WINDOW_MANAGER = ("Curtain: no window manager looks after the windows of this session, so apps cannot be hidden until "
                     "one does\n")
WINDOW_MANAGERS = {"openbox": ("openbox",), "xfwm4": ("xfwm4", "--compositor=on")}


class RestartCase(DesktopCase):
    def setUp(self):
        self.services = []
        # After the programs, which need them in order to end.
        self.addCleanup(self.end_services)
        super().setUp()
        self.start_tray()

    def start_service(self, *argv):
        """A part of the desktop: it outlives the programs of the test."""
        service = Program(argv, os.environ, self.scratch / f"service-{len(self.services)}")
        self.services.append(service)
        return service

    def end_services(self):
        for service in self.services:
            service.kill()
            service.wait()
        self.services.clear()

    def start_tray(self):
        tray = self.start_service(*TRAYER)
        wait_until(lambda: self.display.selection_owner("_NET_SYSTEM_TRAY_S0"), "there is a tray")
        return tray

    def start_window_manager(self, name, *options):
        service = self.start_service(*WINDOW_MANAGERS[name], *options)
        self.wait_managed()
        return service

    def wait_managed(self):
        """Until a window that is opened is looked after."""
        wait_until(lambda: self.display.selection_owner("WM_S0"), "there is a window manager")
        probes = []

        def are_listed():
            # While openbox starts, it leaves an event lying until there is another one.
            self.display.touch_root()
            self.assertIsNone(self.services[-1].poll(), self.services[-1].complaints())
            return any(self.desktop.windows_of(probe) for probe in probes)

        def is_managed():
            # One that is opened while a window manager takes over may be overlooked for good.
            probes.append(self.start_urxvt())
            with contextlib.suppress(TimedOut):
                return wait_until(are_listed, "a window is looked after", 5)
            return False
        wait_until(is_managed, "windows are looked after", 60)
        # Not before: some window managers end with an error when a window ends while they start.
        for probe in probes:
            probe.terminate()
            probe.wait()
        wait_until(lambda: not are_listed(), "the probes are gone")


class WindowManagerTest(RestartCase):
    def go_private(self, window_manager):
        self.first = self.start_window_manager(window_manager)
        self.public = self.open_mousepad()
        self.xterm = self.open_xterm()
        self.start_curtain(XTERM)
        self.toggle()
        self.wait_hidden(self.xterm)

    def assert_private(self):
        self.wait_hidden(self.xterm)
        self.assert_stays_hidden(self.xterm)
        self.wait_shown(self.public)
        self.assert_hides_again(self.xterm)
        # It looks for a window manager some time after its start, which may have been while there was none; now it knows this one.
        if self.curtain.complaints() == NO_WINDOW_MANAGER:
            self.expected_complaints = NO_WINDOW_MANAGER
        self.toggle()
        self.wait_shown(self.xterm)
        self.assert_stays_shown(self.xterm, self.public)

    def each(self, run):
        for name in WINDOW_MANAGERS:
            with self.subTest(name):
                self.go_private(name)
                self.assertEqual(self.curtain.complaints(), "")
                run(name)
                self.assert_private()
                self.end_curtain()
                self.expected_complaints = ""
                self.desktop.end_programs()
                self.end_services()
                self.start_tray()

    def test_a_window_manager_that_is_ended_and_started_again(self):
        def run(name):
            self.first.terminate()
            self.first.wait()
            self.start_window_manager(name)
        self.each(run)

    def test_a_window_manager_that_is_killed_and_started_again(self):
        def run(name):
            self.first.kill()
            self.first.wait()
            self.start_window_manager(name)
        self.each(run)

    def test_a_window_manager_that_is_replaced_by_another(self):
        def run(name):
            other = next(other for other in WINDOW_MANAGERS if other != name)
            self.start_service(*WINDOW_MANAGERS[other], "--replace")
            self.first.wait(20)
            self.wait_managed()
        self.each(run)


class NoWindowManagerTest(RestartCase):
    def test_says_once_that_there_is_none_and_works_with_one_that_comes_later(self):
        self.expected_complaints = NO_WINDOW_MANAGER
        self.start_curtain(XTERM)
        wait_until(self.curtain.complaints, "it says what is missing", 40)
        self.toggle()
        self.toggle()
        self.start_window_manager("openbox")
        xterm = self.open_xterm()
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)


class PartsTest(RestartCase):
    """The parts around an ordinary window manager, with everything of Curtain at work."""

    def setUp(self):
        super().setUp()
        self.start_window_manager("openbox")
        self.xterm = self.open_xterm()
        write_preferences(self.settings, targetApps=[XTERM, MOUSEPAD], hasOnboarded=True, autoDetectEnabled=False,
                          notificationsMarkedHandled=True)
        self.start_curtain()

    def go_private(self):
        self.toggle()
        self.wait_hidden(self.xterm)

    def assert_private(self):
        self.assert_stays_hidden(self.xterm)
        self.assert_hides_again(self.xterm)
        self.toggle()
        self.wait_shown(self.xterm)

    def test_a_tray_that_is_killed(self):
        opened = wait_until(self.still_picture_of_icon, "the icon is at rest in the tray")
        self.go_private()
        closed = wait_until(lambda: (picture := self.still_picture_of_icon()) != opened and picture, "the icon is at rest, closed")
        self.services[0].kill()
        self.services[0].wait()
        self.assert_hides_again(self.xterm)
        self.start_tray()
        wait_until(lambda: self.still_picture_of_icon() == closed, "the icon is back, with the curtain closed")
        self.assert_private()

    def still_picture_of_icon(self):
        icon = self.desktop.tray_icon()
        area = icon and icon.geometry
        picture = area and self.display.pixels(area)
        return picture if picture and stays(lambda: self.display.pixels(area) == picture) else None

    def test_a_notification_daemon_that_is_killed_and_replaced(self):
        mousepad = self.open_mousepad()
        self.go_private()
        self.wait_hidden(mousepad)
        for part in self.processes("dunst"):
            os.kill(part, signal.SIGKILL)
        wait_until(lambda: not self.has_owner("org.freedesktop.Notifications"), "nobody shows notices")
        self.assert_hides_again(self.xterm)
        self.start_service("dunst")
        wait_until(lambda: self.has_owner("org.freedesktop.Notifications"), "there is another daemon")
        self.assert_hides_again(mousepad)
        wait_until(self.notice, "a notice is shown")
        self.toggle()
        self.wait_shown(self.xterm, mousepad)

    def notice(self):
        return any(Window(self.display, window).window_class == ["Dunst", "Dunst"] and self.display.is_viewable(window)
                   for window in self.display.children(self.display.root))

    @staticmethod
    def has_owner(name):
        return "true" in subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
             "org.freedesktop.DBus.NameHasOwner", name], check=True, text=True, capture_output=True).stdout

    def processes(self, name):
        """Those of this virtual desktop that are not this test's."""
        return [int(path.read_text()) for path in PIDS.iterdir() if path.name == name]

    def test_sound_and_camera_servers_that_are_killed(self):
        # A second start makes the first one open.
        self.assertEqual(self.launch_curtain().wait(30), 0)
        wait_until(self.uses_microphone, "the microphone is in use")
        self.go_private()
        servers = ("pipewire", "wireplumber", "pipewire-pulse")
        for name in servers:
            for part in self.processes(name):
                os.kill(part, signal.SIGKILL)
        self.assert_hides_again(self.xterm)
        # Each needs the one before.
        self.start_service("pipewire")
        wait_until(lambda: self.output_of("pw-cli", "info", "0"), "PipeWire is back")
        self.start_service("wireplumber")
        wait_until(lambda: "WirePlumber" in self.output_of("pw-cli", "list-objects", "Client"), "its manager is back",
                   seen=lambda: self.output_of("pw-cli", "list-objects", "Client"))
        self.start_service("pipewire-pulse")
        wait_until(lambda: self.output_of("pactl", "info"), "the sound server is back")
        wait_until(self.add_microphone, "there is a microphone again")
        # Not every manager prefers one that says nothing of its priority to listening to the speakers.
        wait_until(self.choose_microphone, "it is the one to use")
        wait_until(self.uses_microphone, "the microphone is in use again", 30)
        self.assert_private()

    def add_microphone(self):
        return self.output_of("pactl", "load-module", "module-null-sink", "media.class=Audio/Source/Virtual",
                              "sink_name=replacement", "channel_map=mono")

    def choose_microphone(self):
        self.output_of("pactl", "set-default-source", "replacement")
        return self.output_of("pactl", "get-default-source") == "replacement\n"

    def uses_microphone(self):
        return 'application.name = "Curtain"' in self.output_of("pactl", "list", "source-outputs")

    @staticmethod
    def output_of(*argv):
        """Nothing if it fails."""
        done = subprocess.run(["timeout", "5", *argv], check=False, text=True, capture_output=True)
        return done.stdout if done.returncode == 0 else ""


if __name__ == "__main__":
    unittest.main()
