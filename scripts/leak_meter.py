"""Counts what a capture of the screen shows of private windows, which are painted in a colour of their own.

LEAK_METER_PROGRAMS in the environment is the folder of the programs LeakMeter and PaintedProgram.
"""

import os
import subprocess
import threading
import time
from pathlib import Path
from typing import NamedTuple

from desktop_driver import Window, wait_until

PROGRAMS = Path(os.environ["LEAK_METER_PROGRAMS"])
COLOUR = "ff00ff"


class Frame(NamedTuple):
    # When the picture was asked for, as time.monotonic() has it.
    time: float
    # How many pixels have the colour.
    pixels: int
    # Pictures that the meter did not come to before this one.
    missed: int


class LeakMeter:
    """A capture of the screen, sixty pictures a second, from the start until end()."""

    def __init__(self):
        self.frames = []
        self._process = subprocess.Popen([PROGRAMS / "LeakMeter", COLOUR], stdout=subprocess.PIPE, text=True)
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        wait_until(lambda: self.frames, "the screen is captured")

    def _read(self):
        for line in self._process.stdout:
            moment, pixels, missed = line.split()
            self.frames.append(Frame(float(moment), int(pixels), int(missed)))

    def end(self):
        self._process.terminate()
        self._process.wait()
        self._reader.join()
        self._process.stdout.close()

    def since(self, moment):
        """The frames that were asked for later."""
        return [frame for frame in reversed(tuple(self._newest_until(moment)))]

    def _newest_until(self, moment):
        for frame in reversed(self.frames[:]):
            if frame.time <= moment:
                return
            yield frame

    def leaked_since(self, moment):
        """In how many of them there is something of the private windows."""
        return sum(frame.pixels > 0 for frame in self.since(moment))

    def wait_for(self, count, are_clean=True):
        """Until the latest frames, so many from now on, show nothing of the private windows, or all show something."""
        start = time.monotonic()

        def are_there():
            latest = self.since(start)[-count:]
            return len(latest) == count and all((frame.pixels == 0) == are_clean for frame in latest)
        wait_until(are_there, f"{count} {'clean' if are_clean else 'leaking'} frames", seen=lambda: self.frames[-count:])

    def pictures_missed(self):
        return sum(frame.missed for frame in self.frames)

    def rate(self, count=0):
        """Pictures a second, of the latest ones, so many, or of all."""
        latest = self.frames[-count:]
        return (len(latest) - 1) / (latest[-1].time - latest[0].time)


class PaintedProgram:
    """A program whose windows show nothing but the colour."""

    def __init__(self, display, window_class="XTerm"):
        self._display = display
        self._process = subprocess.Popen([PROGRAMS / "PaintedProgram", window_class, COLOUR], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, text=True)

    def tell(self, word):
        """What it is to do next; returns the window that it did it with."""
        self._process.stdin.write(word + "\n")
        self._process.stdin.flush()
        return Window(self._display, int(self._process.stdout.readline()))

    def end(self):
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()
