"""Checks that Curtain starts, lives and ends well where something around it is missing, broken or going away."""

import re
import resource
import signal
import socket
import time
import unittest
from pathlib import Path

from desktop_case import SECONDS_TO_END, SHORTCUT_MASK, XTERM, DesktopCase, Display, Key, wait_until

NOT_SAVED = "Curtain: the settings cannot be saved in {} (Not a directory); changes last until Curtain ends\n"
NO_BUS = "Curtain: there is no session bus, so the icon shows only in trays of X windows\n"
NAME_TAKEN = "Curtain: another program has its name on the session bus, so menus and scripts do not reach this one\n"
# In the toolkit's words.
SERVER_GONE = "The X11 connection broke (error 1). Did the X11 server die?\n"


class StartTest(DesktopCase):
    def assert_works(self, *private_apps, **environment):
        """Starts Curtain, and the shortcut hides and shows a private app."""
        xterm = self.open_xterm()
        self.start_curtain(*private_apps, **environment)
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)

    def assert_refuses(self, sentence, **environment):
        start = time.monotonic()
        curtain = self.launch_curtain(**environment)
        self.assertEqual(curtain.wait(SECONDS_TO_END), 1)
        self.assertLess(time.monotonic() - start, SECONDS_TO_END)
        self.assertEqual((curtain.output(), curtain.complaints()), ("", sentence + "\n"))

    def test_says_that_there_is_no_display(self):
        sentence = ("Curtain: there is no X display to show itself on (DISPLAY is not set); "
                    "start it from within a desktop session")
        self.assert_refuses(sentence, DISPLAY=None)
        self.assert_refuses(sentence, DISPLAY="")
        for platform in ("xcb", "wayland", "wayland;xcb"):
            self.assert_refuses(sentence, DISPLAY=None, QT_QPA_PLATFORM=platform)

    def test_says_that_the_display_does_not_answer(self):
        for name in (":4711", "nonsense"):
            self.assert_refuses(f"Curtain: the X display {name} does not answer; "
                                "start Curtain from within a desktop session", DISPLAY=name)

    def test_works_on_x_beside_wayland(self):
        self.assert_works(XTERM, WAYLAND_DISPLAY="wayland-0", XDG_SESSION_TYPE="wayland")

    def test_stays_on_x_where_other_programs_are_to_prefer_wayland(self):
        for platform in ("wayland", "wayland;xcb"):
            with self.subTest(platform):
                self.assert_works(XTERM, QT_QPA_PLATFORM=platform)
                self.end_curtain()
                self.desktop.end_programs()

    def test_works_without_a_session_bus(self):
        empty = self.scratch / "run"
        empty.mkdir(mode=0o700)
        addresses = {
            "nobody listens": {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={empty}/nobody"},
            "no address": {"DBUS_SESSION_BUS_ADDRESS": "nonsense"},
            "not set": {"DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": str(empty)},
        }
        self.expected_complaints = NO_BUS
        for name, environment in addresses.items():
            with self.subTest(name):
                self.assert_works(XTERM, **environment)
                wait_until(self.desktop.tray_icon, "the tray icon is there")
                self.end_curtain()
                self.desktop.end_programs()

    def test_leaves_no_dump_of_its_memory(self):
        self.start_curtain()
        limits = Path(f"/proc/{self.curtain.pid}/limits").read_text()
        soft = re.search(r"^Max core file size +(\w+)", limits, re.MULTILINE)[1]
        # With 0 it would still go to a program that collects dumps.
        self.assertIn(soft, {"1", "0"} if resource.getrlimit(resource.RLIMIT_CORE)[1] == 0 else {"1"})

    def hold_name(self):
        """A program that has Curtain's name on the bus."""
        code = ("from gi.repository import Gio, GLib; "
                "Gio.bus_own_name(Gio.BusType.SESSION, 'com.curtain.Curtain', 0, None, None, None); GLib.MainLoop().run()")
        holder = self.desktop.start("/usr/bin/python3", "-c", code)
        wait_until(self.is_on_bus, "the name is taken", seen=holder.complaints)
        return holder

    def test_works_beside_another_program_that_has_its_name(self):
        self.hold_name()
        self.expected_complaints = NAME_TAKEN
        self.assert_works(XTERM)
        self.assert_refuses(NAME_TAKEN + "Curtain: it runs already on this display, and without its name on the session bus "
                            "it cannot be asked to open")

    def test_starts_once_without_a_session_bus(self):
        run = self.scratch / "run"
        run.mkdir(mode=0o700)
        without_bus = {"DBUS_SESSION_BUS_ADDRESS": "nonsense", "XDG_RUNTIME_DIR": str(run)}
        self.expected_complaints = NO_BUS
        xterm = self.open_xterm()
        self.start_curtain(XTERM, **without_bus)
        self.assert_refuses("Curtain: it runs already on this display, and without a session bus it cannot be asked to open",
                            **without_bus)
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)
        self.curtain.kill()
        self.curtain.wait()
        self.start_curtain(**without_bus)

    def test_does_not_wait_for_a_session_bus_that_says_nothing(self):
        path = self.scratch / "silent"
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(str(path))
            listener.listen()
            self.expected_complaints = NO_BUS
            self.assert_works(XTERM, DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}")
            wait_until(self.desktop.tray_icon, "the tray icon is there")
            self.end_curtain()

    def test_leaves_a_damaged_settings_file_as_it_is(self):
        xterm = self.open_xterm()
        for damage in (b"{\"targetApps\": [", b"", b"\xff\xfe\x00", b"[1, 2]"):
            with self.subTest(damage):
                path = self.write_private_apps(XTERM)
                path.write_bytes(damage)
                self.start_curtain()
                self.toggle()
                self.assert_stays_shown(xterm)
                self.toggle()
                self.end_curtain()
                self.assertEqual(path.read_bytes(), damage)
                copies = [entry.read_bytes() for entry in path.parent.glob(path.name + ".damaged-*")]
                self.assertEqual(copies.count(damage), 1, copies)

    def test_takes_up_settings_that_were_mended(self):
        xterm = self.open_xterm()
        path = self.write_private_apps(XTERM)
        sound = path.read_bytes()
        path.write_bytes(b"{")
        self.start_curtain()
        path.write_bytes(sound)
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)

    def test_lives_where_settings_cannot_be_saved(self):
        file = self.scratch / "file"
        file.touch()
        xterm = self.open_xterm()
        self.expected_complaints = NOT_SAVED.format(f"{file}/settings/curtain")
        # The virtual desktop's GLib keeps its own settings there too, and complains of it when it comes to that.
        self.start_curtain(XDG_CONFIG_HOME=f"{file}/settings", GSETTINGS_BACKEND="memory")
        self.toggle()
        self.assert_stays_shown(xterm)

    def test_a_second_start_leaves_everything_to_the_first(self):
        xterm = self.open_xterm()
        self.write_private_apps(XTERM)
        self.start_curtain()
        second = self.launch_curtain()
        self.assertEqual(second.wait(30), 0)
        self.assertEqual(second.complaints(), "")
        self.desktop.window_of(self.curtain)
        self.toggle()
        self.wait_hidden(xterm)
        self.assert_stays_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)

    def test_starts_for_the_first_time(self):
        self.start_curtain()

        def names():
            return {path.name for path in (self.settings / "curtain").glob("*")}
        # It waits for its shortcut before it has written it.
        wait_until(lambda: names() == {"KeyboardShortcuts_togglePrivacy"}, "the shortcut is stored, and nothing else", seen=names)


class EndTest(DesktopCase):
    def test_ends_in_good_order_as_soon_as_it_is_on_the_bus(self):
        self.curtain = self.launch_curtain()
        wait_until(self.is_on_bus, "Curtain is on the bus")
        self.end_curtain()

    def test_ends_on_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                self.start_curtain()
                wait_until(self.desktop.tray_icon, "the tray icon is there")
                self.curtain.send_signal(number)
                self.assertEqual(self.curtain.wait(SECONDS_TO_END), 0)
                wait_until(lambda: not self.desktop.tray_icon(), "the tray icon is gone")
                self.end_curtain()

    def test_ends_at_once(self):
        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        start = time.monotonic()
        self.end_curtain()
        self.assertLess(time.monotonic() - start, 2)

    def test_ends_with_its_display(self):
        server, name = self.start_x_server("-noreset")
        display = Display(name)
        self.addCleanup(display.close)
        curtain = self.launch_curtain(DISPLAY=name)
        wait_until(lambda: display.is_key_taken(Key.H, SHORTCUT_MASK), "Curtain waits for its shortcut")
        server.kill()
        self.assertEqual(curtain.wait(SECONDS_TO_END), 1)
        self.assertEqual(curtain.complaints(), SERVER_GONE)


if __name__ == "__main__":
    unittest.main()
