"""What the tray icon costs: time until it is seen, memory and wake-ups while nothing happens.

usage: tray_benchmark.py CURTAIN [ROUNDS]      in a virtual desktop with an X11 tray

The figures are for people to read; nothing passes or fails by them.
"""

import ctypes
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

SETTLE_SECONDS = 2
IDLE_SECONDS = 10
DEADLINE_SECONDS = 10
ICON = re.compile(r'"Curtain": \("curtain" "Curtain"\) +(\d+)x(\d+)\S+ +\+(\d+)\+(\d+)$', re.MULTILINE)


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


def find_icon():
    tree = subprocess.run(["xwininfo", "-root", "-tree"], stdout=subprocess.PIPE, text=True, check=False).stdout
    match = ICON.search(tree)
    return match and list(map(int, match.groups()))


def end(curtain):
    curtain.terminate()
    curtain.wait(timeout=DEADLINE_SECONDS)
    wait_until(lambda: not find_icon())


def ink_of_icon(program, screen):
    """A place that the icon inks, and its colour."""
    curtain = subprocess.Popen([program])
    wait_until(find_icon)
    time.sleep(SETTLE_SECONDS)
    width, height, x, y = find_icon()
    # The rod is the third row of the picture, which is 18 high and stands in the middle.
    place = x + width // 2, y + (height - 18) // 2 + 3
    ink = screen.pixel(*place)
    end(curtain)
    return place, ink


def seconds_until_seen(program, screen, place, ink):
    start = time.monotonic()
    curtain = subprocess.Popen([program])
    wait_until(lambda: screen.pixel(*place) == ink)
    seconds = time.monotonic() - start
    end(curtain)
    return seconds


def memory(pid):
    """Set sizes in MiB: proportional, resident and private."""
    rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
    sizes = {name: int(size) / 1024 for name, size in re.findall(r"^(\w+): +(\d+) kB", rollup, re.MULTILINE)}
    return sizes["Pss"], sizes["Rss"], sizes["Private_Clean"] + sizes["Private_Dirty"]


def wake_ups(pid):
    """Context switches of all threads so far."""
    texts = [(thread / "status").read_text() for thread in Path(f"/proc/{pid}/task").iterdir()]
    return sum(int(count) for text in texts for count in re.findall(r"ctxt_switches:\s+(\d+)", text))


def main():
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    screen = Screen()
    place, ink = ink_of_icon(program, screen)
    times = [1000 * seconds_until_seen(program, screen, place, ink) for _ in range(rounds)]
    print(f"exec to visible icon: median {statistics.median(times):.0f} ms, from {min(times):.0f} to {max(times):.0f} ms "
          f"({rounds} starts)")
    curtain = subprocess.Popen([program])
    wait_until(lambda: screen.pixel(*place) == ink)
    # One late timer belongs to the start.
    time.sleep(SETTLE_SECONDS)
    proportional, resident, private = memory(curtain.pid)
    print(f"proportional set size: {proportional:.1f} MiB (resident {resident:.1f}, private {private:.1f})")
    before = wake_ups(curtain.pid)
    time.sleep(IDLE_SECONDS)
    print(f"wake-ups in {IDLE_SECONDS} idle seconds: {wake_ups(curtain.pid) - before}")
    end(curtain)


if __name__ == "__main__":
    main()
