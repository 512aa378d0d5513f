"""Drives the installed program from outside in every kind of tray. Runs in a virtual desktop without a tray.

usage: tray_test.py PREFIX [unittest options]
"""

import ast
import itertools
import os
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
from desktop_driver import Display, stays  # noqa pylint: disable=wrong-import-position

SUPPORT = Path(__file__).resolve().parents[1] / "support"
CURTAIN = None  # the program; main() fills it in
WATCHER = "org.kde.StatusNotifierWatcher"
PORTAL = "org.freedesktop.portal.Desktop"
TRAYER = ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28"]
DARK = ["--transparent", "true", "--tint", "0x202020", "--alpha", "0"]
TOGGLE = "ctrl+alt+super+h"
# What a click on the icon opens on a first start.
WIZARD = (420, 460)
# Numbers of events of the X server.
UNMAP_NOTIFY, MAP_NOTIFY = 18, 19
NO_BUS = "Curtain: there is no session bus, so the icon shows only in trays of X windows\n"

# Rows and columns of the status images, in units of 18: the first is ink only when the curtain is closed, the other always.
MIDDLE, ROD = (9, 9), (9, 3)

XFCE_PANEL = """\
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{is_dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
"""


class Window(NamedTuple):
    identifier: str
    width: int
    height: int
    x: int
    y: int
    depth: int  # below the root window

    def center(self):
        return self.x + self.width // 2, self.y + self.height // 2


def wait_until(condition, what, seconds=30, seen=None):
    """`seen` tells what there is in place of what is waited for."""
    deadline = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"did not happen in time: {what}; seen: {seen() if seen else answer}")
        time.sleep(0.01)
    return answer


def output(*argv):
    return subprocess.run(argv, check=True, stdout=subprocess.PIPE, timeout=30).stdout


def call(service, path, method, *arguments):
    """The values that a D-Bus method returns."""
    text = output("gdbus", "call", "--session", "--dest", service, "--object-path", path, "--method", method, "--",
                  *arguments).decode()
    # Python reads what is left of GVariant's notation when its types are taken out.
    text = re.sub(r"(?<![\w'])(?:@\S+|byte|u?int\d\d|objectpath) ", "", text)
    for notation, word in (("<", ""), (">", ""), ("true", "True"), ("false", "False")):
        text = text.replace(notation, word)
    return ast.literal_eval(text)


def has_owner(name):
    return call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.NameHasOwner", name)[0]


def window_tree():
    """A line for each window; asked again when windows went while the server was telling."""
    def tree():
        done = subprocess.run(["xwininfo", "-root", "-tree"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              timeout=30, text=True)
        return done.returncode == 0 and done.stdout.splitlines()

    return wait_until(tree, "a list of all windows")


def windows(instance, class_name):
    """What Curtain's windows of that class are, shown or not."""
    line = re.compile(rf'^( *)(0x\w+) "Curtain": \("{instance}" "{class_name}"\) +(\d+)x(\d+)\S+ +\+(-?\d+)\+(-?\d+)$')
    found = [line.match(entry) for entry in window_tree()]
    return [Window(match[2], *map(int, match.groups()[2:]), (len(match[1]) - 5) // 3) for match in found if match]


def is_viewable(window):
    done = subprocess.run(["xwininfo", "-id", window.identifier], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          timeout=30, text=True)
    return "IsViewable" in done.stdout


def shown(instance, class_name):
    viewable = {window.identifier for window in windows(instance, class_name) if is_viewable(window)}
    # A window finds its place before it is shown, so it is asked for after that has been seen.
    return [window for window in windows(instance, class_name) if window.identifier in viewable]


def embedded_icons():
    """The windows of icons that stand in a panel."""
    return [window for window in shown("curtain", "Curtain") if window.depth > 0]


def stray_windows():
    return [window for window in shown("curtain", "Curtain") if window.depth == 0]


def menus():
    return [window for window in shown("curtain", "curtain")
            if window.height > 20 and (window.width, window.height) != WIZARD]


def panel_menus():
    """Those that the panel of Xfce draws, for icons among others."""
    line = re.compile(r'(0x\w+) .*"Wrapper-2\.0"\)  (\d+)x(\d{3})\+.* \+(\d+)\+(\d+)$')
    found = filter(None, map(line.search, window_tree()))
    return [window for window in (Window(match[1], *map(int, match.groups()[1:]), 0) for match in found) if is_viewable(window)]


def pixel(x, y):
    """Brightness of a pixel, from 0 to 255; 0 outside the screen."""
    done = subprocess.run(["import", "-silent", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8", "rgb:-"],
                          check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=30)
    return sum(done.stdout) / 3


def icon_pixel(window, place):
    """Brightness at a place of the status image, which is 18 wide and stands in the middle of its window."""
    column, row = place
    return pixel(window.x + (window.width - 18) // 2 + column, window.y + (window.height - 18) // 2 + row)


class TrayTest(unittest.TestCase):
    expected_complaints = ""

    def setUp(self):
        self.curtain = None
        self.display = Display()
        self.addCleanup(self.display.close)
        # The menu of the one before may have been open at the pointer.
        output("xdotool", "mousemove", "640", "600")

    def start(self, *argv, ready=None, **keywords):
        process = subprocess.Popen([str(word) for word in argv], stdin=subprocess.DEVNULL,
                                   **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL} | keywords)
        self.addCleanup(self.end, process)
        if ready:
            wait_until(ready, f"start of {argv[0]}")
        return process

    def end(self, process):
        if process.poll() is None:
            process.send_signal(signal.SIGCONT)
            process.terminate()
        process.wait(timeout=30)

    def start_trayer(self, *options):
        return self.start(*TRAYER, *options, ready=lambda: any('"panel"' in line for line in window_tree()))

    def start_host(self):
        return self.start(SUPPORT / "status-notifier-host", ready=lambda: has_owner(WATCHER))

    def start_portal(self, scheme):
        self.start(SUPPORT / "settings-portal", ready=lambda: has_owner(PORTAL))
        self.set_scheme(scheme)

    def set_scheme(self, scheme):
        call(PORTAL, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings.Set", str(scheme))

    def start_curtain(self, program=None, **environment):
        # Written at the end of a first start, when the program listens already.
        shortcut = Path(os.environ["XDG_CONFIG_HOME"]) / "curtain/KeyboardShortcuts_togglePrivacy"
        shortcut.unlink(missing_ok=True)
        self.curtain = self.start(program or CURTAIN, ready=shortcut.exists, stderr=subprocess.PIPE,
                                  env=os.environ | environment)
        self.addCleanup(self.assert_clean_end, self.curtain, self.expected_complaints)

    def assert_clean_end(self, curtain, expected_complaints):
        if curtain.poll() is None:
            curtain.terminate()
        _, complaints = curtain.communicate(timeout=30)
        self.assertEqual((curtain.returncode, complaints.decode()), (0, expected_complaints))

    def host(self, method, *arguments):
        return call(WATCHER, "/Host", f"com.curtain.TestHost.{method}", *arguments)

    def drawn_icon(self):
        """The one icon in the X11 tray, if it has its picture and its place."""
        icons = embedded_icons()
        self.assertLessEqual(len(icons), 1)
        return next((icon for icon in icons if abs(icon_pixel(icon, ROD) - icon_pixel(icon, (0, 0))) > 100), None)

    def wait_for_icon(self):
        """With its picture, in the place where it stays: the tray gives a new icon its place after it has shown it."""
        def icon_at_rest():
            icon = self.drawn_icon()
            return icon if icon and stays(lambda: embedded_icons() == [icon], 0.2) else None
        return wait_until(icon_at_rest, "an icon in the tray", seen=embedded_icons)

    def wait_for_item(self):
        """The one item of the host."""
        items = wait_until(lambda: self.host("Items")[0], "an item in the tray")
        self.assertEqual(len(items), 1)
        return items[0]

    def is_closed(self, window):
        return abs(icon_pixel(window, MIDDLE) - icon_pixel(window, ROD)) < 60

    def assert_shortcut_toggles(self, window):
        self.assertFalse(self.is_closed(window))
        output("xdotool", "key", TOGGLE)
        wait_until(lambda: self.is_closed(window), "the closed curtain")
        output("xdotool", "key", TOGGLE)
        wait_until(lambda: not self.is_closed(window), "the open curtain")

    def click(self, window, button):
        x, y = window.center()
        output("xdotool", "mousemove", str(x), str(y), "click", str(button))

    def wait_for_menu(self):
        """A click or key that comes before the menu has the keyboard is not its own."""
        wait_until(lambda: menus() and self.display.is_keyboard_taken(), "the menu with the keyboard", seen=menus)
        return menus()[0]

    def close_menu(self):
        output("xdotool", "key", "Escape")
        wait_until(lambda: not menus(), "the menu's end")

    def choose_last_of_menu(self):
        self.click_last_entry(self.wait_for_menu())

    @staticmethod
    def click_last_entry(menu):
        x, y = menu.x + menu.width // 2, menu.y + menu.height - 10
        moves = itertools.count()

        def is_highlighted():
            # A press before the pointer has moved like a hand's counts, since Qt 6.8, as part of the click that opened the menu.
            output("xdotool", "mousemove", str(x + next(moves) % 2), str(y))
            # It differs from the first one as long as the pointer is there.
            return pixel(menu.x + 4, y) != pixel(menu.x + 4, menu.y + 10)
        # A menu that is being painted differs for a moment.
        wait_until(lambda: is_highlighted() and is_highlighted(), "the last entry is highlighted")
        output("xdotool", "click", "1")

    # Which tray

    def test_stands_in_a_tray_of_x_windows(self):
        self.start_trayer()
        self.start_curtain()
        self.assert_shortcut_toggles(self.wait_for_icon())

    def test_stands_in_a_tray_of_status_notifier_items(self):
        self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        name = self.host("Icon", item)[0]
        self.assertEqual(name, "com.curtain.Curtain-open-symbolic")
        output("xdotool", "key", TOGGLE)
        wait_until(lambda: self.host("Icon", item)[0] == "com.curtain.Curtain-close-symbolic", "the closed curtain",
                   seen=lambda: self.host("Icon", item)[0])
        output("xdotool", "key", TOGGLE)
        wait_until(lambda: self.host("Icon", item)[0] == name, "the open curtain", seen=lambda: self.host("Icon", item)[0])

    def test_stands_in_one_tray_where_there_are_both(self):
        self.start_trayer()
        self.start_host()
        self.start_curtain()
        self.wait_for_item()
        # Where the host is slow to answer, the icon stands in the other tray until it does.
        wait_until(lambda: not embedded_icons(), "the move to the one tray", seen=embedded_icons)

    def test_finds_a_tray_of_x_windows_that_comes_late_and_again(self):
        self.start_curtain()
        for _ in range(2):
            tray = self.start_trayer()
            self.assert_shortcut_toggles(self.wait_for_icon())
            self.end(tray)
            wait_until(lambda: not embedded_icons(), "the tray's end")
            wait_until(lambda: not stray_windows(), "the end of the icon without a tray")

    def test_finds_a_tray_of_status_notifier_items_that_comes_late_and_again(self):
        self.start_curtain()
        for _ in range(2):
            tray = self.start_host()
            self.wait_for_item()
            self.assertEqual(len(self.host("Registrations")[0]), 1)
            self.end(tray)
            wait_until(lambda: not has_owner(WATCHER), "the tray's end")

    def test_finds_a_tray_again_that_was_killed(self):
        for start, wait in ((self.start_trayer, self.wait_for_icon), (self.start_host, self.wait_for_item)):
            with self.subTest(start.__name__):
                first = start()
                if not self.curtain:
                    self.start_curtain()
                wait()
                first.kill()
                first.wait(timeout=30)
                wait_until(lambda: not embedded_icons() and not has_owner(WATCHER), "the tray's end")
                # The server puts it on the desktop first.
                wait_until(lambda: not stray_windows(), "the end of the icon without a tray", seen=stray_windows)
                second = start()
                wait()
                self.end(second)

    def test_moves_between_the_kinds_of_tray(self):
        self.start_curtain()
        embedding = self.start_trayer()
        self.wait_for_icon()
        host = self.start_host()
        self.wait_for_item()
        wait_until(lambda: not embedded_icons(), "the move to the other tray")
        self.end(host)
        self.wait_for_icon()
        self.end(embedding)
        wait_until(lambda: not embedded_icons(), "the tray's end")
        self.start_host()
        self.wait_for_item()

    def test_works_without_a_tray(self):
        tray = self.start_trayer()
        self.start_curtain()
        self.wait_for_icon()
        self.end(tray)
        wait_until(lambda: not embedded_icons(), "the tray's end")
        output("xdotool", "key", TOGGLE)
        self.start_trayer()
        self.assertTrue(self.is_closed(self.wait_for_icon()))

    def test_leaves_the_tray_when_it_ends(self):
        self.start_trayer()
        self.start_curtain()
        self.wait_for_icon()
        self.end(self.curtain)
        wait_until(lambda: not embedded_icons(), "the icon's end")
        self.start_host()
        self.start_curtain()
        self.wait_for_item()
        self.end(self.curtain)
        wait_until(lambda: not self.host("Items")[0], "the item's end")

    # Whom nobody waits for

    def test_does_not_wait_for_a_watcher_that_does_not_answer(self):
        self.start_trayer()
        host = self.start_host()
        host.send_signal(signal.SIGSTOP)
        started = time.monotonic()
        self.start_curtain()
        icon = self.wait_for_icon()
        self.assertLess(time.monotonic() - started, 10)
        self.assert_shortcut_toggles(icon)
        host.send_signal(signal.SIGCONT)
        self.wait_for_item()
        wait_until(lambda: not embedded_icons(), "the move to the other tray")

    def test_does_not_wait_for_a_host_that_stops_answering(self):
        host = self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        host.send_signal(signal.SIGSTOP)
        output("xdotool", "key", TOGGLE)
        # The program itself answers, without the host.
        name, path = item.split("/")
        wait_until(lambda: "close" in call(name, f"/{path}", "org.freedesktop.DBus.Properties.Get",
                                           "org.kde.StatusNotifierItem", "IconName")[0], "the closed curtain")

    def test_works_without_a_session_bus(self):
        self.expected_complaints = NO_BUS
        self.start_trayer()
        self.start_curtain(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus")
        self.assert_shortcut_toggles(self.wait_for_icon())
        self.end(self.curtain)

    # Clicks

    def test_opens_the_menu_on_a_right_click_and_a_click_with_control(self):
        self.start_trayer()
        self.start_curtain()
        icon = self.wait_for_icon()
        self.click(icon, 3)
        menu = self.wait_for_menu()
        self.assertEqual(menu.y, icon.y + icon.height)
        self.close_menu()
        output("xdotool", "keydown", "ctrl")
        self.click(icon, 1)
        output("xdotool", "keyup", "ctrl")
        self.wait_for_menu()
        self.close_menu()

    def test_opens_no_menu_on_other_clicks(self):
        self.start_trayer()
        self.start_curtain()
        icon = self.wait_for_icon()
        for button in (1, 4, 5):
            self.click(icon, button)
        # What follows shows that the program has dealt with what came before.
        self.assert_shortcut_toggles(icon)
        self.assertEqual(menus(), [])

    def test_toggles_privacy_mode_on_a_middle_click(self):
        self.start_trayer()
        self.start_curtain()
        icon = self.wait_for_icon()
        self.click(icon, 2)
        wait_until(lambda: self.is_closed(icon), "the closed curtain")
        self.click(icon, 2)
        wait_until(lambda: not self.is_closed(icon), "the open curtain")
        self.assertEqual(menus(), [])

    def test_ignores_a_click_that_is_let_go_elsewhere(self):
        self.start_trayer()
        self.start_curtain()
        icon = self.wait_for_icon()
        x, y = icon.center()
        output("xdotool", "mousemove", str(x), str(y), "mousedown", "3", "mousemove", "600", "500", "mouseup", "3")
        self.assert_shortcut_toggles(icon)
        self.assertEqual(menus(), [])

    def test_closes_the_menu_on_a_click_elsewhere(self):
        self.start_trayer()
        self.start_curtain()
        self.click(self.wait_for_icon(), 3)
        self.wait_for_menu()
        output("xdotool", "mousemove", "600", "500", "click", "1")
        wait_until(lambda: not menus(), "the menu's end")

    def test_closes_the_menu_again_where_another_program_keeps_the_keyboard(self):
        self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        self.assertTrue(self.display.grab_keyboard())
        self.display.watch_requests()
        self.host("Send", item, "ContextMenu", "300", "200")
        shown = set()

        # A look at the screen now and then could miss it.
        def has_come_and_gone():
            for kind, window, is_menu in (struct.unpack_from("B7xI?", event) for event in self.display.events()):
                if kind == MAP_NOTIFY and is_menu:
                    shown.add(window)
                elif kind == UNMAP_NOTIFY and window in shown:
                    return True
            return False

        wait_until(has_come_and_gone, "the menu has come and gone", seen=lambda: shown)

    def test_quits_from_the_menu(self):
        self.start_trayer()
        self.start_curtain()
        self.click(self.wait_for_icon(), 3)
        self.choose_last_of_menu()
        self.assertEqual(self.curtain.wait(timeout=30), 0)

    def test_chooses_from_the_menu_by_the_keyboard_and_leaves_the_focus_alone(self):
        self.start_trayer()
        self.start_curtain()
        focus = output("xdotool", "getwindowfocus")
        self.click(self.wait_for_icon(), 3)
        menu = self.wait_for_menu()
        self.assertEqual(output("xdotool", "getwindowfocus"), focus)
        # Heights: the edge's 4, then rows of 32 and lines of 11.
        title, entries = menu.y + 20, {"Open": menu.y + 63, "Settings": menu.y + 95, "Quit": menu.y + 138}

        def highlighted():
            ground, *colours = (pixel(menu.x + 8, y) for y in (title, *entries.values()))
            return [name for name, colour in zip(entries, colours) if colour != ground]

        for key, entry in (("Down", "Open"), ("Down", "Settings"), ("Up", "Open"), ("Up", "Quit")):
            output("xdotool", "key", key)
            wait_until(lambda: highlighted() == [entry], entry, seen=highlighted)  # pylint: disable=cell-var-from-loop
        output("xdotool", "key", "Return")
        self.assertEqual(self.curtain.wait(timeout=30), 0)

    def test_takes_clicks_of_a_status_notifier_host(self):
        self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        for method in ("Activate", "SecondaryActivate"):
            self.host("Send", item, method, "300", "200")
        # Calls are answered in their order, so those two have been dealt with.
        self.assertEqual(menus(), [])
        output("xdotool", "mousemove", "310", "190")
        self.host("Send", item, "ContextMenu", "300", "200")
        menu = self.wait_for_menu()
        self.assertEqual((menu.x, menu.y), (300, 201))
        self.close_menu()
        output("xdotool", "keydown", "ctrl")
        self.host("Send", item, "Activate", "300", "200")
        output("xdotool", "keyup", "ctrl")
        self.choose_last_of_menu()
        self.assertEqual(self.curtain.wait(timeout=30), 0)

    def test_opens_the_menu_at_the_pointer_when_the_host_names_no_place_where_an_icon_can_be(self):
        self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        for told in (("0", "0"), ("900", "700")):
            with self.subTest(told):
                output("xdotool", "mousemove", "400", "300")
                self.host("Send", item, "ContextMenu", *told)
                menu = self.wait_for_menu()
                self.assertEqual((menu.x, menu.y), (400, 300))
                self.close_menu()

    def test_lets_the_panel_draw_the_menu(self):
        self.start_host()
        self.start_curtain()
        name = self.wait_for_item().split("/")[0]
        self.assertEqual(call(name, "/Menu", "com.canonical.dbusmenu.AboutToShow", "0"), (True,))
        self.assertEqual(call(name, "/Menu", "com.canonical.dbusmenu.AboutToShow", "0"), (False,))
        _, (root, _, entries) = call(name, "/Menu", "com.canonical.dbusmenu.GetLayout", "0", "-1", "[]")
        labels = [properties.get("label", properties.get("type")) for _, properties, _ in entries]
        self.assertEqual((root, labels[1:]), (0, ["separator", "Open", "Settings", "separator", "Quit"]))
        self.assertRegex(labels[0], r"^Curtain \d")
        self.assertEqual([properties.get("enabled") for _, properties, _ in entries],
                         [False, None, True, True, None, True])
        self.assertEqual(menus(), [])
        for number in (entries[0][0], entries[1][0], 1000):
            call(name, "/Menu", "com.canonical.dbusmenu.Event", str(number), "clicked", "<0>", "0")
        self.assertIsNone(self.curtain.poll())
        call(name, "/Menu", "com.canonical.dbusmenu.Event", str(entries[-1][0]), "clicked", "<0>", "0")
        self.assertEqual(self.curtain.wait(timeout=30), 0)

    # A real panel

    def start_xfce_panel(self, is_dark):
        channel = Path(os.environ["XDG_CONFIG_HOME"]) / "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        channel.parent.mkdir(parents=True, exist_ok=True)
        channel.write_text(XFCE_PANEL.format(is_dark=str(is_dark).lower()))
        daemon = next(Path("/usr/lib").glob("*/xfce4/xfconf/xfconfd"))
        self.start(daemon, ready=lambda: has_owner("org.xfce.Xfconf"))
        self.start("xfce4-panel", "--disable-wm-check", ready=lambda: has_owner(WATCHER))

    def test_is_recoloured_and_quit_by_a_real_panel(self):
        self.start_xfce_panel(is_dark=True)
        self.start_curtain()
        # The panel runs along the top; its tray begins after a handle.
        middle, rod = (25, 14), (25, 6)
        wait_until(lambda: pixel(*rod) > 200, "the light icon", seen=lambda: pixel(*rod))
        self.assertLess(pixel(*middle), 100)
        output("xdotool", "key", TOGGLE)
        wait_until(lambda: pixel(*middle) > 200, "the closed curtain", seen=lambda: pixel(*middle))
        output("xdotool", "mousemove", *map(str, middle), "click", "3")
        wait_until(lambda: panel_menus() and self.display.is_keyboard_taken(), "the panel's menu with the keyboard",
                   seen=window_tree)
        self.click_last_entry(panel_menus()[0])
        self.assertEqual(self.curtain.wait(timeout=30), 0)

    # Colours

    def test_is_dark_on_a_light_panel_and_light_on_a_dark_one(self):
        self.start_curtain()
        for options, is_dark in (((), False), (DARK, True)):
            tray = self.start_trayer(*options)
            icon = self.wait_for_icon()
            ground = icon_pixel(icon, (0, 0))
            self.assertEqual(ground < 128, is_dark, ground)
            self.assertEqual(icon_pixel(icon, ROD) > 128, is_dark)
            self.end(tray)
            wait_until(lambda: not embedded_icons(), "the tray's end")

    def ink(self, item):
        """Brightness of the pixels that the item gives."""
        pixmap = next(entry for entry in self.host("Icon", item)[2] if entry[0] == 18)
        column, row = ROD
        start = (row * 18 + column) * 4
        alpha, *color = pixmap[2][start:start + 4]
        self.assertEqual(alpha, 255)
        return sum(color) / 3

    def test_gives_pixels_in_the_colour_of_the_desktops_scheme(self):
        self.start_portal(1)
        self.start_host()
        self.start_curtain()
        item = self.wait_for_item()
        wait_until(lambda: self.ink(item) > 200, "the light icon", seen=lambda: self.ink(item))
        self.set_scheme(2)
        wait_until(lambda: self.ink(item) < 60, "the dark icon", seen=lambda: self.ink(item))
        self.set_scheme(1)
        wait_until(lambda: self.ink(item) > 200, "the light icon", seen=lambda: self.ink(item))

    def test_does_not_wait_for_a_portal_that_does_not_answer(self):
        portal = self.start(SUPPORT / "settings-portal", ready=lambda: has_owner(PORTAL))
        portal.send_signal(signal.SIGSTOP)
        self.start_host()
        self.start_curtain()
        self.assertLess(self.ink(self.wait_for_item()), 60)

    def test_gives_no_name_that_is_not_installed(self):
        self.start_host()
        self.start_curtain()
        name, folder, _ = self.host("Icon", self.wait_for_item())
        icon = Path(folder) / "hicolor/symbolic/apps" / f"{name}.svg"
        self.assertTrue(icon.is_file(), icon)
        self.end(self.curtain)
        wait_until(lambda: not self.host("Items")[0], "the item's end")
        self.expected_complaints = "Curtain: notificaciones desactivadas (sin bundle)\n"
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(CURTAIN.parent.parent / "lib", Path(folder) / "lib")
            (Path(folder) / "bin").mkdir()
            self.start_curtain(program=shutil.copy(CURTAIN, Path(folder) / "bin"))
            name, folder, pixmaps = self.host("Icon", self.wait_for_item())
        self.assertEqual((name, folder), ("", ""))
        self.assertNotEqual(pixmaps, [])


if __name__ == "__main__":
    CURTAIN = Path(sys.argv.pop(1)) / "bin/curtain"
    unittest.main()
