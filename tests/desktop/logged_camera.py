"""A camera that says what becomes of it.

VIRTUAL_CAMERA in the environment is its program.
"""

import os
import subprocess
import time

from desktop_case import wait_until

NAME = "test_camera"
SECONDS_TO_LET_GO = 0.2
ATTEMPTS = 10


class LoggedCamera:
    """Plugged in from the beginning."""

    def __init__(self, desktop, scratch):
        self._desktop = desktop
        self._log = scratch / "camera.log"
        self._program = None
        self.plug_in()

    def plug_in(self):
        self._log.write_text("")
        self._program = self._desktop.start(os.environ["VIRTUAL_CAMERA"], NAME, "Test Camera", "jpeg", f"log={self._log}")

    def unplug(self):
        self._program.terminate()
        self._program.wait()

    def make_default(self):
        setting = ["pw-metadata", "0", "default.configured.video.source"]
        subprocess.run([*setting, f'{{"name":"{NAME}"}}', "Spa:String:JSON"], check=True, capture_output=True)
        wait_until(lambda: NAME in subprocess.run(["pw-metadata", "0", "default.video.source"], check=True, text=True,
                                                  capture_output=True).stdout, "it is the default camera")

    def state(self):
        return (self._log.read_text().splitlines() or [""])[-1]

    def is_let_go_in_time(self, show, close):
        """In one of several attempts, since a busy machine may take long for anything."""
        for _ in range(ATTEMPTS):
            show()
            wait_until(lambda: self.state() == "streaming", "the camera is on", seen=lambda: self.state())
            close()
            begin = time.monotonic()
            wait_until(lambda: self.state() != "streaming", "the camera is off", seen=lambda: self.state())
            if time.monotonic() - begin < SECONDS_TO_LET_GO:
                return True
        return False
