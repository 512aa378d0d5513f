"""Checks what a Curtain that is killed leaves behind, and that the next one gets along with it.

They need the microphone of scripts/virtual-desktop.
"""

import os
import re
import subprocess
import unittest
from pathlib import Path

from desktop_case import XTERM, DesktopCase, Program, stays, wait_until, write_preferences

POPOVER = (700, 618)
SURFACE_COLOUR = "#f4f5f8"

# Places in the popover.
SURFACE = (8, 300)
FIX_EVERYTHING = (241, 582)
RESTORE = (589, 582)
RECORD = (613, 431)


class CrashCase(DesktopCase):
    def setUp(self):
        super().setUp()
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False,
                          notificationsMarkedHandled=True)

    def kill_curtain(self):
        curtain, self.curtain = self.curtain, None
        curtain.kill()
        curtain.wait()
        self.assertEqual(curtain.complaints(), "")
        wait_until(lambda: not self.desktop.tray_icon(), "the tray icon is gone")

    def hide(self, *windows):
        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        self.toggle()
        self.wait_hidden(*windows)


class ResumeTest(CrashCase):
    def journals(self):
        return sorted(Path(os.environ["XDG_RUNTIME_DIR"]).glob("curtain-*.:*"))

    def test_the_next_one_takes_privacy_mode_up_and_gives_back_what_was_hidden(self):
        users, xterm = self.open_xterm(), self.open_xterm(x=500)
        users.minimise()
        self.hide(xterm)
        for _ in range(2):
            self.kill_curtain()
            self.assertEqual([path.stat().st_mode & 0o777 for path in self.journals()], [0o600, 0o600])
            self.start_curtain()
            wait_until(self.desktop.tray_icon, "the tray icon is there")
            self.assert_stays_hidden(xterm, users)
            self.assert_hides_again(xterm)
        later = self.open_xterm(x=200)
        self.wait_hidden(later)
        self.toggle()
        self.wait_shown(xterm, later)
        self.assert_stays_shown(xterm, later)
        self.assertTrue(users.is_hidden)
        self.assertEqual(self.journals(), [])

    def test_what_came_up_while_none_ran_is_hidden_at_the_next_start(self):
        xterm = self.open_xterm()
        self.hide(xterm)
        self.kill_curtain()
        xterm.raise_from_task_list()
        self.wait_shown(xterm)
        later = self.open_xterm(x=500)
        self.start_curtain()
        self.wait_hidden(xterm, later)
        self.toggle()
        self.wait_shown(xterm, later)

    def test_privacy_mode_that_no_start_got_past_is_left_alone(self):
        xterm = self.open_xterm()
        self.hide(xterm)
        self.kill_curtain()
        for path in self.journals():
            path.write_text(re.sub(r"(startsUnderWay\W+)0", r"\g<1>2", path.read_text()))
        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        self.assert_stays_hidden(xterm)
        xterm.raise_from_task_list()
        self.wait_shown(xterm)
        self.assert_stays_shown(xterm)

    def test_a_journal_of_another_session_or_process_is_not_believed(self):
        xterm = self.open_xterm()
        self.hide(xterm)
        self.kill_curtain()
        for path in self.journals():
            path.write_text("another " + path.read_text())
        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        self.toggle()
        self.toggle()
        self.assert_stays_hidden(xterm)

    def test_after_quit_the_next_one_leaves_hidden_what_it_did_not_hide(self):
        xterm = self.open_xterm()
        self.hide(xterm)
        self.end_curtain()
        self.assert_stays_hidden(xterm)

        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        self.assert_stays_hidden(xterm)
        self.toggle()
        self.toggle()
        self.assert_stays_hidden(xterm)
        xterm.raise_from_task_list()
        self.wait_shown(xterm)
        self.assert_stays_shown(xterm)
        self.toggle()
        self.wait_hidden(xterm)
        self.toggle()
        self.wait_shown(xterm)


class CrashTest(CrashCase):
    def popover(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size == POPOVER and self.display.is_viewable(window.id)), None)

    def open_popover(self):
        """A second start makes the first one open."""
        self.assertEqual(self.launch_curtain().wait(30), 0)
        popover = wait_until(self.popover, "the popover is open")
        wait_until(lambda: self.colour(popover, SURFACE) == SURFACE_COLOUR, "the popover is drawn",
                   seen=lambda: self.colour(popover, SURFACE))
        wait_until(lambda: self.desktop.active_window == popover, "the popover has the keyboard")
        return popover

    def colour(self, popover, place):
        area = popover.geometry
        return area and self.display.colour(area.x + place[0], area.y + place[1])

    def click(self, popover, place):
        area = popover.geometry
        subprocess.run(["xdotool", "mousemove", str(area.x + place[0]), str(area.y + place[1]), "click", "1"], check=True)

    def test_a_hidden_app_stays_in_the_task_list_and_comes_back_as_it_was(self):
        small, large, elsewhere = self.open_xterm(), self.open_xterm(x=500), self.open_xterm(x=200)
        for state in ("MAXIMIZED_VERT", "MAXIMIZED_HORZ"):
            large.ask_for_state(state)
            wait_until(lambda: large.has_state(state), "it is large")
        elsewhere.send_to_workspace(2)
        windows = (small, large, elsewhere)
        wait_until(lambda: stays(lambda seen=[window.geometry for window in windows]:
                                 [window.geometry for window in windows] == seen), "the windows are at rest")
        geometries = {window: window.geometry for window in windows}
        self.hide(*windows)
        self.kill_curtain()

        self.assert_stays_hidden(*windows)
        self.assertLessEqual(set(windows), set(self.desktop.windows()))
        for window in windows:
            self.assertFalse(window.has_state("SKIP_TASKBAR") or window.has_state("SKIP_PAGER"))
        for window in (small, large):
            window.raise_from_task_list()
            self.wait_shown(window)
            wait_until(lambda: self.desktop.active_window == window, "it has the keyboard")
        self.assertTrue(large.has_state("MAXIMIZED_VERT") and large.has_state("MAXIMIZED_HORZ"))
        self.assertEqual(elsewhere.workspace, 2)
        self.desktop.workspace = 2
        self.addCleanup(setattr, self.desktop, "workspace", 0)
        elsewhere.raise_from_task_list()
        self.wait_shown(elsewhere)
        self.assertEqual(elsewhere.workspace, 2)
        self.wait_geometry(geometries)
        self.assert_stays_shown(*windows)

    def test_the_recording_that_was_left_is_gone_at_the_next_start(self):
        recording = Path(os.environ["XDG_RUNTIME_DIR"]) / "curtain-mic-test.caf"
        self.start_curtain()
        self.click(self.open_popover(), RECORD)
        wait_until(recording.exists, "the echo test records")
        self.kill_curtain()
        self.assertTrue(recording.exists())
        self.start_curtain()
        wait_until(lambda: not recording.exists(), "the recording is gone")

    # Desktop icons

    def start_service(self, *argv):
        service = Program(argv, os.environ, self.scratch / Path(argv[0]).name)
        self.addCleanup(service.wait)
        self.addCleanup(service.kill)
        return service

    def xfconf(self, *arguments):
        return subprocess.run(["xfconf-query", "-c", "xfce4-desktop", "-p", *arguments], check=False, text=True,
                              capture_output=True).stdout.strip()

    def has_owner(self, name):
        return "true" in subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
             "org.freedesktop.DBus.NameHasOwner", name], check=True, text=True, capture_output=True).stdout

    def test_desktop_icons_that_were_hidden_can_be_restored_by_the_next_one(self):
        description = Path("/usr/share/dbus-1/services/org.xfce.Xfconf.service").read_text()
        self.start_service(re.search(r"^Exec=(.*)$", description, re.MULTILINE).group(1))
        wait_until(lambda: self.has_owner("org.xfce.Xfconf"), "the settings of Xfce are there")
        style = "/desktop-icons/style"
        self.xfconf(style, "-n", "-t", "int", "-s", "1")
        self.start_service("xfdesktop")
        wait_until(lambda: self.has_owner("org.xfce.xfdesktop"), "the desktop is there", 30)

        self.start_curtain()
        self.click(self.open_popover(), FIX_EVERYTHING)
        wait_until(lambda: self.xfconf(style) == "0", "the icons are hidden", seen=lambda: self.xfconf(style))
        self.kill_curtain()
        self.assertEqual(self.xfconf(style), "0")

        self.start_curtain()
        self.assertEqual(self.xfconf(style), "0")
        self.click(self.open_popover(), RESTORE)
        wait_until(lambda: self.xfconf(style) == "1", "the icons are back, as their user had chosen them",
                   seen=lambda: self.xfconf(style))


if __name__ == "__main__":
    unittest.main()
