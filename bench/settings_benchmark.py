"""What the settings window costs: time from the menu's key to its first frame, and from a click on the list's chooser and a
key stroke to the apps, with thousands of them installed.

usage: settings_benchmark.py CURTAIN [ROUNDS]
in a virtual desktop with an X11 tray

The figures are for people to read; nothing passes or fails by them.
"""

import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "scripts"))
# pylint: disable=wrong-import-position
from desktop_driver import Desktop, Window, wait_until, write_preferences
from figures import report as report_figure
from process_costs import seconds_at_work

SIZE = (440, 430)
INSTALLED_APPS = 5000
WARM_OPENINGS = 10
SETTLE_SECONDS = 3
# Between two looks at the screen, which is how exact the times are.
PAUSE_SECONDS = 0.0005
AFTER_CLOSING_SECONDS = 0.3
ESCAPE_KEY, RETURN_KEY, Z_KEY, DOWN_KEY = 9, 36, 52, 116
# Places in the window, from its top left corner, and what is seen there.
FIRST_CARD, CARD = (40, 70), "#ffffff"
APPS_TAB, INSTALLED, SEARCH = (205, 30), (220, 177), (200, 217)
FIRST_SWITCH, SECOND_SWITCH, SWITCH_OFF = (391, 260), (391, 296), "#8c93a2"


class Settings:
    """A running Curtain and the menu of its icon."""

    def __init__(self, desktop, program, scratch, data):
        self.desktop = desktop
        self.display = desktop.display
        preferences = Path(tempfile.mkdtemp(dir=scratch))
        write_preferences(preferences, hasOnboarded=True, autoDetectEnabled=False)
        self.curtain = desktop.start(program, environment={"XDG_CONFIG_HOME": str(preferences),
                                                           "XDG_DATA_HOME": str(data)})
        self.icon = wait_until(desktop.tray_icon, "the icon is in the tray")
        time.sleep(SETTLE_SECONDS)

    def point_at_settings(self):
        """Opens the menu and goes to its second item."""
        area = self.icon.geometry
        self.point((area.x, area.y), (area.width // 2, area.height // 2))
        self.display.click(3)
        wait_until(self.has_menu, "the menu is up")
        self.display.strike(DOWN_KEY)
        self.display.strike(DOWN_KEY)
        time.sleep(AFTER_CLOSING_SECONDS)

    def has_menu(self):
        return any(self.display.is_viewable(child) and "curtain" in Window(self.display, child).window_class
                   for child in self.display.children(self.display.root))

    def choose(self):
        self.display.strike(RETURN_KEY)

    def window(self):
        return next((window for window in self.desktop.windows_of(self.curtain) if window.size == SIZE), None)

    def place(self):
        """Of the window's top left corner on the screen."""
        area = wait_until(self.window, "the window is open").geometry
        return area.x, area.y

    def has_colour(self, corner, place, colour):
        return self.display.colour(corner[0] + place[0], corner[1] + place[1]) == colour

    def milliseconds_until(self, act, is_drawn, what):
        """Until it is on the screen, and how many of them Curtain worked, with all of its threads."""
        work = seconds_at_work(self.curtain.pid)
        start = time.monotonic()
        act()
        wait_until(is_drawn, what, pause=PAUSE_SECONDS)
        return 1000 * (time.monotonic() - start), 1000 * (seconds_at_work(self.curtain.pid) - work)

    def open(self, corner):
        self.point_at_settings()
        return self.milliseconds_until(self.choose, lambda: self.has_colour(corner, FIRST_CARD, CARD), "the window is drawn")

    def is_active(self):
        window, active = self.window(), self.desktop.active_window
        return window and active and window == active

    def close(self, corner):
        wait_until(self.is_active, "the window is active")
        self.display.strike(ESCAPE_KEY)
        wait_until(lambda: not self.has_colour(corner, FIRST_CARD, CARD), "the window is closed")
        time.sleep(AFTER_CLOSING_SECONDS)

    def point(self, corner, place):
        subprocess.run(["xdotool", "mousemove", str(corner[0] + place[0]), str(corner[1] + place[1])], check=True)

    def list_installed(self, corner):
        self.point(corner, APPS_TAB)
        self.display.click()
        self.point(corner, INSTALLED)
        time.sleep(SETTLE_SECONDS)
        return self.milliseconds_until(self.display.click, lambda: self.has_colour(corner, FIRST_SWITCH, SWITCH_OFF),
                                       "the apps are listed")

    def search(self, corner):
        """The letters of the name that only one app has."""
        self.point(corner, SEARCH)
        self.display.click()
        time.sleep(AFTER_CLOSING_SECONDS)
        return self.milliseconds_until(lambda: self.display.strike(Z_KEY),
                                       lambda: self.has_colour(corner, SECOND_SWITCH, CARD), "one app is found")

    def end(self):
        self.curtain.terminate()
        self.curtain.wait(10)
        wait_until(lambda: self.desktop.tray_icon() is None, "the icon is gone")


def install_apps(data):
    applications = data / "applications"
    applications.mkdir(parents=True)
    names = [f"Program {number}" for number in range(INSTALLED_APPS - 1)] + ["Zoom"]
    for number, name in enumerate(names):
        (applications / f"app{number}.desktop").write_text(f"[Desktop Entry]\nType=Application\nName={name}\nExec=true\n")


def report(name, measured, limit):
    times, work = zip(*measured)
    report_figure(name, statistics.median(times), "ms", limit)
    print(f"    from {min(times):.0f} to {max(times):.0f}; of the processor's time {statistics.median(work):.0f} ms "
          f"({len(times)} times)")


def main():
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory(prefix="curtain-benchmark-") as scratch:
        desktop = Desktop(scratch)
        data = Path(scratch) / "data"
        install_apps(data)
        print(f"load of the machine: {Path('/proc/loadavg').read_text().split()[0]}")
        settings = Settings(desktop, program, scratch, data)
        settings.point_at_settings()
        settings.choose()
        corner = settings.place()
        settings.end()
        first, again, lists, searches = [], [], [], []
        for _ in range(rounds):
            settings = Settings(desktop, program, scratch, data)
            first.append(settings.open(corner))
            for _ in range(WARM_OPENINGS):
                settings.close(corner)
                again.append(settings.open(corner))
            lists.append(settings.list_installed(corner))
            searches.append(settings.search(corner))
            settings.end()
        report("settings chosen in the menu, to first frame", first, 60)
        report("settings chosen again, to frame", again, 20)
        report(f"{INSTALLED_APPS} installed apps, click to list", lists, 150)
        report("key stroke in the search field, to frame", searches, 8)
        desktop.end_programs()


if __name__ == "__main__":
    main()
