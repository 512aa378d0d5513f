"""Checks how Curtain lives through the computer's sleep, and how it ends while everything is at work.

They need the microphone and the cameras of scripts/virtual-desktop. The login manager is the tests' own.
"""

import os
import signal
import subprocess
import unittest
from pathlib import Path

from desktop_case import (SECONDS_TO_END, SHORTCUT_MASK, XTERM, DesktopCase, Display, Key, stays, wait_until,
                          write_preferences)

LOGIN_MANAGER = Path(__file__).resolve().parents[1] / "support/login-manager"
SESSION_MANAGER = LOGIN_MANAGER.with_name("session-manager")
CAMERA_STATES = Path(os.environ["VIRTUAL_DESKTOP_PIDS"]).parent / "log/front_camera.states"
SERVER_GONE = "The X11 connection broke (error 1). Did the X11 server die?\n"
BUS = """<busconfig><type>system</type><listen>unix:path={}</listen><policy context="default"><allow user="*"/><allow own="*"/>
<allow send_destination="*"/><allow send_type="signal"/><allow receive_sender="*"/></policy></busconfig>"""


class SessionCase(DesktopCase):
    def write_settings(self):
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False,
                          notificationsMarkedHandled=True)

    def open_popover(self, **environment):
        """A second start makes the first one open."""
        self.assertEqual(self.launch_curtain(**environment).wait(30), 0)
        wait_until(self.uses_camera, "the camera is in use")
        wait_until(self.uses_microphone, "the microphone is in use")

    def uses_camera(self):
        states = CAMERA_STATES.read_text().split() if CAMERA_STATES.exists() else []
        return next((state == "streaming" for state in reversed(states) if state in ("streaming", "paused")), False)

    def uses_microphone(self):
        outputs = subprocess.run(["pactl", "list", "source-outputs"], check=True, text=True, capture_output=True).stdout
        return 'application.name = "Curtain"' in outputs

    def wait_shortcut_free(self):
        """The server may hear later than this test that Curtain has ended."""
        wait_until(lambda: not self.display.is_key_taken(Key.H, SHORTCUT_MASK), "the shortcut is free")

    def wait_released(self):
        wait_until(lambda: not self.uses_camera(), "the camera is let go")
        wait_until(lambda: not self.uses_microphone(), "the microphone is let go")


class SleepTest(SessionCase):
    def setUp(self):
        super().setUp()
        self.address = f"unix:path={self.scratch}/system-bus"
        configuration = self.scratch / "system-bus.conf"
        configuration.write_text(BUS.format(self.scratch / "system-bus"))
        self.start_service("dbus-daemon", "--nofork", f"--config-file={configuration}")
        wait_until((self.scratch / "system-bus").is_socket, "the system's bus is up")
        self.start_service(str(LOGIN_MANAGER))
        wait_until(lambda: self.ask_login_manager("Locks").returncode == 0, "the login manager is up",
                   seen=lambda: self.ask_login_manager("Locks").returncode)
        self.write_settings()
        self.start_curtain(DBUS_SYSTEM_BUS_ADDRESS=self.address)
        wait_until(lambda: self.locks() == 1, "Curtain holds sleep off", seen=lambda: self.locks())

    def start_service(self, *argv):
        service = self.desktop.start(*argv, environment={"DBUS_SYSTEM_BUS_ADDRESS": self.address})
        self.addCleanup(service.wait)
        self.addCleanup(service.kill)

    def ask_login_manager(self, method, *arguments):
        return subprocess.run(
            ["gdbus", "call", "--address", self.address, "--dest", "org.freedesktop.login1", "--object-path",
             "/org/freedesktop/login1", "--method", f"org.freedesktop.login1.Manager.{method}", *arguments],
            check=False, text=True, capture_output=True)

    def locks(self):
        return int(self.ask_login_manager("Locks").stdout.split()[1].rstrip(",)"))

    def announce(self, what, is_beginning):
        self.assertEqual(self.ask_login_manager("Announce", what, str(is_beginning).lower()).returncode, 0)

    def test_lets_camera_and_microphone_go_before_sleep_and_picks_them_up_afterwards(self):
        self.open_popover()
        self.announce("Sleep", True)
        wait_until(lambda: self.locks() == 0, "the computer may sleep", seen=lambda: self.locks())
        self.wait_released()
        self.announce("Sleep", False)
        wait_until(lambda: self.locks() == 1, "Curtain holds the next sleep off", seen=lambda: self.locks())
        wait_until(self.uses_camera, "the camera is in use again")
        wait_until(self.uses_microphone, "the microphone is in use again")

    def test_lets_camera_and_microphone_go_when_the_session_is_locked(self):
        self.open_popover()
        self.assertEqual(self.ask_login_manager("LockSession").returncode, 0)
        self.wait_released()
        # A locked session opens nothing by itself.
        self.assertTrue(stays(lambda: not self.uses_camera()))

    def test_privacy_mode_is_still_on_after_a_suspend(self):
        xterm = self.open_xterm()
        urxvt = self.open_urxvt()
        self.toggle()
        self.wait_hidden(xterm)
        self.announce("Sleep", True)
        wait_until(lambda: self.locks() == 0, "the computer may sleep", seen=lambda: self.locks())
        self.announce("Sleep", False)
        wait_until(lambda: self.locks() == 1, "the computer is awake", seen=lambda: self.locks())
        self.assert_stays_hidden(xterm)
        self.assert_hides_again(xterm)
        self.assertFalse(urxvt.is_hidden)
        self.toggle()
        self.wait_shown(xterm)

    def test_ends_with_the_computer(self):
        xterm = self.open_xterm()
        self.toggle()
        self.wait_hidden(xterm)
        self.open_popover()
        self.announce("Shutdown", False)
        self.announce("Shutdown", True)
        self.assertEqual(self.curtain.wait(SECONDS_TO_END), 0)
        wait_until(lambda: self.locks() == 0, "the computer may end", seen=lambda: self.locks())
        self.wait_released()
        self.wait_shortcut_free()
        self.assert_stays_hidden(xterm)


class EndAtWorkTest(SessionCase):
    def test_ends_on_a_signal_with_camera_and_microphone_at_work(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number.name):
                self.write_settings()
                self.start_curtain()
                self.open_popover()
                self.curtain.send_signal(number)
                self.assertEqual(self.curtain.wait(SECONDS_TO_END), 0)
                self.wait_released()
                self.wait_shortcut_free()
                self.end_curtain()

    def test_ends_with_its_display_with_camera_and_microphone_at_work(self):
        server, name = self.start_x_server("-noreset")
        display = Display(name)
        self.addCleanup(display.close)
        self.write_settings()
        curtain = self.launch_curtain(DISPLAY=name)
        wait_until(lambda: display.is_key_taken(Key.H, SHORTCUT_MASK), "Curtain waits for its shortcut")
        self.open_popover(DISPLAY=name)
        server.kill()
        self.assertEqual(curtain.wait(SECONDS_TO_END), 1)
        # Later releases of the toolkit, which ends the program, complain of its threads.
        complaints = [line for line in curtain.complaints().splitlines(True) if not line.startswith("QThreadStorage: ")]
        self.assertEqual("".join(complaints), SERVER_GONE)
        self.wait_released()


class SavedSessionTest(SessionCase):
    """A desktop that starts in the next session what ran in the last one."""

    def setUp(self):
        super().setUp()
        self.manager = self.desktop.start(str(SESSION_MANAGER))
        wait_until(self.told, "the session manager is up")
        self.write_settings()
        self.start_curtain(SESSION_MANAGER=self.told()[0])
        wait_until(lambda: self.told()[1:], "the session manager knows how to start Curtain again")

    def told(self):
        return [line.rstrip() for line in self.manager.output().splitlines(keepends=True) if line.endswith("\n")]

    def test_is_not_started_again_by_the_session(self):
        self.assertEqual(self.told()[1:], ["restart style 3"], "never: the autostart entry does")


if __name__ == "__main__":
    unittest.main()
