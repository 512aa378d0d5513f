"""What the popover costs: time from the click to its first frame, memory and wake-ups while it is open.

usage: popover_benchmark.py CURTAIN [ROUNDS]
in a virtual desktop with an X11 tray, started with --media and --camera

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
from desktop_driver import MOUSEPAD, XTERM, Desktop, wait_until, write_preferences
from figures import report
from process_costs import memory, seconds_at_work, switches

SIZE = (700, 618)
# In the popover: its main button, filled or tonal, and the desktop around.
BUTTON, BUTTON_COLOURS = (60, 582), ("#3b55d6", "#e7ebfa")
OPEN_MEGABYTES = 52
WARM_OPENINGS = 10
SETTLE_SECONDS = 3
# Between two looks at the screen, which is how exact the times are.
PAUSE_SECONDS = 0.0005
# The start waits once for a tray and a window manager that are late, for 15 s. What reads the screen, as this benchmark does
# while it waits for a frame, makes the watch for captures look twice, 5 s apart.
AFTERMATH_SECONDS = 13
IDLE_SECONDS = 10


class Popover:
    """A running Curtain whose icon is clicked on."""

    def __init__(self, desktop, program, scratch, **preferences):
        self.desktop = desktop
        self.display = desktop.display
        settings = Path(tempfile.mkdtemp(dir=scratch))
        write_preferences(settings, **({"targetApps": [XTERM, MOUSEPAD], "hasOnboarded": True, "autoDetectEnabled": False} |
                                       preferences))
        self.curtain = desktop.start(program, environment={"XDG_CONFIG_HOME": str(settings)})
        icon = wait_until(desktop.tray_icon, "the icon is in the tray").geometry
        subprocess.run(["xdotool", "mousemove", str(icon.x + icon.width // 2), str(icon.y + icon.height // 2)], check=True)
        time.sleep(SETTLE_SECONDS)

    def window(self):
        return next((window for window in self.desktop.windows_of(self.curtain)
                     if window.size == SIZE), None)

    def place(self):
        area = wait_until(self.window, "the popover is open").geometry
        return area.x + BUTTON[0], area.y + BUTTON[1]

    def is_drawn(self, place):
        return self.display.colour(*place) in BUTTON_COLOURS

    def open(self, place):
        """Milliseconds from the click to the frame on the screen, and how many of them Curtain worked."""
        work = self.work()
        start = time.monotonic()
        self.display.click()
        wait_until(lambda: self.is_drawn(place), "the popover is drawn", pause=PAUSE_SECONDS)
        return 1000 * (time.monotonic() - start), self.work() - work

    def close(self, place):
        self.display.click()
        wait_until(lambda: not self.is_drawn(place), "the popover is closed")
        time.sleep(0.3)

    def end(self):
        self.curtain.terminate()
        self.curtain.wait(10)
        wait_until(lambda: self.desktop.tray_icon() is None, "the icon is gone")

    def memory(self):
        """In MiB, shared pages divided among those who share them."""
        return memory(self.curtain.pid).proportional

    def work(self):
        """Milliseconds of the processor so far, by all threads."""
        return 1000 * seconds_at_work(self.curtain.pid)

    def wake_ups(self):
        """Context switches of all threads so far."""
        return sum(switches(self.curtain.pid).values())

    def idle(self):
        before = self.wake_ups()
        time.sleep(IDLE_SECONDS)
        return self.wake_ups() - before


def main():
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory(prefix="curtain-benchmark-") as scratch:
        desktop = Desktop(scratch)
        quiet = {"showCameraPreview": False, "showMicrophoneCheck": False}
        popover = Popover(desktop, program, scratch, **quiet)
        popover.display.click()
        place = popover.place()
        wait_until(lambda: popover.is_drawn(place), "the popover is drawn")
        print(f"load of the machine: {Path('/proc/loadavg').read_text().split()[0]}")
        time.sleep(AFTERMATH_SECONDS)
        report(f"wake-ups in {IDLE_SECONDS} s, popover open, camera and microphone off", popover.idle(), "", 0)
        report("proportional set size, popover open, camera and microphone off", popover.memory(), "MiB", OPEN_MEGABYTES)
        popover.end()
        first, again = [], []
        for _ in range(rounds):
            popover = Popover(desktop, program, scratch)
            first.append(popover.open(place))
            for _ in range(WARM_OPENINGS):
                popover.close(place)
                again.append(popover.open(place))
            popover.end()
        for name, clicks, goal in (("first", first, 90), ("later", again, 15)):
            times, work = zip(*clicks)
            report(f"click to {name} frame of the popover", statistics.median(times), "ms", goal)
            print(f"    from {min(times):.0f} to {max(times):.0f}; of the processor's time {statistics.median(work):.0f} ms "
                  f"({len(clicks)} clicks)")
        popover = Popover(desktop, program, scratch, showCameraPreview=False)
        popover.open(place)
        time.sleep(SETTLE_SECONDS)
        report(f"wake-ups in {IDLE_SECONDS} s, popover open, microphone on", popover.idle())
        popover.end()
        popover = Popover(desktop, program, scratch)
        popover.open(place)
        time.sleep(SETTLE_SECONDS)
        report(f"wake-ups in {IDLE_SECONDS} s, popover open, camera and microphone on", popover.idle())
        report("proportional set size, popover open, camera and microphone on", popover.memory(), "MiB", OPEN_MEGABYTES)
        popover.end()
        desktop.end_programs()


if __name__ == "__main__":
    main()
