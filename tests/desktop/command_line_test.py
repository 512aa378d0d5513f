"""Checks what Curtain answers on its command line, with and without a display, and that it starts nothing for it."""

import contextlib
import os
import socket
import subprocess
import threading
import unittest

from desktop_case import CURTAIN, IS_WAYLAND, DesktopCase, wait_until
from i3_driver import class_of, windows

NO_BACK_END = "and there may be others; none can be hidden, since there is no back end"
SESSIONS = {
    "x11-openbox": ("Session: X11", "Window manager: Openbox",
                    "Windows: 1 listed, which are all; hiding has not been tried yet"),
    "x11-i3": ("Session: X11", "Window manager: i3",
               "Windows: 1 listed, which are all; they are hidden in the scratchpad of i3"),
    "sway": ("Session: Wayland, with an X server", "Window manager: sway",
             "Windows: 1 listed, which are all; they are hidden in the scratchpad of sway"),
    "kwin": ("Session: Wayland, with an X server", "Window manager: KWin",
             "Windows: asked of a script that Curtain gives KWin, which has not been tried"),
    # It keeps the list of its X11 windows to itself.
    "weston": ("Session: Wayland, with an X server", "Window manager: weston", f"Windows: 0 listed, {NO_BACK_END}"),
}


def is_window_there():
    search = ["xdotool", "search", "--onlyvisible", "--class", "XTerm"]
    return subprocess.run(search, capture_output=True, check=False).returncode == 0


def is_window_in_layout():
    return any(class_of(node) == "XTerm" for node, _ in windows())


# How to see it where the list of X11 windows is not what the diagnosis goes by.
LISTED = {"x11-i3": is_window_in_layout, "sway": is_window_in_layout, "weston": is_window_there}


def ask(*options, **changes):
    environment = {name: value for name, value in {**os.environ, **changes}.items() if value is not None}
    done = subprocess.run([CURTAIN, *options], env=environment, capture_output=True, text=True, timeout=60)
    return done.returncode, done.stdout, done.stderr


class CommandLineTest(DesktopCase):
    def test_tells_its_version_and_its_options(self):
        for display in (os.environ["DISPLAY"], None):
            status, output, complaints = ask("--version", DISPLAY=display)
            self.assertRegex(output, r"^curtain \d+\.\d+\.\d+\n$")
            self.assertEqual((status, complaints), (0, ""))
            status, output, complaints = ask("--help", DISPLAY=display)
            self.assertEqual((status, complaints), (0, ""))
            for option in ("--diagnose", "--help", "--version"):
                self.assertIn(option, output)

    def test_refuses_what_it_does_not_know(self):
        for options in (["--other"], ["file"], ["--version", "--other"]):
            status, output, complaints = ask(*options)
            self.assertEqual((status, output, len(complaints.splitlines())), (2, "", 1), complaints)
            self.assertIn(options[-1], complaints)

    def diagnosis(self, **changes):
        status, output, complaints = ask("--diagnose", **changes)
        self.assertEqual((status, complaints), (0, ""))
        for private in (os.environ["HOME"], os.environ["XDG_RUNTIME_DIR"], str(self.scratch)):
            self.assertNotIn(private, output)
        return output

    def test_diagnoses_this_session(self):
        self.start_xterm()
        session = os.environ["VIRTUAL_DESKTOP_SESSION"]
        wait_until(LISTED.get(session, self.desktop.windows), "the window is listed", seen=self.desktop.describe)
        output = self.diagnosis()
        road = "processes of wf-recorder and wl-screenrec" if IS_WAYLAND else "requests to the X server"
        for line in (*SESSIONS[session], "Notifications: dunst", "Curtain is running: no\n",
                     f"Screen sharing is seen by: {road}\n"):
            self.assertIn(f"\n{line}", output)

    def test_diagnoses_without_a_display(self):
        output = self.diagnosis(DISPLAY=None, WAYLAND_DISPLAY=None)
        self.assertIn("\nSession: none", output)
        self.assertIn("\nShortcut: none", output)

    def test_fails_when_somebody_does_not_answer(self):
        status, output, _ = ask("--diagnose", DISPLAY=self.server_that_answers_once())
        self.assertIn("\nThe rest is not known: somebody does not answer\n", output)
        self.assertEqual(status, 1)

    def server_that_answers_once(self):
        """A display whose first client gets through to the X server; the others wait for ever."""
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)

        def hand_on(source, target):
            with source, contextlib.suppress(OSError):
                while received := source.recv(65536):
                    target.sendall(received)
                target.shutdown(socket.SHUT_RDWR)

        def serve():
            client, _ = listener.accept()
            server = socket.socket(socket.AF_UNIX)
            server.connect(f"/tmp/.X11-unix/X{os.environ['DISPLAY'].strip(':').split('.')[0]}")
            for pair in ((client, server), (server, client)):
                threading.Thread(target=hand_on, args=pair, daemon=True).start()
        threading.Thread(target=serve, daemon=True).start()
        first_port = 6000
        return f"127.0.0.1:{listener.getsockname()[1] - first_port}"

    def test_diagnoses_without_a_bus(self):
        output = self.diagnosis(DBUS_SESSION_BUS_ADDRESS="nonsense")
        self.assertIn("\nSession bus: none\n", output)


if __name__ == "__main__":
    unittest.main()
