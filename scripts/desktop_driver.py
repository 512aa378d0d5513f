"""Drives an X11 desktop from outside, as a person does, and looks at what it shows.

Programs are started and ended here, keys are pressed through the server's test extension, and windows are asked for
what their window manager says and for the pixels that are really on the screen.
"""

import ctypes
import json
import os
import struct
import subprocess
import time
from pathlib import Path
from typing import NamedTuple

libc = ctypes.CDLL(None)
xcb = ctypes.CDLL("libxcb.so.1")
xtest = ctypes.CDLL("libxcb-xtest.so.0")
xcb.xcb_connect.restype = ctypes.c_void_p
xcb.xcb_get_setup.restype = ctypes.POINTER(ctypes.c_uint8)
xcb.xcb_request_check.restype = ctypes.c_void_p
xcb.xcb_poll_for_event.restype = ctypes.c_void_p

KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, CLIENT_MESSAGE = 2, 3, 4, 5, 33
SUBSTRUCTURE_NOTIFY, SUBSTRUCTURE_REDIRECT = 0x80000, 0x100000
EVENT_MASK_ATTRIBUTE = 1 << 11
ANY_PROPERTY_TYPE = 0
Z_PIXMAP = 2
GRAB_ASYNC, GRAB_SUCCESS, CURRENT_TIME = 1, 0, 0
REPLACE, PIXMAP, GC_FOREGROUND = 0, 20, 4
VIEWABLE = 2
ICONIC_STATE = 3
ADD = 1
SOURCE_PAGER = 2

SHIFT_MASK, LOCK_MASK, CONTROL_MASK, ALT_MASK, NUM_LOCK_MASK, SUPER_MASK = 1, 2, 4, 8, 16, 64


class Key:
    """The codes of physical keys, whatever the layout writes on them."""
    CONTROL, SHIFT, ALT, SUPER = 37, 50, 64, 133
    CAPS_LOCK, NUM_LOCK = 66, 77
    H = 43


SHORTCUT_MODIFIERS = (Key.CONTROL, Key.ALT, Key.SUPER)
SHORTCUT = (*SHORTCUT_MODIFIERS, Key.H)
SHORTCUT_MASK = CONTROL_MASK | ALT_MASK | SUPER_MASK


class TimedOut(AssertionError):
    pass


def wait_until(condition, what, seconds=30, seen=None, pause=0.005):
    """Returns the first truthy answer of condition(); raises TimedOut if there is none in time.

    `what` is a sentence, or tells it at the end; `seen` tells what there was instead. Without it that is the last answer, unless it
    was only that there was none. `pause` is how many seconds pass between two looks, and so how exact a time is that ends with it.
    """
    deadline = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > deadline:
            try:
                last = seen() if seen else answer
            except Exception as error:  # pylint: disable=broad-exception-caught
                last = repr(error)
            raise TimedOut(f"not within {seconds:g} s: {what() if callable(what) else what}" +
                           (f"\n   seen: {last}" if seen or answer not in (None, False) else ""))
        time.sleep(pause)
    return answer


def stays(condition, seconds=0.3):
    """Whether condition() is true and remains so while it is watched."""
    deadline = time.monotonic() + seconds
    while condition():
        if time.monotonic() > deadline:
            return True
        time.sleep(0.005)
    return False


class Cookie(ctypes.Structure):
    _fields_ = [("sequence", ctypes.c_uint)]


class Rectangle(NamedTuple):
    x: int
    y: int
    width: int
    height: int


class Display:
    """A connection to the display; not through Xlib, which would end this process if the display went away."""

    def __init__(self, name=None):
        self._connection = ctypes.c_void_p(xcb.xcb_connect(name.encode() if name else None, None))
        if xcb.xcb_connection_has_error(self._connection):
            raise ConnectionError(f"the display {name or os.environ.get('DISPLAY')} does not answer")
        setup = ctypes.string_at(xcb.xcb_get_setup(self._connection), 40)
        vendor_length, = struct.unpack_from("H", setup, 24)
        first_screen = 40 + (vendor_length + 3) // 4 * 4 + 8 * setup[29]
        self.root, = struct.unpack("I", ctypes.string_at(
            ctypes.addressof(xcb.xcb_get_setup(self._connection).contents) + first_screen, 4))
        self._atoms = {}

    def close(self):
        xcb.xcb_disconnect(self._connection)

    def atom(self, name):
        if name not in self._atoms:
            reply = self._ask("xcb_intern_atom", ctypes.c_uint8(0), ctypes.c_uint16(len(name)), name.encode())
            self._atoms[name], = struct.unpack_from("I", reply, 8)
        return self._atoms[name]

    def property(self, window, name):
        """Numbers or bytes, as the property has them; None if the window or the property is not there."""
        reply = self._ask("xcb_get_property", ctypes.c_uint8(0), window, self.atom(name), ANY_PROPERTY_TYPE, 0, 1 << 16)
        if not reply or not reply[1]:
            return None
        length, = struct.unpack_from("I", reply, 16)
        return struct.unpack_from(f"{length}I", reply, 32) if reply[1] == 32 else reply[32:32 + length]

    def geometry(self, window):
        """On the screen, without the window manager's frame; None if the window is gone."""
        own = self._ask("xcb_get_geometry", window)
        origin = self._ask("xcb_translate_coordinates", window, self.root, ctypes.c_int16(0), ctypes.c_int16(0))
        if not own or not origin:
            return None
        return Rectangle(*struct.unpack_from("hh", origin, 12), *struct.unpack_from("HH", own, 16))

    def is_viewable(self, window):
        reply = self._ask("xcb_get_window_attributes", window)
        return bool(reply) and reply[26] == VIEWABLE

    def children(self, window):
        reply = self._ask("xcb_query_tree", window)
        return struct.unpack_from("{}I".format(*struct.unpack_from("H", reply, 16)), reply, 32) if reply else ()

    def selection_owner(self, name):
        return struct.unpack_from("I", self._ask("xcb_get_selection_owner", self.atom(name)), 8)[0]

    def pixels(self, area, window=None):
        """The screen's pixels in the area, four bytes each: blue, green, red and padding; None if it is not inside.

        The area is the screen's, or the window's, where one is given; that is no capture of the screen.
        """
        reply = self._ask("xcb_get_image", ctypes.c_uint8(Z_PIXMAP), window or self.root, ctypes.c_int16(area.x),
                          ctypes.c_int16(area.y), ctypes.c_uint16(area.width), ctypes.c_uint16(area.height),
                          ctypes.c_uint32(0xFFFFFFFF))
        return reply[32:] if reply else None

    def colour(self, x, y, window=None):
        """As in "#ff8000"; None outside the screen or the window."""
        pixels = self.pixels(Rectangle(x, y, 1, 1), window)
        return f"#{pixels[2]:02x}{pixels[1]:02x}{pixels[0]:02x}" if pixels else None

    def modifiers(self):
        """The modifiers and locks that are on now."""
        return struct.unpack_from("H", self._ask("xcb_query_pointer", self.root), 24)[0]

    def send_to_window_manager(self, window, message, *data):
        event = struct.pack("BBHII5I", CLIENT_MESSAGE, 32, 0, window, self.atom(message), *data, *[0] * (5 - len(data)))
        xcb.xcb_send_event(self._connection, ctypes.c_uint8(0), self.root,
                           SUBSTRUCTURE_NOTIFY | SUBSTRUCTURE_REDIRECT, event)
        xcb.xcb_flush(self._connection)

    def touch_root(self):
        """Makes an event for everybody who watches the root window's properties."""
        append, string, cut_buffer = 2, 31, 9
        xcb.xcb_change_property(self._connection, ctypes.c_uint8(append), self.root, cut_buffer, string,
                                ctypes.c_uint8(8), 0, None)
        xcb.xcb_flush(self._connection)

    def paint_wallpaper(self, colour):
        """Where compositors look for it. It stays for as long as this connection."""
        pixmap, context = (xcb.xcb_generate_id(self._connection) for _ in range(2))
        depth = self._ask("xcb_get_geometry", self.root)[1]
        xcb.xcb_create_pixmap(self._connection, ctypes.c_uint8(depth), pixmap, self.root, ctypes.c_uint16(1), ctypes.c_uint16(1))
        xcb.xcb_create_gc(self._connection, context, pixmap, GC_FOREGROUND, struct.pack("I", int(colour[1:], 16)))
        xcb.xcb_poly_fill_rectangle(self._connection, pixmap, context, 1, struct.pack("hhHH", 0, 0, 1, 1))
        xcb.xcb_change_property(self._connection, ctypes.c_uint8(REPLACE), self.root, self.atom("_XROOTPMAP_ID"), PIXMAP,
                                ctypes.c_uint8(32), 1, struct.pack("I", pixmap))
        xcb.xcb_flush(self._connection)

    def watch_requests(self):
        """From now on events() has what happens to the windows at the top, and has_request() sees what clients ask for."""
        mask = ctypes.c_uint32(SUBSTRUCTURE_NOTIFY)
        xcb.xcb_change_window_attributes(self._connection, self.root, EVENT_MASK_ATTRIBUTE, ctypes.byref(mask))
        xcb.xcb_flush(self._connection)

    def has_request(self, window, message):
        """Whether there is such a request among those that arrived since the last call."""
        requests = [event for event in self.events() if event[0] & 0x7F == CLIENT_MESSAGE]
        return any(struct.unpack_from("II", event, 4) == (window, self.atom(message)) for event in requests)

    def events(self):
        """What has arrived since the last call, 32 bytes each."""
        arrived = []
        while event := xcb.xcb_poll_for_event(self._connection):
            arrived.append(ctypes.string_at(event, 32))
            libc.free(ctypes.c_void_p(event))
        return arrived

    def press(self, *keys):
        self._fake(*((KEY_PRESS, key) for key in keys))

    def release(self, *keys):
        self._fake(*((KEY_RELEASE, key) for key in keys))

    def strike(self, *keys):
        """Presses the keys in order and lets them go in the reverse order, all at once: nobody sees a key held for long."""
        self._fake(*((KEY_PRESS, key) for key in keys), *((KEY_RELEASE, key) for key in reversed(keys)))

    def click(self, button=1):
        """Where the pointer is."""
        self._fake((BUTTON_PRESS, button), (BUTTON_RELEASE, button))

    def grab_key(self, key, modifiers):
        """Takes the combination for this client; False if another one has it."""
        send = xcb.xcb_grab_key_checked
        send.restype = Cookie
        cookie = send(self._connection, ctypes.c_uint8(0), self.root, ctypes.c_uint16(modifiers), ctypes.c_uint8(key),
                      ctypes.c_uint8(GRAB_ASYNC), ctypes.c_uint8(GRAB_ASYNC))
        error = xcb.xcb_request_check(self._connection, cookie)
        libc.free(ctypes.c_void_p(error))
        return not error

    def is_key_taken(self, key, modifiers):
        """Whether another client has the combination."""
        # Nobody may try to take it while it is tried here.
        xcb.xcb_grab_server(self._connection)
        is_free = self.grab_key(key, modifiers)
        if is_free:
            xcb.xcb_ungrab_key(self._connection, ctypes.c_uint8(key), self.root, ctypes.c_uint16(modifiers))
        xcb.xcb_ungrab_server(self._connection)
        xcb.xcb_flush(self._connection)
        return not is_free

    def is_keyboard_taken(self):
        """Whether another client has all keys."""
        xcb.xcb_grab_server(self._connection)
        is_free = self.grab_keyboard()
        if is_free:
            xcb.xcb_ungrab_keyboard(self._connection, CURRENT_TIME)
        xcb.xcb_ungrab_server(self._connection)
        xcb.xcb_flush(self._connection)
        return not is_free

    def grab_keyboard(self):
        """Takes all keys for this client; False if another one has them."""
        reply = self._ask("xcb_grab_keyboard", ctypes.c_uint8(0), self.root, CURRENT_TIME, ctypes.c_uint8(GRAB_ASYNC),
                          ctypes.c_uint8(GRAB_ASYNC))
        return reply[1] == GRAB_SUCCESS

    def _fake(self, *events):
        for kind, key in events:
            xtest.xcb_test_fake_input(self._connection, ctypes.c_uint8(kind), ctypes.c_uint8(key), 0, 0, ctypes.c_int16(0),
                                      ctypes.c_int16(0), ctypes.c_uint8(0))
        xcb.xcb_flush(self._connection)

    def _ask(self, request, *arguments):
        """The bytes of the reply; None if the server answers with an error."""
        send = xcb[request]
        send.restype = Cookie
        receive = xcb[request + "_reply"]
        receive.restype = ctypes.c_void_p
        error = ctypes.c_void_p()
        reply = receive(self._connection, send(self._connection, *arguments), ctypes.byref(error))
        libc.free(error)
        if not reply:
            return None
        length, = struct.unpack("I", ctypes.string_at(reply + 4, 4))
        data = ctypes.string_at(reply, 32 + 4 * length)
        libc.free(ctypes.c_void_p(reply))
        return data


class Window:
    """A window that a program opened and the window manager looks after."""

    def __init__(self, display, identifier):
        self.display = display
        self.id = identifier

    def __repr__(self):
        return f"<{'.'.join(self.window_class)} {self.id:#x}>"

    def __eq__(self, other):
        return self.id == other.id

    def __hash__(self):
        return self.id

    def describe(self):
        """In a line."""
        area = self.geometry
        place = f"{area.width}x{area.height} at {area.x},{area.y}" if area else "gone"
        states = [name for name in ("HIDDEN", "SHADED", "FULLSCREEN", "ABOVE", "SKIP_TASKBAR") if self.has_state(name)]
        shown = "on the screen" if self.display.is_viewable(self.id) else "not on the screen"
        return f"{self} of {self.process}, {place}, workspace {self.workspace}, {shown} {' '.join(states)}".rstrip()

    @property
    def window_class(self):
        return [part.decode() for part in (self.display.property(self.id, "WM_CLASS") or b"").split(b"\0") if part]

    @property
    def process(self):
        return (self.display.property(self.id, "_NET_WM_PID") or [None])[0]

    @property
    def geometry(self):
        return self.display.geometry(self.id)

    @property
    def size(self):
        """Width and height; None if the window is gone."""
        area = self.geometry
        return area and area[2:]

    @property
    def workspace(self):
        return (self.display.property(self.id, "_NET_WM_DESKTOP") or [None])[0]

    @property
    def is_hidden(self):
        return self.has_state("HIDDEN")

    def has_state(self, name):
        return self.display.atom(f"_NET_WM_STATE_{name}") in (self.display.property(self.id, "_NET_WM_STATE") or ())

    def ask_for_state(self, name, second_name=None):
        """One or two states in one request, as panels maximise windows."""
        second = self.display.atom(f"_NET_WM_STATE_{second_name}") if second_name else 0
        self.display.send_to_window_manager(self.id, "_NET_WM_STATE", ADD,
                                            self.display.atom(f"_NET_WM_STATE_{name}"), second, SOURCE_PAGER)

    def raise_from_task_list(self):
        """What a click in the panel's list of windows does."""
        self.display.send_to_window_manager(self.id, "_NET_ACTIVE_WINDOW", SOURCE_PAGER)

    def minimise(self):
        self.display.send_to_window_manager(self.id, "WM_CHANGE_STATE", ICONIC_STATE)
        wait_until(lambda: self.is_hidden, f"{self} is minimised")

    def send_to_workspace(self, number):
        self.display.send_to_window_manager(self.id, "_NET_WM_DESKTOP", number, SOURCE_PAGER)
        wait_until(lambda: self.workspace == number, f"{self} is on workspace {number}")

    def place(self, x, y, width, height):
        """Puts the window without its frame there; not for terminals, whose sizes are whole characters."""
        static_gravity_and_all_four = 10 | 0xF << 8 | SOURCE_PAGER << 12
        self.display.send_to_window_manager(self.id, "_NET_MOVERESIZE_WINDOW", static_gravity_and_all_four, x, y, width,
                                            height)
        wait_until(lambda: self.geometry == (x, y, width, height), f"{self} is in its place")

    def colour(self, place):
        """Of what the screen shows in that place of the window; None while it is not on the screen."""
        return self.display.colour(*place, self.id)

    def pixels(self, area):
        return self.display.pixels(area, self.id)

    @property
    def interior(self):
        """The lower right quarter, where a terminal at its start shows nothing but its background."""
        x, y, width, height = self.geometry
        return Rectangle(x + width // 2, y + height // 2, width // 2 - 2, height // 2 - 2)


class Desktop:
    """The display of this session and the programs that were started on it."""

    def __init__(self, log_folder):
        self.display = Display()
        self.log_folder = Path(log_folder)
        self._programs = []
        is_whole = os.environ.get("VIRTUAL_DESKTOP_SESSION", "").endswith("-desktop")
        self._own_types = {self.display.atom(f"_NET_WM_WINDOW_TYPE_{name}") for name in ["DOCK"] + ["DESKTOP"] * is_whole}
        # Programs that show a whole desktop may show notices too.
        self._own_programs = {window.process for window in self._listed_windows()} - {None} if is_whole else set()

    def start(self, *argv, environment=None):
        """Starts a program; a value of None takes a variable out of its environment."""
        variables = {name: value for name, value in {**os.environ, **(environment or {})}.items() if value is not None}
        program = Program(argv, variables, self.log_folder / f"{len(self._programs) + 1}-{Path(argv[0]).name}")
        self._programs.append(program)
        return program

    def end_programs(self):
        # A browser's helpers write to its profile for a moment after it has ended.
        helpers = [process for program in self._programs for process in program.family()[1:]]
        for program in self._programs:
            if program.poll() is None:
                program.terminate()
        for program in reversed(self._programs):
            try:
                program.wait(5)
            except subprocess.TimeoutExpired:
                program.kill()
                program.wait()
        self._programs.clear()
        wait_until(lambda: not self.windows(), "the windows of the programs are gone")
        wait_until(lambda: not still_running(helpers), "the processes of the programs are gone",
                   seen=lambda: still_running(helpers))

    def windows(self):
        """All but the desktop's own, in the order of their opening."""
        return [window for window in self._listed_windows() if window.process not in self._own_programs
                if self._own_types.isdisjoint(self.display.property(window.id, "_NET_WM_WINDOW_TYPE") or ())]

    def _listed_windows(self):
        return [Window(self.display, window) for window in self.display.property(self.display.root, "_NET_CLIENT_LIST") or ()]

    def windows_of(self, program):
        return [window for window in self.windows() if window.process == program.pid]

    def window_of(self, program, number=0):
        """Waits for the program's window; for a further one, if it has several, in the order of their opening."""
        def window():
            if program.poll() is not None:
                raise AssertionError(f"{program.name} ended without a window: {program.complaints()}")
            windows = self.windows_of(program)
            return len(windows) > number and windows[number]
        return wait_until(window, f"{program.name} shows a window", 30)

    def describe(self):
        """What is there now, a line for each window, for the message of a check that failed."""
        lines = [f"workspace {(self.display.property(self.display.root, '_NET_CURRENT_DESKTOP') or ['unknown'])[0]}, "
                 f"active {self.active_window}, modifiers {self.display.modifiers():#x}"]
        lines += [window.describe() for window in self.windows()]
        lines += [f"{program.name}, ended with {program.poll()}" for program in self._programs if program.poll() is not None]
        return "\n".join(f"      {line}" for line in lines)

    @property
    def workspace(self):
        return self.display.property(self.display.root, "_NET_CURRENT_DESKTOP")[0]

    @workspace.setter
    def workspace(self, number):
        self.display.send_to_window_manager(self.display.root, "_NET_CURRENT_DESKTOP", number)
        wait_until(lambda: self.workspace == number, f"workspace {number} is shown")

    @property
    def active_window(self):
        return Window(self.display, (self.display.property(self.display.root, "_NET_ACTIVE_WINDOW") or [0])[0])

    def tray_icon(self, window_class="curtain"):
        """The program's icon in the tray, with its place on the screen; None if there is none to be seen."""
        def below(window):
            for child in self.display.children(window):
                yield Window(self.display, child)
                yield from below(child)
        panels = [window for window in below(self.display.root) if "trayer" in window.window_class]
        icons = [icon for panel in panels for icon in below(panel.id) if window_class in icon.window_class]
        return next((icon for icon in icons if self.display.is_viewable(icon.id)), None)

    def place_of_tray_icon(self):
        """On the screen, once it is there to stay: the tray gives a new icon its place after it has shown it."""
        def place_at_rest():
            place = self._place_of_tray_icon()
            return place if place and stays(lambda: self._place_of_tray_icon() == place, 0.2) else None
        return wait_until(place_at_rest, "the icon has its place in the tray", seen=self._place_of_tray_icon)

    def _place_of_tray_icon(self):
        icon = self.tray_icon()
        return icon and icon.geometry


def write_preferences(settings_folder, **values):
    folder = Path(settings_folder) / "curtain"
    folder.mkdir(mode=0o700, exist_ok=True)
    path = folder / "curtain.preferences.v1"
    path.write_text(json.dumps(values))
    return path


def private_app(identifier, name):
    return {"bundleID": identifier, "displayName": name}


XTERM = private_app("debian-xterm", "XTerm")
MOUSEPAD = private_app("org.xfce.mousepad", "Mousepad")
CHROMIUM = private_app("chromium", "Chromium")


def chromium(profile, *arguments):
    """The command line of a browser that neither greets nor calls home; without the sandbox, root may start it too."""
    return ["chromium", "--no-sandbox", "--test-type", "--no-first-run", "--disable-gpu", "--disable-background-networking",
            "--disable-component-update", "--disable-sync", f"--user-data-dir={profile}", *arguments]


class Process(NamedTuple):
    identifier: int
    parent: int
    # Tells it from a later one with the same identifier.
    start_time: int

    @staticmethod
    def all():
        """Those that run."""
        for folder in Path("/proc").glob("[0-9]*"):
            try:
                state, parent, *rest = (folder / "stat").read_text().rpartition(")")[2].split()
            except OSError:
                continue
            if state != "Z":
                yield Process(int(folder.name), int(parent), int(rest[17]))

    def family(self):
        """This one and all that it and they have started."""
        children = {}
        for process in Process.all():
            children.setdefault(process.parent, []).append(process)
        found = [self]
        for process in found:
            found += children.get(process.identifier, ())
        return found


def still_running(processes):
    return sorted(set(processes) & set(Process.all()))


class Program(subprocess.Popen):
    """A program whose output goes to the files LOG.out and LOG.err."""

    def __init__(self, argv, environment, log):
        self.name = Path(argv[0]).name
        self._output = log.with_suffix(".out")
        self._complaints = log.with_suffix(".err")
        with open(self._output, "wb") as output, open(self._complaints, "wb") as complaints:
            super().__init__(argv, env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=complaints)

    def family(self):
        """The processes of the program that run."""
        return [process for one in Process.all() if one.identifier == self.pid for process in one.family()]

    def output(self):
        return self._output.read_text(errors="replace")

    def complaints(self):
        """What the program has written to its standard error so far."""
        return self._complaints.read_text(errors="replace")
