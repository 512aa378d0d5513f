"""Goes the wizard's road where there are a microphone and cameras."""

import subprocess
import unittest

import wizard_test
from logged_camera import LoggedCamera


class WizardWithDevicesTest(wizard_test.WizardTest):
    has_devices = True

    def test_lets_the_camera_go_when_it_is_closed(self):
        camera = LoggedCamera(self.desktop, self.scratch)
        camera.make_default()

        def show():
            if self.curtain:
                self.end_curtain()
            window = self.go_to_the_microphone()
            self.allow_the_microphone(window)
            self.click(window, wizard_test.BUTTON)
            self.allow_the_camera(window)

        def close():
            subprocess.run(["wmctrl", "-i", "-c", hex(self.wizard().id)], check=True)
        self.assertTrue(camera.is_let_go_in_time(show, close))


if __name__ == "__main__":
    unittest.main()
