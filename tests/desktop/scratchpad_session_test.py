"""Checks privacy mode in i3 and sway, where windows are put into the scratchpad, with other people's programs.

It looks at the layout as the window manager tells it, and at the screen that the whole session stands on. It runs with
--accessibility and --tray sni.
"""

import os
import signal
import unittest
from pathlib import Path

import popover_window
from desktop_case import MOUSEPAD, Rectangle, SHORTCUT, XTERM, XTERM_COLOUR, stays, wait_until, write_preferences
from i3_driver import GET_TREE, GET_WORKSPACES, RUN_COMMAND, SCRATCHPAD, ask, class_of, windows
from session_case import ESCAPE, FOOT, FOOT_COLOUR, HEIGHT, SESSION, WIDTH, X11_WINDOWS_ONLY

IS_SWAY = SESSION == "sway"
# What a person sees of a container.
SEEN = ("layout", "fullscreen_mode", "sticky")


def picture(node=None):
    """The layout without its numbers, by the classes of the windows."""
    node = node or ask(GET_TREE)
    if node["type"] == "dockarea":
        return None
    is_window = node["type"] in {"con", "floating_con"} and (node.get("window") or node.get("pid"))
    name = class_of(node) if is_window and not node["nodes"] else node["name"] if node["type"] == "workspace" else ""
    return [name, node["type"], node["rect"], node["focused"], [node[key] for key in SEEN],
            [picture(child) for child in node["nodes"]], [picture(child) for child in node["floating_nodes"]]]


class ScratchpadSessionTest(popover_window.HidingSessionCase):
    foot_states = ("Visible", "Hidden") if IS_SWAY else ("Not running", "Not running")

    def setUp(self):
        super().setUp()
        wait_until(lambda: not list(windows()), "no window is left", seen=lambda: list(windows()))
        self.do("workspace 1")

    def tearDown(self):
        super().tearDown()
        # i3 goes on naming windows that end in the scratchpad.
        for node, workspace in windows():
            if workspace == SCRATCHPAD:
                self.do(f"[con_id={node['id']}] move container to workspace 1")

    def do(self, commands):
        answers = ask(RUN_COMMAND, commands)
        self.assertTrue(all(answer["success"] for answer in answers), (commands, answers))

    def write_private_apps(self, *apps):
        # On X11 the pictures that this test takes of the screen count as a share of it.
        return write_preferences(self.settings, targetApps=apps, hasOnboarded=True, autoDetectEnabled=False)

    def wait_until_ready(self, curtain):
        def is_ready():
            self.assertIsNone(curtain.poll(), curtain.complaints())
            return self.is_on_bus()
        wait_until(is_ready, "Curtain is on the bus")

    def workspace_of(self, window_class):
        return next((workspace for node, workspace in windows() if class_of(node) == window_class), None)

    def is_focused(self, window_class):
        return any(node["focused"] and class_of(node) == window_class for node, _ in windows())

    def wait_focused(self, window_class):
        wait_until(lambda: self.is_focused(window_class), f"{window_class} has the focus", seen=picture)

    def open_three(self):
        """A terminal that is private, one of Wayland that is private too where there is Wayland, and one that is not."""
        self.start_xterm()
        wait_until(lambda: self.shows(XTERM_COLOUR), "the private terminal is on the screen", seen=picture)
        self.wait_focused("XTerm")
        if IS_SWAY:
            self.start_foot(FOOT_COLOUR)
            self.wait_focused("foot")
        self.start_urxvt()
        self.wait_focused("URxvt")
        self.do('[class="XTerm"] resize grow right 90 px')

    def wait_hidden(self):
        workspaces = {"XTerm": SCRATCHPAD, "foot": SCRATCHPAD if IS_SWAY else None, "URxvt": "1"}
        wait_until(lambda: not self.shows(XTERM_COLOUR) and not self.shows(FOOT_COLOUR) and
                   all(self.workspace_of(name) == workspace for name, workspace in workspaces.items()),
                   "the private apps are hidden", seen=picture)

    def test_hides_exactly_the_private_apps_and_gives_them_back(self):
        self.open_three()
        before = picture()
        self.start_curtain(XTERM, FOOT)
        for _ in range(3):
            self.toggle()
            self.wait_hidden()
            self.toggle()
            wait_until(lambda: self.shows(XTERM_COLOUR) and self.shows(FOOT_COLOUR) == IS_SWAY, "they are back",
                       seen=picture)
            # The app that is given back comes to the front, which is the last thing that happens.
            wait_until(lambda: stays(lambda: not self.is_focused("URxvt")), "another app has the focus", seen=picture)
            self.do('[class="URxvt"] focus')
            wait_until(lambda: picture() == before, f"everything is as before: {before}", seen=picture)

    def test_hides_again_what_its_user_brings_up(self):
        self.open_three()
        self.start_curtain(XTERM, FOOT)
        self.toggle()
        self.wait_hidden()
        for _ in range(3):
            self.do('[class="XTerm"] scratchpad show')
            self.wait_hidden()
            self.assertTrue(stays(lambda: self.workspace_of("XTerm") == SCRATCHPAD))

    @unittest.skipUnless(IS_SWAY, "there is no Wayland")
    def test_a_program_of_gtk_on_wayland_is_known_by_its_entry(self):
        self.start_mousepad()
        wait_until(lambda: self.workspace_of("mousepad") == "1", "the editor is open", seen=picture)
        self.assertFalse(any(node.get("window") for node, _ in windows()), "it came over X11")
        before = picture()
        self.start_curtain(MOUSEPAD)
        for _ in range(3):
            self.toggle()
            wait_until(lambda: self.workspace_of("mousepad") == SCRATCHPAD, "it is hidden", seen=picture)
            self.toggle()
            wait_until(lambda: picture() == before, f"everything is as before: {before}", seen=picture)

    def test_the_shortcut_is_heard_wherever_the_focus_is(self):
        self.open_three()
        self.start_curtain(XTERM, FOOT)
        # It comes into the tray when it has begun to listen.
        self.icon()
        self.do('[app_id="foot"] focus' if IS_SWAY else '[class="XTerm"] focus')
        self.screen.strike(*SHORTCUT)
        self.wait_hidden()
        self.screen.strike(*SHORTCUT)
        wait_until(lambda: self.shows(XTERM_COLOUR) and self.shows(FOOT_COLOUR) == IS_SWAY, "they are back", seen=picture)

    def test_the_settings_say_nothing_of_where_the_shortcut_is_heard(self):
        self.start_curtain()
        self.act("settings")
        self.wait_lines("hotkey field: Global shortcut:")
        self.assertTrue(stays(lambda: X11_WINDOWS_ONLY not in self.lines()), self.lines())

    def test_hides_what_is_opened_meanwhile(self):
        self.start_curtain(XTERM, FOOT)
        self.toggle()
        if IS_SWAY:
            self.desktop.start("foot", "--", "cat")
        else:
            self.start_xterm()
        wait_until(lambda: [workspace for _, workspace in windows()] == [SCRATCHPAD], "it is hidden", seen=picture)

    def kill_curtain(self):
        curtain, self.curtain = self.curtain, None
        curtain.send_signal(signal.SIGKILL)
        curtain.wait()

    def test_after_a_crash_the_next_one_gives_back_what_was_hidden(self):
        self.open_three()
        before = picture()
        self.start_curtain(XTERM, FOOT)
        self.toggle()
        self.wait_hidden()
        self.kill_curtain()
        self.start_curtain()
        wait_until(lambda: self.icon() == "close", "privacy mode is on")
        self.assertTrue(stays(lambda: self.workspace_of("XTerm") == SCRATCHPAD))
        self.do('[class="XTerm"] scratchpad show')
        self.wait_hidden()
        self.toggle()
        wait_until(lambda: self.shows(XTERM_COLOUR) and self.shows(FOOT_COLOUR) == IS_SWAY, "they are back", seen=picture)
        wait_until(lambda: stays(lambda: not self.is_focused("URxvt")), "another app has the focus", seen=picture)
        self.do('[class="URxvt"] focus')
        wait_until(lambda: picture() == before, f"everything is as before: {before}", seen=picture)

    def test_what_was_hidden_survives_a_crash(self):
        self.open_three()
        self.start_curtain(XTERM, FOOT)
        self.toggle()
        self.wait_hidden()
        self.kill_curtain()
        self.assertEqual(self.workspace_of("XTerm"), SCRATCHPAD)
        # Its user gets at it as at everything in the scratchpad.
        self.do('[class="XTerm"] scratchpad show')
        wait_until(lambda: self.shows(XTERM_COLOUR), "the private terminal is on the screen", seen=picture)

    @unittest.skipUnless(IS_SWAY, "there is no Wayland")
    def test_a_recorder_of_wayland_switches_privacy_mode_on(self):
        self.open_three()
        write_preferences(self.settings, targetApps=[XTERM, FOOT], hasOnboarded=True, autoDetectEnabled=True)
        self.start_curtain()
        self.assertTrue(self.shows(XTERM_COLOUR))
        self.desktop.start("wf-recorder", "--no-damage", "--file", str(self.scratch / "film.mkv"))
        self.wait_hidden()

    # What closes the popover

    def test_another_workspace_closes_the_popover_and_one_that_ends_does_not(self):
        terminal = self.start_urxvt()
        self.wait_focused("URxvt")
        self.do("workspace 2")
        self.open_popover_on_a_bare_desktop()
        terminal.terminate()
        wait_until(lambda: "1" not in self.workspaces(), "the first workspace has ended", seen=self.workspaces)
        self.assertTrue(stays(self.place_of_popover, 1))
        self.do("workspace 3")
        self.wait_closed()
        # i3 goes on naming a window that ends out of view until another one ends.
        self.open_popover()
        self.screen.strike(ESCAPE)
        self.wait_closed()

    @staticmethod
    def workspaces():
        return [workspace["name"] for workspace in ask(GET_WORKSPACES)]

    def open_popover_on_a_bare_desktop(self):
        write_preferences(self.settings, hasOnboarded=True, autoDetectEnabled=False)
        self.start_curtain()
        return self.open_popover()

    def test_a_click_on_the_bare_desktop_closes_the_popover(self):
        place = self.open_popover_on_a_bare_desktop()
        self.click_at(place.x // 2, HEIGHT - 40)
        self.wait_closed()

    @unittest.skipUnless(IS_SWAY, "there is no Wayland")
    def test_a_click_on_a_window_of_wayland_closes_the_popover(self):
        self.start_foot(FOOT_COLOUR)
        self.open_popover_on_a_bare_desktop()
        self.click_at(*self.place_of(FOOT_COLOUR))
        self.wait_closed()

    # Where the popover stands

    def start_bar(self, position):
        """sway's own, after which the configuration is as before."""
        configuration = Path(os.environ["HOME"], ".config/sway/config")
        before = configuration.read_text()
        self.addCleanup(self.do, "reload")
        self.addCleanup(configuration.write_text, before)
        configuration.write_text(f"{before}\nbar {{\n position {position}\n swaybar_command swaybar\n}}\n")
        self.do("reload")
        wait_until(lambda: self.free_part().height < HEIGHT, "the bar is there", seen=self.free_part)

    def free_part(self):
        return next(Rectangle(**workspace["rect"]) for workspace in ask(GET_WORKSPACES) if workspace["visible"])

    def places_while_it_opens(self, x, y):
        """Where the popover was seen after a click on the icon there, until it had long been in one place."""
        places = set()

        def is_in_one_place():
            place = self.place_of_popover()
            places.update({place} - {None})
            return place in places
        self.click_icon(x, y)
        wait_until(is_in_one_place, "the popover is on the screen")
        self.assertTrue(stays(is_in_one_place, 1))
        return places

    @unittest.skipUnless(IS_SWAY, "i3 leaves windows where they want to be")
    def test_the_popover_stands_in_the_corner_where_no_bar_is(self):
        self.start_with_private_terminals()
        (place,) = self.places_while_it_opens(640, 400)
        self.assertTrue(6 <= place.y <= 8 and WIDTH - 10 <= place.x + place.width <= WIDTH - 8, place)

    @unittest.skipUnless(IS_SWAY, "i3 leaves windows where they want to be")
    def test_the_popover_hangs_below_the_icon_in_a_bar_at_the_top(self):
        self.start_with_private_terminals()
        self.start_bar("top")
        bottom_of_bar = self.free_part().y
        (place,) = self.places_while_it_opens(700, 10)
        self.assertTrue(698 <= place.x + place.width // 2 <= 702, place)
        self.assertTrue(bottom_of_bar + 6 <= place.y <= bottom_of_bar + 8, place)

    @unittest.skipUnless(IS_SWAY, "i3 leaves windows where they want to be")
    def test_the_popover_stands_above_the_icon_in_a_bar_at_the_bottom(self):
        self.start_with_private_terminals()
        self.start_bar("bottom")
        top_of_bar = self.free_part().height
        (place,) = self.places_while_it_opens(600, HEIGHT - 10)
        self.assertTrue(598 <= place.x + place.width // 2 <= 602, place)
        self.assertTrue(top_of_bar - 8 <= place.y + place.height <= top_of_bar - 6, place)


if __name__ == "__main__":
    unittest.main()
