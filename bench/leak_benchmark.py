"""In how many pictures of a capture, sixty a second, something of a private app is to be seen.

usage: leak_benchmark.py CURTAIN [ROUNDS]
in a virtual desktop of X11, with LEAK_METER_PROGRAMS as in leak_meter.py

The figures are for people to read; nothing passes or fails by them.
"""

import statistics
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "scripts"))
# pylint: disable=wrong-import-position
from desktop_driver import SHORTCUT, SHORTCUT_MASK, XTERM, Desktop, Key, wait_until, write_preferences
from leak_meter import LeakMeter, PaintedProgram

# So long nothing may be seen before a trial counts as over.
CLEAN_FRAMES = 12
# How long menus and tool tips are there.
POPUP_FRAMES = 30
DETECTION_ROUNDS = 5


class Session:
    """Curtain and a private app with one window."""

    def __init__(self, desktop, program, scratch, **preferences):
        self.desktop = desktop
        self.display = desktop.display
        self.scratch = scratch
        settings = Path(tempfile.mkdtemp(dir=scratch))
        write_preferences(settings, **({"targetApps": [XTERM], "hasOnboarded": True, "autoDetectEnabled": False} | preferences))
        self.app = PaintedProgram(self.display)
        self.window = self.app.tell("window")
        self.wait_shown()
        self.curtain = desktop.start(program, environment={"XDG_CONFIG_HOME": str(settings)})
        wait_until(lambda: self.display.is_key_taken(Key.H, SHORTCUT_MASK), "Curtain waits for its shortcut")

    def end(self):
        self.curtain.terminate()
        self.curtain.wait(10)
        self.app.end()
        wait_until(lambda: not self.desktop.windows(), "the windows are gone")

    def strike(self):
        """Returns when the keys were let go."""
        self.display.strike(*SHORTCUT)
        self.display.modifiers()
        return time.monotonic()

    def wait_hidden(self, *others):
        for window in (self.window, *others):
            wait_until(lambda: window.is_hidden and not self.display.is_viewable(window.id), f"{window} is hidden",
                       seen=self.desktop.describe)

    def wait_shown(self):
        wait_until(lambda: not self.window.is_hidden and self.display.is_viewable(self.window.id), "the window is shown",
                   seen=self.desktop.describe)

    def wait_hidden_again(self):
        """It may be shown too shortly to be seen, but Curtain only asks to hide what it sees."""
        wait_until(lambda: self.display.has_request(self.window.id, "WM_CHANGE_STATE"), "Curtain asks to hide the window")
        self.wait_hidden()


class Scenarios:
    """Each returns since when nothing was to be seen any more, and waits until the last of it is over."""

    def __init__(self, session, meter):
        self.session = session
        self.meter = meter
        session.display.watch_requests()

    def switched_on_by_key(self):
        self.session.strike()
        self.session.wait_shown()
        self.meter.wait_for(3, are_clean=False)
        moment = self.session.strike()
        self.session.wait_hidden()
        return moment

    def given_back_and_hidden_at_once(self):
        self.session.strike()
        moment = self.session.strike()
        self.session.wait_hidden()
        return moment

    def chosen_in_the_task_list(self):
        return self._returning(self.session.window.raise_from_task_list)

    def comes_back_by_itself(self):
        return self._returning(lambda: self.session.app.tell("return"))

    def _returning(self, come_back):
        # What was asked before does not count.
        self.session.display.has_request(self.session.window.id, "WM_CHANGE_STATE")
        moment = time.monotonic()
        come_back()
        self.session.wait_hidden_again()
        return moment

    def new_window(self):
        return self._opening("window")

    def new_dialog(self):
        return self._opening("dialog")

    def _opening(self, kind):
        moment = time.monotonic()
        window = self.session.app.tell(kind)
        self.session.wait_hidden(window)
        self.meter.wait_for(CLEAN_FRAMES)
        self.session.app.tell("close")
        return moment

    def new_process(self):
        moment = time.monotonic()
        program = PaintedProgram(self.session.display)
        self.session.wait_hidden(program.tell("window"))
        self.meter.wait_for(CLEAN_FRAMES)
        program.end()
        return moment

    def menu(self):
        return self._popping_up("menu")

    def tool_tip(self):
        return self._popping_up("tooltip")

    def _popping_up(self, kind):
        moment = time.monotonic()
        self.session.app.tell(kind)
        wait_until(lambda: len(self.meter.since(moment)) >= POPUP_FRAMES, "it was there for a while")
        self.session.app.tell("close")
        return moment

    def workspace_left_and_back(self):
        desktop = self.session.desktop
        moment = time.monotonic()
        here = desktop.workspace
        for number in (1 - here, here):
            desktop.workspace = number
        return moment

    def all(self):
        return (self.switched_on_by_key, self.given_back_and_hidden_at_once, self.chosen_in_the_task_list,
                self.comes_back_by_itself, self.new_window, self.new_dialog, self.new_process, self.menu, self.tool_tip,
                self.workspace_left_and_back)


def report(name, leaks):
    seen = sum(leak > 0 for leak in leaks)
    print(f"| {name} | {statistics.median(leaks):g} | {max(leaks)} | {seen} of {len(leaks)} |", flush=True)


def measure_scenarios(desktop, program, scratch, rounds):
    session = Session(desktop, program, scratch)
    desktop.display.send_to_window_manager(desktop.display.root, "_NET_NUMBER_OF_DESKTOPS", 2)
    meter = LeakMeter()
    scenarios = Scenarios(session, meter)
    session.strike()
    session.wait_hidden()
    for scenario in scenarios.all():
        leaks = []
        for _ in range(rounds):
            meter.wait_for(CLEAN_FRAMES)
            moment = scenario()
            meter.wait_for(CLEAN_FRAMES)
            leaks.append(meter.leaked_since(moment))
        report(scenario.__name__.replace("_", " "), leaks)
    print(f"captured at {meter.rate():.1f} pictures a second, {meter.pictures_missed()} of {len(meter.frames)} missed")
    meter.end()
    session.end()


def measure_detection(desktop, program, scratch):
    leaks = []
    for _ in range(DETECTION_ROUNDS):
        session = Session(desktop, program, scratch, autoDetectEnabled=True)
        meter = LeakMeter()
        session.wait_hidden()
        meter.wait_for(CLEAN_FRAMES)
        leaks.append(meter.leaked_since(0))
        meter.end()
        session.end()
    report("a capture begins", leaks)


def main():
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    with tempfile.TemporaryDirectory(prefix="curtain-benchmark-") as scratch:
        desktop = Desktop(scratch)
        print(f"load of the machine: {Path('/proc/loadavg').read_text().split()[0]}")
        print("| what happens | median | worst | trials with any |\n|---|---|---|---|")
        measure_scenarios(desktop, program, scratch, rounds)
        measure_detection(desktop, program, scratch)
        desktop.end_programs()


if __name__ == "__main__":
    main()
