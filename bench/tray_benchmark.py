"""What Curtain in the tray costs: time until its icon is seen, memory, and work while nothing happens.

usage: tray_benchmark.py CURTAIN BARE_TRAY_ICON [ROUNDS]      in a virtual desktop with an X11 tray and PipeWire

Everything is built in and runs as for a user who has chosen nothing, the detection of shared screens included. The second program
is the floor: it does nothing but show an icon. The figures are for people to read; nothing passes or fails by them.
"""

import ctypes
import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "scripts"))
# pylint: disable=wrong-import-position
from figures import report  # noqa: E402
from process_costs import memory, seconds_at_work, switches  # noqa: E402

MEGABYTES = 20
SECONDS_PER_POLL = 3
PERCENT_OF_A_CORE = 0.02
# Timers that belong to the start have passed by then.
SETTLE_SECONDS = 16
IDLE_SECONDS = 30
DEADLINE_SECONDS = 10


class Screen:
    """Reads pixels of the screen quickly enough to take the time by them."""

    def __init__(self):
        self._x11 = ctypes.CDLL("libX11.so.6")
        for function, result in (("XOpenDisplay", ctypes.c_void_p), ("XGetImage", ctypes.c_void_p),
                                 ("XGetPixel", ctypes.c_ulong), ("XDefaultRootWindow", ctypes.c_ulong)):
            getattr(self._x11, function).restype = result
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(None))
        self._root = ctypes.c_ulong(self._x11.XDefaultRootWindow(self._display))

    def pixel(self, x, y):
        z_pixmap, all_planes = 2, ctypes.c_ulong(-1)
        image = ctypes.c_void_p(self._x11.XGetImage(self._display, self._root, x, y, 1, 1, all_planes, z_pixmap))
        value = self._x11.XGetPixel(image, 0, 0)
        self._x11.XDestroyImage(image)
        return value


def wait_until(condition):
    deadline = time.monotonic() + DEADLINE_SECONDS
    while not (answer := condition()):
        if time.monotonic() > deadline:
            sys.exit("tray_benchmark: the icon did not appear or disappear in time")
        time.sleep(0.0005)
    return answer


class TrayProgram:
    def __init__(self, path, screen):
        self._path = path
        self._screen = screen
        self._line = re.compile(rf'\("{Path(path).name}" "[^"]*"\) +(\d\d)x(\d\d)\S+ +\+(\d+)\+(\d+)$',
                                re.MULTILINE | re.IGNORECASE)
        self._place, self._ink = self._icon()

    def launch(self):
        return subprocess.Popen([self._path])

    def start(self):
        process = self.launch()
        wait_until(lambda: self._screen.pixel(*self._place) == self._ink)
        return process

    def end(self, process):
        process.terminate()
        process.wait(timeout=DEADLINE_SECONDS)
        wait_until(lambda: not self._find())

    def seconds_until_seen(self):
        """By the clock, and of the processor, which tells more on a busy machine."""
        start = time.monotonic()
        process = self.start()
        seconds = time.monotonic() - start, seconds_at_work(process.pid)
        self.end(process)
        return seconds

    def _find(self):
        # It complains of windows that go away while it looks.
        tree = subprocess.run(["xwininfo", "-root", "-tree"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              check=False).stdout
        match = self._line.search(tree)
        return match and list(map(int, match.groups()))

    def _icon(self):
        """A place that the icon inks, and its colour."""
        process = self.launch()
        wait_until(self._find)
        time.sleep(1)
        width, height, x, y = self._find()
        # The rod is the third row of the picture, which is 18 high and stands in the middle.
        place = x + width // 2, y + (height - 18) // 2 + 3
        ink = self._screen.pixel(*place)
        self.end(process)
        return place, ink


def report_start(programs, rounds):
    times = [[] for _ in programs]
    for _ in range(rounds):
        # In turns, so that both meet the same load.
        for program, measured in zip(programs, times):
            measured.append([1000 * seconds for seconds in program.seconds_until_seen()])
    for index, what in enumerate(("exec to visible icon", "processor time to visible icon")):
        ours, floor = ([time[index] for time in measured] for measured in times)
        report(what, statistics.median(ours), "ms", statistics.median(floor), bare_icon=statistics.median(floor))
        print(f"    from {min(ours):.0f} to {max(ours):.0f}; a bare icon: from {min(floor):.0f} to {max(floor):.0f}")


class Rest:
    """What a program in the tray costs while no other program of its toolkit runs, which would share its libraries."""

    def __init__(self, program):
        process = program.launch()
        time.sleep(SETTLE_SECONDS)
        self.memory = memory(process.pid)
        before, work = switches(process.pid), seconds_at_work(process.pid)
        time.sleep(IDLE_SECONDS)
        after = switches(process.pid)
        self.work = 100 * (seconds_at_work(process.pid) - work) / IDLE_SECONDS
        self.wake_ups = {thread: count - before.get(thread, 0) for thread, count in after.items() if count != before.get(thread)}
        program.end(process)


def report_rest(programs):
    ours, floor = map(Rest, programs)
    report("proportional set size in the tray", ours.memory.proportional, "MiB", MEGABYTES, bare_icon=floor.memory.proportional)
    report("private memory in the tray", ours.memory.private, "MiB", bare_icon=floor.memory.private)
    report("resident memory in the tray", ours.memory.resident, "MiB", bare_icon=floor.memory.resident)
    report(f"wake-ups in {IDLE_SECONDS} idle seconds", sum(ours.wake_ups.values()), "", IDLE_SECONDS // SECONDS_PER_POLL,
           bare_icon=sum(floor.wake_ups.values()))
    for thread, count in ours.wake_ups.items():
        print(f"    {thread}: {count}")
    report("work while idle", ours.work, "% of a core", PERCENT_OF_A_CORE, bare_icon=floor.work)


def main():
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    screen = Screen()
    programs = [TrayProgram(path, screen) for path in sys.argv[1:3]]
    print(f"load: {os.getloadavg()[0]:.1f} on {os.cpu_count()} processors, {rounds} starts")
    report_start(programs, rounds)
    report_rest(programs)


if __name__ == "__main__":
    main()
