"""Takes the pictures of the popover and those in the dark in docs/screenshots, from the installed program with a live camera and
microphone.

usage: popover_screenshots.py FOLDER     in scripts/virtual-desktop with --accessibility, --media and a screen of 1800x1440

The target "screenshots" runs it. VIRTUAL_CAMERA in the environment is tests/support/VirtualCamera.cpp as built.
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

from desktop_case import CHROMIUM, CURTAIN, MOUSEPAD, XTERM, Desktop, stays, wait_until, write_preferences
from desktop_driver import private_app
from portrait import draw_portrait
from screen_reader import ScreenReader

SCALE = 2
SIZE = (700 * SCALE, 618 * SCALE)
SETTINGS = (440 * SCALE, 430 * SCALE)
WIZARD = (420 * SCALE, 460 * SCALE)
SETTINGS_PORTAL = Path(__file__).resolve().parents[1] / "support/settings-portal"
# For the shadow.
MARGIN = 28 * SCALE
WALLPAPER = "#93a7bc"
PRIVATE_APPS = [MOUSEPAD, XTERM, CHROMIUM, private_app("firefox-esr", "Firefox ESR")]


class Photographer:
    """Shows the popover in one state after another and takes its picture."""

    def __init__(self, scratch, folder):
        self.scratch = scratch
        self.folder = Path(folder)
        self.desktop = Desktop(scratch)
        self.reader = ScreenReader()
        self.settings = scratch / "settings"
        self.settings.mkdir()
        (scratch / "home/Desktop").mkdir(parents=True)
        for number in range(12):
            (scratch / f"home/Desktop/Note {number}.txt").touch()

    def start(self, *argv, **environment):
        return self.desktop.start(*argv, environment={"HOME": str(self.scratch / "home")} | environment)

    def prepare(self):
        portrait = self.scratch / "portrait.jpg"
        draw_portrait(portrait)
        camera = os.environ["VIRTUAL_CAMERA"]
        self.start(camera, "front_camera", "Integrated Camera", "jpeg", f"picture={portrait}")
        self.start(camera, "desk_camera", "Desk View Camera", "jpeg", f"picture={portrait}")
        tone = self.scratch / "tone.wav"
        # Square, so that it is equally loud in every piece of it and the meter comes to rest.
        square = "aevalsrc=0.0265*(2*gt(sin(2*PI*480*t)\\,0)-1):s=48000"
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", square, "-t", "600", "-f", "wav", str(tone)],
                       check=True)
        self.start("paplay", "--device=microphone_feed", str(tone))
        desktop_colour = Path(os.environ["XDG_CONFIG_HOME"]) / "pcmanfm/default/desktop-items-0.conf"
        desktop_colour.parent.mkdir(parents=True)
        desktop_colour.write_text(f"[*]\nwallpaper_mode=color\ndesktop_bg={WALLPAPER}\n")
        self.start("pcmanfm", "--desktop")
        self.desktop.window_of(self.start("xterm"))
        self.desktop.window_of(self.start("mousepad"))
        chromium = self.desktop.window_of(self.start("chromium", "--no-sandbox", "--no-first-run", "--disable-gpu",
                                                     f"--user-data-dir={self.scratch / 'chromium'}", "about:blank"))
        chromium.minimise()

    def start_curtain(self, **preferences):
        """Returns where its icon is."""
        write_preferences(self.settings, **({"targetApps": PRIVATE_APPS, "hasOnboarded": True, "autoDetectEnabled": False,
                                             "selectedCameraID": None} | preferences))
        self.curtain = self.start(CURTAIN, XDG_CONFIG_HOME=str(self.settings), QT_SCALE_FACTOR=str(SCALE))
        return wait_until(self.desktop.tray_icon, "the icon is in the tray").geometry

    def open(self, **preferences):
        icon = self.start_curtain(**preferences)
        subprocess.run(["xdotool", "mousemove", str(icon.x + 8), str(icon.y + 8), "click", "1"], check=True)
        wait_until(lambda: any(element.role == "graphic" for element in self.reader.elements()), "the camera is seen")
        wait_until(lambda: any(element.role == "progress bar" and element.description != "0%" for element in self.reader.elements()),
                   "the microphone is heard")
        # Where it hovers over nothing.
        subprocess.run(["xdotool", "mousemove", "20", "1400"], check=True)

    def close(self):
        self.curtain.terminate()
        self.curtain.wait(30)
        wait_until(lambda: self.desktop.tray_icon() is None, "the icon is gone", seen=lambda: self.desktop.tray_icon())

    def press(self, role, name, action="Press"):
        wait_until(lambda: next((element for element in self.reader.elements() if (element.role, element.name) == (role, name)), None),
                   f"{role}: {name}").act(action)

    def has_wallpaper(self):
        """Paints it where PCManFM has taken it away together with the icons."""
        if self.desktop.display.colour(100, 1400) == WALLPAPER:
            return True
        self.desktop.display.paint_wallpaper(WALLPAPER)
        return False

    def wait_at_rest(self, is_it):
        """Returns the place of the window whose size is right."""
        area = wait_until(lambda: next((window for window in self.desktop.windows_of(self.curtain) if is_it(window.size or (0, 0))), None),
                          "the window is open").geometry
        wait_until(lambda: stays(lambda seen=self.desktop.display.pixels(area): self.desktop.display.pixels(area) == seen),
                   "the window is at rest", 30)
        return area

    def darken(self):
        """What the desktop says of itself from now on."""
        self.start(SETTINGS_PORTAL)
        say = ["gdbus", "call", "--session", "--dest", "org.freedesktop.portal.Desktop", "--object-path", "/org/freedesktop/portal/desktop",
               "--method", "org.freedesktop.portal.Settings.Set", "1"]
        wait_until(lambda: subprocess.run(say, capture_output=True, check=False).returncode == 0, "the desktop is dark")

    def take_window(self, action, size, name, **preferences):
        """Of the window of that size, which the action opens."""
        self.start_curtain(**preferences)
        subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path", "/com/curtain/Curtain",
                        "--method", "org.freedesktop.Application.ActivateAction", action, "[]", "{}"], check=True, stdout=subprocess.DEVNULL)
        area = self.wait_at_rest(lambda found: found == size)
        subprocess.run(["import", "-window", "root", "-crop", f"{size[0]}x{size[1]}+{area.x}+{area.y}", "+repage", "-strip",
                        str(self.folder / f"{name}.png")], check=True)
        self.close()

    def take(self, name):
        wait_until(lambda: stays(self.has_wallpaper), "the wallpaper is shown")
        area = self.wait_at_rest(lambda found: found[0] >= SIZE[0])
        picture = self.scratch / "screen.png"
        subprocess.run(["import", "-window", "root", str(picture)], check=True)
        left = area.x + area.width - SIZE[0] - 2 * MARGIN
        subprocess.run(["convert", str(picture), "-crop", f"{SIZE[0] + 2 * MARGIN}x{area.y + area.height}+{left}+0", "+repage",
                        "-dither", "None", "-colors", "256", "-strip", "-define", "png:compression-level=9",
                        f"PNG8:{self.folder / name}.png"], check=True)


def main():
    with tempfile.TemporaryDirectory(prefix="curtain-screenshots-") as folder:
        photographer = Photographer(Path(folder), sys.argv[1])
        try:
            photographer.prepare()
            photographer.open()
            photographer.take("popover")
            photographer.press("check box", "Edit apps", "Toggle")
            photographer.take("popover-edit")
            photographer.press("push button", "Save")
            photographer.press("push button", "Take photo")
            photographer.take("popover-photo")
            photographer.press("push button", "Back")
            photographer.press("push button", "More options")
            photographer.press("menu item", "Test Share Mode")
            photographer.take("popover-test-share")
            photographer.close()
            photographer.open(language="ar")
            photographer.take("popover-arabic")
            photographer.close()
            photographer.open(notificationsMarkedHandled=True)
            photographer.press("push button", "Fix Everything")
            wait_until(lambda: any(element.name == "Show desktop" for element in photographer.reader.elements()), "the icons are gone")
            photographer.take("popover-ready")
            photographer.close()
            photographer.darken()
            photographer.take_window("settings", SETTINGS, "settings-general-dark")
            photographer.take_window("open", WIZARD, "wizard-welcome-dark", hasOnboarded=False)
        finally:
            photographer.desktop.end_programs()


if __name__ == "__main__":
    main()
