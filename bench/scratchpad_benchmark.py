"""How long privacy mode takes in i3 and sway, beside a bare client of their socket, and what it costs meanwhile.

usage: scratchpad_benchmark.py CURTAIN [ROUNDS]      with --session sway or x11-i3

Curtain is asked by its shortcut. A window has gone or come when the window manager tells of it. The bare client sends one message with a
command for each window. The windows are those of terminals of X11's. The figures are for people to read; nothing passes or fails by them.
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
from desktop_driver import SHORTCUT, XTERM, Desktop, Display, wait_until, write_preferences  # noqa: E402
from figures import report  # noqa: E402
from i3_driver import RUN_COMMAND, SCRATCHPAD, SUBSCRIBE, I3, windows  # noqa: E402
from process_costs import memory, seconds_at_work, switches  # noqa: E402

SCRIPTS = Path(__file__).resolve().parents[1] / "scripts"
MANY = 20
REHIDE_DELAY_MS = 200
DEADLINE_SECONDS = 30
SETTLE_SECONDS = 5
HEARING_SECONDS = 0.5
IDLE_SECONDS = 30
NAME = {"x11-i3": "i3"}.get(os.environ["VIRTUAL_DESKTOP_SESSION"], os.environ["VIRTUAL_DESKTOP_SESSION"])

# Not so where the memory on X11 is measured.
IS_HERE = NAME in {"i3", "sway"}


def milliseconds(begin, end):
    return (end - begin) * 1000


class Curtain:
    def __init__(self, program, desktop, scratch):
        settings = scratch / "settings"
        settings.mkdir()
        write_preferences(settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=False)
        self._screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.pid = desktop.start(program, environment={"XDG_CONFIG_HOME": str(settings)}).pid

    def toggle(self):
        """Does not wait until it has been done."""
        self._screen.strike(*SHORTCUT)

    @staticmethod
    def act():
        """The same without the shortcut, which may not be heard yet."""
        return subprocess.run(["gdbus", "call", "--session", "--dest", "com.curtain.Curtain", "--object-path", "/com/curtain/Curtain",
                               "--method", "org.freedesktop.Application.ActivateAction", "toggle-privacy", "[]", "{}"],
                              capture_output=True, check=False).returncode == 0

    def wait_until_started(self, are_hidden):
        """`are_hidden` tells of the windows, of which there are some. They have been hidden once then."""
        for expected in (True, False):
            wait_until(self.act, "Curtain is on the bus")
            wait_until(lambda state=expected: are_hidden() == state, f"the windows are {'hidden' if expected else 'shown'}")


def open_more(desktop, count):
    total = len(places()) + count
    for _ in range(count):
        desktop.start("xterm", "-e", "cat")
    wait_until(lambda: len(places()) == total, f"{total} windows are open", seen=places)


def moved(events, count):
    """When the last of so many windows went to another place."""
    last = None
    for _ in range(count):
        while events.next_event(DEADLINE_SECONDS)["change"] != "move":
            pass
        last = time.monotonic()
    return last


def moving(count, ask):
    """How long it takes until so many windows have moved."""
    with I3() as events:
        events.ask(SUBSCRIBE, '["window"]')
        begin = time.monotonic()
        ask()
        return milliseconds(begin, moved(events, count))


def places():
    return {node["id"]: workspace for node, workspace in windows()}


def are_all(are_hidden):
    return all((workspace == SCRATCHPAD) == are_hidden for workspace in places().values())


def wait_all(are_hidden):
    wait_until(lambda: are_all(are_hidden), f"all are {'hidden' if are_hidden else 'shown'}", seen=places)


def bare(command):
    with I3() as client:
        client.ask(RUN_COMMAND, "; ".join(f"[con_id={window}] {command}" for window in places()))


def switching(curtain, count, rounds):
    times = {"Curtain": [], "bare": [], "back": []}
    for _ in range(rounds):
        # Curtain gives sizes and the focus back after the windows.
        time.sleep(HEARING_SECONDS)
        with I3() as client:
            commands = "; ".join(f"[con_id={window}] move scratchpad" for window in places())
            times["bare"].append(moving(count, lambda: client.ask(RUN_COMMAND, commands)))
        wait_all(True)
        bare("move container to workspace 1, floating disable")
        wait_all(False)
        # Curtain hears of it a moment later, and nothing tells when.
        time.sleep(HEARING_SECONDS)
        times["Curtain"].append(moving(count, curtain.toggle))
        wait_all(True)
        begin = time.monotonic()
        curtain.toggle()
        wait_all(False)
        times["back"].append(milliseconds(begin, time.monotonic()))
    on, alone = statistics.median(times["Curtain"]), statistics.median(times["bare"])
    report(f"{NAME}: switch-on of {count} until the last has gone", on, "ms", most=max(times["Curtain"]), bare_client=alone)
    report(f"{NAME}: the same as a share of the bare client's", on / alone, "", 1.2)
    report(f"{NAME}: switch-off of {count} until the last is back", statistics.median(times["back"]), "ms", most=max(times["back"]))


def coming_back(curtain, rounds):
    late = []
    curtain.toggle()
    wait_all(True)
    for _ in range(rounds):
        window, = places()
        with I3() as client:
            begin = time.monotonic()
            client.ask(RUN_COMMAND, f"[con_id={window}] scratchpad show")
        wait_until(lambda: are_all(True), "it is hidden again", pause=0.001)
        late.append(milliseconds(begin, time.monotonic()) - REHIDE_DELAY_MS)
        # It may have been told to hide more than once, and each of that counts from when it came.
        time.sleep(HEARING_SECONDS)
    report(f"{NAME}: what is brought back is seen for the rule's delay of 200 ms and", statistics.median(late), "ms", 20, most=max(late))


def idling(curtain):
    time.sleep(SETTLE_SECONDS)
    before, worked = switches(curtain.pid), seconds_at_work(curtain.pid)
    # What is measured is that nothing happens.
    time.sleep(IDLE_SECONDS)
    after = switches(curtain.pid)
    report(f"{NAME}: wake-ups in privacy mode", (sum(after.values()) - sum(before.get(name, 0) for name in after)) / IDLE_SECONDS, "a second",
           work_ms=(seconds_at_work(curtain.pid) - worked) * 1000 / IDLE_SECONDS)


def memory_at_rest(program):
    """With one window that is private and has been hidden once."""
    with tempfile.TemporaryDirectory() as scratch:
        desktop = Desktop(Path(scratch))
        desktop.start("xterm", "-e", "cat")
        wait_until(desktop.windows, "a window is open")
        curtain = Curtain(program, desktop, Path(scratch))
        curtain.wait_until_started(lambda: are_all(True) if IS_HERE else all(window.is_hidden for window in desktop.windows()))
        time.sleep(SETTLE_SECONDS)
        used = memory(curtain.pid).anonymous
        desktop.end_programs()
        return used


def memory_on_x11(program):
    command = [SCRIPTS / "virtual-desktop", "--", sys.executable, "-B", __file__, "--memory", program]
    environment = {name: value for name, value in os.environ.items() if name != "SWAYSOCK"}
    return float(subprocess.run(command, check=True, capture_output=True, text=True, env=environment).stdout)


def main():
    if sys.argv[1] == "--memory":
        print(memory_at_rest(sys.argv[2]))
        return
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    here, there = memory_at_rest(program), memory_on_x11(program)
    report(f"{NAME}: memory above that on X11", here - there, "MiB", 3, here=here, on_X11=there)
    with tempfile.TemporaryDirectory() as scratch:
        desktop = Desktop(Path(scratch))
        wait_until(lambda: not places(), "no window is left")
        # Curtain gives back what was there before the switch-on, so it has to know of that.
        open_more(desktop, 1)
        curtain = Curtain(program, desktop, Path(scratch))
        curtain.wait_until_started(lambda: are_all(True))
        switching(curtain, 1, rounds)
        coming_back(curtain, rounds)
        idling(curtain)
        curtain.toggle()
        wait_all(False)
        open_more(desktop, MANY - 1)
        switching(curtain, MANY, rounds)
        desktop.end_programs()


if __name__ == "__main__":
    main()
