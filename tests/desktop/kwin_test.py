"""Checks privacy mode in a Wayland session of KWin, with programs of X11 and of Wayland.

It runs with --session kwin.
"""

import json
import os
import re
import signal
import unittest
from contextlib import contextmanager
from pathlib import Path

from desktop_case import (EDITOR_COLOURS, MOUSEPAD, SHORTCUT, URXVT_COLOUR, XTERM, XTERM_COLOUR, DesktopCase, Display,
                          Rectangle, stays, wait_until, write_preferences)
from kwin_scripts import KWinScripts, gdbus, owner_of_shortcut, scripting

WIDTH, HEIGHT = 1280, 800
SCRIPT = "curtain-windows"
F11 = 95
# A script that does nothing.
OTHER_SCRIPT = "workspace.currentDesktop;\n"
# It reports to nobody, but over the bus.
TELLING_OF_SWITCHERS = """\
(workspace.windowList ? workspace.windowList() : workspace.clientList()).forEach(function (window) {
    function tell() {
        callDBus("org.freedesktop.DBus", "/", "com.example.Switcher", "Window",
                 JSON.stringify([String(window.resourceClass).toLowerCase(), window.skipSwitcher]));
    }
    window.skipSwitcherChanged.connect(tell);
    tell();
});
"""
TAKING_OUT_OF_SWITCHER = """\
(workspace.windowList ? workspace.windowList() : workspace.clientList()).forEach(function (window) {
    if (String(window.resourceClass).toLowerCase().indexOf("mousepad") >= 0) {
        window.skipSwitcher = true;
    }
});
"""


class KWinTest(KWinScripts, DesktopCase):
    def setUp(self):
        super().setUp()
        self.screen = Display(os.environ["VIRTUAL_DESKTOP_SCREEN"])
        self.addCleanup(self.screen.close)

    def pixels(self):
        pixels = bytearray(self.screen.pixels(Rectangle(0, 0, WIDTH, HEIGHT)))
        # Programs leave anything in the padding.
        pixels[3::4] = bytes(WIDTH * HEIGHT)
        return bytes(pixels)

    def seen(self):
        """Which of the programs are seen."""
        pixels = self.pixels()

        def shows(colour):
            red, green, blue = bytes.fromhex(colour[1:])
            return bytes((blue, green, red, 0)) * 50 in pixels
        colours = {"xterm": (XTERM_COLOUR,), "editor": EDITOR_COLOURS, "urxvt": (URXVT_COLOUR,)}
        return {program for program, choice in colours.items() if any(map(shows, choice))}

    def wait_seen(self, *programs):
        wait_until(lambda: self.seen() == set(programs), f"{programs} are seen", seen=self.seen)

    def act(self, action):
        gdbus("com.curtain.Curtain", "/com/curtain/Curtain", "org.freedesktop.Application.ActivateAction", action, "[]", "{}")

    def toggle_privacy(self):
        self.act("toggle-privacy")

    def open_programs(self):
        """A terminal of X11's and an editor of Wayland's, which are private, and another terminal beside them."""
        self.start_urxvt(x=30, y=30)
        self.wait_seen("urxvt")
        self.start_editor()
        self.wait_seen("editor", "urxvt")
        self.start_xterm(x=820, y=520)
        self.wait_seen("xterm", "editor", "urxvt")

    def start_editor(self):
        return self.desktop.start("mousepad", "--disable-server", environment={"DISPLAY": None, "GSETTINGS_BACKEND": "memory"})

    def watch_bus(self, interface):
        monitor = self.desktop.start("dbus-monitor", "--session", f"interface='{interface}'")
        wait_until(lambda: "NameAcquired" in monitor.output() or "NameLost" in monitor.output(), "the bus is watched",
                   seen=monitor.output)
        return monitor

    def start_curtain_for(self, *apps):
        write_preferences(self.settings, targetApps=apps, hasOnboarded=True, autoDetectEnabled=False)
        self.reports = reports = self.watch_bus("com.curtain.KWinWindows")
        self.start_curtain()
        # What the bus carries after that, Curtain hears after that.
        wait_until(lambda: '"event":"list"' in reports.output(), "Curtain is told of the windows", seen=reports.output)

    def settled_pixels(self):
        """Titles fade when the focus changes."""
        def settled():
            pixels = self.pixels()
            return pixels if stays(lambda: self.pixels() == pixels) else None
        return wait_until(settled, "the screen is quiet", seen=self.seen)

    def choose_editor(self):
        self.choose("mousepad")

    def test_windows_of_both_kinds_are_hidden_and_come_back_as_they_were(self):
        self.open_programs()
        before = self.settled_pixels()
        self.start_curtain_for(XTERM, MOUSEPAD)
        for _ in range(2):
            self.toggle_privacy()
            self.wait_seen("urxvt")
            self.toggle_privacy()
            wait_until(lambda: self.pixels() == before, "the screen is as it was", seen=self.seen)

    def told(self):
        """What KWin has told of its windows, each as it was then."""
        texts = re.findall(r'^ *string "({.*})"$', self.reports.output(), re.MULTILINE)
        reports = [json.loads(text) for text in texts]
        return [window for report in reports for window in report.get("windows", [report.get("window")]) if window]

    def minimised(self):
        last = {window["id"]: window["isMinimized"] for window in self.told()}
        return {window for window, is_minimised in last.items() if is_minimised}

    def editors(self):
        return {window["id"] for window in self.told() if "mousepad" in window["class"].lower()}

    def wait_minimised(self, count):
        wait_until(lambda: len(self.minimised()) == count, f"{count} windows are minimised", seen=self.told)

    def have_come_and_gone(self, count_before):
        """Windows that were minimised. They may be on the screen too shortly to be seen."""
        back = {window["id"] for window in self.told()[count_before:] if not window["isMinimized"]}
        return back and back <= self.minimised()

    def open_editor_that_hides(self):
        before = self.editors()
        self.start_editor()
        wait_until(lambda: self.editors() - before, "an editor opens", seen=self.told)
        wait_until(lambda: self.editors() - before <= self.minimised(), "it is hidden", seen=self.told)

    def test_what_its_user_brings_back_is_hidden_again(self):
        self.open_programs()
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        xterm = next(window for window in self.desktop.windows() if "XTerm" in window.window_class)
        for bring_back in (xterm.raise_from_task_list, self.choose_editor):
            self.wait_minimised(2)
            before = len(self.told())
            bring_back()
            wait_until(lambda: self.have_come_and_gone(before), "it comes back and goes", seen=self.told)
            self.wait_seen("urxvt")
            self.assertTrue(stays(lambda: self.seen() == {"urxvt"}))

    def test_a_further_instance_is_hidden_and_comes_back_with_its_app(self):
        self.open_programs()
        self.start_curtain_for(MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("xterm", "urxvt")
        self.open_editor_that_hides()
        self.wait_seen("xterm", "urxvt")
        self.toggle_privacy()
        self.wait_seen("xterm", "editor", "urxvt")

    def test_a_script_that_is_unloaded_is_loaded_again(self):
        self.open_programs()
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        self.assertIn("true", scripting("unloadScript", SCRIPT))
        wait_until(lambda: "true" in scripting("isScriptLoaded", SCRIPT), "the script is loaded again")
        self.open_editor_that_hides()
        self.wait_seen("urxvt")

    def test_scripts_of_others_that_come_and_go_do_not_matter(self):
        # Scripts get numbers, and the number of the third one may be that of the second.
        for name in ("other-1", "other-2"):
            self.run_script(name, OTHER_SCRIPT)
        scripting("unloadScript", "other-1")
        self.test_windows_of_both_kinds_are_hidden_and_come_back_as_they_were()

    def test_a_script_that_somebody_else_runs_under_its_name_gives_way(self):
        self.run_script(SCRIPT, OTHER_SCRIPT)
        self.test_windows_of_both_kinds_are_hidden_and_come_back_as_they_were()

    def test_a_window_comes_back_on_its_own_desktop(self):
        self.open_programs()
        xterm = next(window for window in self.desktop.windows() if "XTerm" in window.window_class)
        xterm.send_to_workspace(1)
        self.wait_seen("editor", "urxvt")
        before = self.settled_pixels()
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        self.wait_minimised(2)
        self.toggle_privacy()
        wait_until(lambda: self.pixels() == before and not self.minimised(), "the screen is as it was", seen=self.seen)
        self.assertEqual((xterm.workspace, self.desktop.workspace), (1, 0))
        # The next test starts on the first one.
        self.addCleanup(setattr, self.desktop, "workspace", 0)
        self.desktop.workspace = 1
        self.wait_seen("xterm")

    def test_what_fills_the_screen_fills_it_again(self):
        self.start_urxvt(x=30, y=30)
        self.wait_seen("urxvt")
        self.start_editor()
        self.wait_seen("editor", "urxvt")
        self.screen.strike(F11)
        self.wait_seen("editor")
        before = self.settled_pixels()
        self.start_curtain_for(MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        self.toggle_privacy()
        wait_until(lambda: self.pixels() == before, "the editor fills the screen", seen=self.seen)
        # It remembers that.
        self.screen.strike(F11)
        self.wait_seen("editor", "urxvt")

    @contextmanager
    def kwin_stopped(self):
        process = int((Path(os.environ["VIRTUAL_DESKTOP_PIDS"]) / "kwin_wayland").read_text())
        os.kill(process, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(process, signal.SIGCONT)

    def test_what_is_asked_while_kwin_does_not_answer_is_done_when_it_does(self):
        self.open_programs()
        self.start_curtain_for(XTERM, MOUSEPAD)
        for asked, seen in ((1, {"urxvt"}), (1, {"xterm", "editor", "urxvt"}), (2, {"xterm", "editor", "urxvt"})):
            before = self.requests_done()
            with self.kwin_stopped():
                for _ in range(asked):
                    self.toggle_privacy()
            wait_until(lambda: self.requests_done() - before >= asked, "KWin does what it was asked for", seen=self.reports.output)
            self.wait_seen(*seen)

    def requests_done(self):
        return self.reports.output().count('"event":"done"')

    def watch_switchers(self):
        self.switchers = self.watch_bus("com.example.Switcher")
        self.run_script("switchers", TELLING_OF_SWITCHERS)
        wait_until(lambda: set(self.told_of_switchers()) == {"xterm", "urxvt", "editor"}, "KWin tells of the switchers",
                   seen=self.switchers.output)

    def told_of_switchers(self):
        """Of each program, whether KWin's switchers leave it out. Notices have windows too."""
        told = map(json.loads, re.findall(r'^ *string "(\[.*\])"$', self.switchers.output(), re.MULTILINE))
        programs = {"xterm": "xterm", "urxvt": "urxvt", "mousepad": "editor", "org.xfce.mousepad": "editor"}
        return {programs[window]: is_out for window, is_out in told if window in programs}

    def out_of_switchers(self):
        return {program for program, is_out in self.told_of_switchers().items() if is_out}

    def wait_out_of_switchers(self, *programs):
        wait_until(lambda: self.out_of_switchers() == set(programs), f"{programs} are left out of switchers",
                   seen=self.switchers.output)

    def hide_with_switchers_watched(self):
        self.open_programs()
        self.watch_switchers()
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        self.wait_out_of_switchers("xterm", "editor")

    def test_switchers_leave_out_what_is_hidden(self):
        self.hide_with_switchers_watched()
        self.toggle_privacy()
        self.wait_seen("xterm", "editor", "urxvt")
        self.wait_out_of_switchers()

    def test_a_window_that_was_in_no_switcher_is_in_none_afterwards(self):
        self.open_programs()
        self.watch_switchers()
        self.run_script("take-out", TAKING_OUT_OF_SWITCHER)
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.toggle_privacy()
        self.wait_seen("urxvt")
        self.toggle_privacy()
        self.wait_seen("xterm", "editor", "urxvt")
        self.wait_out_of_switchers("editor")
        self.assertTrue(stays(lambda: self.out_of_switchers() == {"editor"}))

    def test_what_stays_hidden_at_the_end_is_in_switchers(self):
        self.hide_with_switchers_watched()
        self.end_curtain()
        self.wait_out_of_switchers()
        self.wait_seen("urxvt")

    def test_after_a_kill_what_is_brought_back_is_in_switchers_and_the_next_one_takes_it_up(self):
        self.hide_with_switchers_watched()
        curtain, self.curtain = self.curtain, None
        curtain.kill()
        curtain.wait()
        self.choose_editor()
        self.wait_seen("editor", "urxvt")
        self.wait_out_of_switchers("xterm")
        # The next one takes privacy mode up, and hides what has been brought back.
        self.start_curtain_for(XTERM, MOUSEPAD)
        self.wait_seen("urxvt")
        self.wait_out_of_switchers("xterm", "editor")
        self.toggle_privacy()
        self.wait_seen("xterm", "editor", "urxvt")
        self.wait_out_of_switchers()

    def test_the_shortcut_is_heard_while_a_window_of_wayland_has_the_focus(self):
        self.start_xterm(x=820, y=520)
        self.wait_seen("xterm")
        self.start_editor()
        self.wait_seen("xterm", "editor")
        self.start_curtain_for(XTERM)
        wait_until(lambda: "'curtain'" in owner_of_shortcut(), "Curtain has the shortcut", seen=owner_of_shortcut)
        self.screen.strike(*SHORTCUT)
        self.wait_seen("editor")
        self.screen.strike(*SHORTCUT)
        self.wait_seen("xterm", "editor")
        self.end_curtain()
        wait_until(lambda: "'curtain'" not in owner_of_shortcut(), "the shortcut is free", seen=owner_of_shortcut)

    def test_no_script_is_left_at_the_end(self):
        self.start_curtain_for(XTERM)
        wait_until(lambda: "true" in scripting("isScriptLoaded", SCRIPT), "the script is loaded")
        self.end_curtain()
        wait_until(lambda: "false" in scripting("isScriptLoaded", SCRIPT), "the script is gone")


if __name__ == "__main__":
    unittest.main()
