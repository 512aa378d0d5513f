"""How long privacy mode takes in a Wayland session of KWin, and what it costs meanwhile.

usage: kwin_benchmark.py CURTAIN [ROUNDS]      with --session kwin

What is seen is looked for in pictures of the screen, which take some milliseconds each. The windows are those of terminals of X11's. The
figures are for people to read; nothing passes or fails by them.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "scripts"))
# pylint: disable=wrong-import-position
from desktop_driver import XTERM, Desktop, Display, Rectangle, wait_until, write_preferences  # noqa: E402
from figures import report  # noqa: E402
from process_costs import memory, seconds_at_work, switches  # noqa: E402

WIDTH, HEIGHT = 1280, 800
COLOUR = "#2040a0"
MANY = 20
REHIDE_DELAY_MS = 200
# It stays hidden for so long before a trial counts as over.
QUIET_SECONDS = 0.5
IDLE_SECONDS = 30


class Session:
    def __init__(self, curtain, scratch):
        self.desktop = Desktop(scratch)
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.row = bytes.fromhex(COLOUR[5:] + COLOUR[3:5] + COLOUR[1:3]) * 50
        self.settings = scratch / "settings"
        self.settings.mkdir()
        self._curtain = curtain

    def start_curtain(self):
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False)
        curtain = self.desktop.start(self._curtain, environment={"XDG_CONFIG_HOME": str(self.settings)})
        wait_until(lambda: "true" in self.call("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting.isScriptLoaded", "curtain-windows"),
                   "KWin tells of its windows")
        return curtain

    @staticmethod
    def call(service, path, method, *arguments):
        return subprocess.run(["gdbus", "call", "--session", "--dest", service, "--object-path", path, "--method", method, *arguments],
                              capture_output=True, text=True, check=False).stdout

    def toggle(self):
        """Returns when it was asked for."""
        begin = time.monotonic()
        self.call("com.curtain.Curtain", "/com/curtain/Curtain", "org.freedesktop.Application.ActivateAction", "toggle-privacy", "[]", "{}")
        return begin

    def is_seen(self):
        pixels = bytearray(self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT)))
        # Programs leave anything in the padding.
        del pixels[3::4]
        return self.row in pixels

    def last_seen(self):
        """When the last picture with something private was taken."""
        last = time.monotonic()
        while time.monotonic() - last < QUIET_SECONDS:
            if self.is_seen():
                last = time.monotonic()
        return last

    def open_more(self, count):
        total = len(self.desktop.windows()) + count
        for index in range(total - count, total):
            place = f"30x8+{20 + index % 5 * 240}+{20 + index // 5 * 180}"
            self.desktop.start("xterm", "-geometry", place, "-bg", COLOUR, "-e", "cat")
        wait_until(lambda: len(self.desktop.windows()) == total and self.is_seen(), f"{total} windows are open")

    def all_have(self, is_hidden):
        return all(window.is_hidden == is_hidden for window in self.desktop.windows())


def milliseconds(begin, end):
    return (end - begin) * 1000


def switching(session, count, rounds):
    on, off = [], []
    for _ in range(rounds):
        begin = session.toggle()
        on.append(milliseconds(begin, session.last_seen()))
        wait_until(lambda: session.all_have(True), "all are hidden")
        begin = session.toggle()
        wait_until(lambda: session.all_have(False), "all are shown", pause=0.001)
        off.append(milliseconds(begin, time.monotonic()))
        wait_until(session.is_seen, "they are seen")
    report(f"KWin: switch-on of {count} to the last private picture", statistics.median(on), "ms", most=max(on))
    report(f"KWin: switch-off of {count} to the last one shown", statistics.median(off), "ms", most=max(off))


def coming_back(session, rounds):
    late = []
    session.toggle()
    wait_until(lambda: session.all_have(True) and not session.is_seen(), "all are hidden")
    for _ in range(rounds):
        window, = session.desktop.windows()
        begin = time.monotonic()
        window.raise_from_task_list()
        # A computer that is busy may not come to draw it.
        wait_until(lambda: not window.is_hidden, "it comes back", pause=0.001)
        late.append(milliseconds(begin, session.last_seen()) - REHIDE_DELAY_MS)
    report("KWin: what is brought back is seen for the rule's delay of 200 ms and", statistics.median(late), "ms", 20, most=max(late))


def bare_minimising(session, rounds):
    """How much of it is KWin's own: an X11 program asks it to minimise the window."""
    seen = []
    for _ in range(rounds):
        window, = session.desktop.windows()
        begin = time.monotonic()
        window.minimise()
        seen.append(milliseconds(begin, session.last_seen()))
        window.raise_from_task_list()
        wait_until(session.is_seen, "it is seen")
    report("KWin: what an X11 program minimises is seen for", statistics.median(seen), "ms", most=max(seen))


def idling(curtain, kwin):
    before, worked, worked_there = switches(curtain.pid), seconds_at_work(curtain.pid), seconds_at_work(kwin)
    # What is measured is that nothing happens.
    time.sleep(IDLE_SECONDS)
    after = switches(curtain.pid)
    report("KWin: wake-ups in privacy mode", (sum(after.values()) - sum(before.get(name, 0) for name in after)) / IDLE_SECONDS, "a second",
           curtain_ms=(seconds_at_work(curtain.pid) - worked) * 1000 / IDLE_SECONDS,
           kwin_ms=(seconds_at_work(kwin) - worked_there) * 1000 / IDLE_SECONDS)


def main():
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    kwin = int((Path(os.environ["VIRTUAL_DESKTOP_PIDS"]) / "kwin_wayland").read_text())
    with tempfile.TemporaryDirectory() as scratch:
        session = Session(sys.argv[1], Path(scratch))
        session.open_more(1)
        bare_minimising(session, rounds)
        before = memory(kwin).anonymous
        curtain = session.start_curtain()
        report("KWin: memory of its own with the script", memory(kwin).anonymous - before, "MiB", 2)
        switching(session, 1, rounds)
        coming_back(session, rounds)
        idling(curtain, kwin)
        session.toggle()
        wait_until(lambda: session.all_have(False), "all are shown")
        session.open_more(MANY - 1)
        switching(session, MANY, rounds)
        session.desktop.end_programs()


if __name__ == "__main__":
    main()
