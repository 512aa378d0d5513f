"""Reads and uses a program over the bus of assistive technologies, as a screen reader does.

The bus is that of scripts/virtual-desktop --accessibility.
"""

import time
from typing import NamedTuple

from gi.repository import Gio, GLib

from desktop_driver import Rectangle

ACCESSIBLE, ACTION = "org.a11y.atspi.Accessible", "org.a11y.atspi.Action"
COMPONENT, OF_THE_SCREEN = "org.a11y.atspi.Component", 0
REGISTRY = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
# For a machine that stalls; where nobody is there to answer, the bus says so at once.
MILLISECONDS = 30000
SECONDS_TO_SETTLE = 30

# The bits of a state, as the bus numbers them.
STATES = {4: "checked", 12: "focused", 23: "selected", 25: "showing"}

# What later releases of the toolkit call by names of their own.
EARLIER_ROLES = {"button menu": "push button", "page tab": "push button"}


# What is said of an element that is not there any more, so that it has done nothing.
UNKNOWN = {f"org.freedesktop.DBus.Error.Unknown{kind}" for kind in ("Object", "Interface", "Method")}


class Gone(Exception):
    """The element has left the screen while it was asked."""


class Unanswered(Gone):
    """It may have done what it was asked to do."""


class Element(NamedTuple):
    """Something on the screen, as it was when it was read."""
    reader: "ScreenReader"
    address: tuple
    role: str
    name: str
    description: str
    states: frozenset
    depth: int

    def __str__(self):
        return f"{self.role}: {self.name}"

    def act(self, action="Press"):
        """What a click does, without the mouse."""
        actions = [name for name, *_ in self.reader.ask(self.address, ACTION, "GetActions")]
        done = self.reader.ask(self.address, ACTION, "DoAction", GLib.Variant("(i)", (actions.index(action),)))
        assert done, f"{self} refused to act"

    def place(self):
        """On the screen; None once it has left it."""
        try:
            return Rectangle(*self.reader.ask(self.address, COMPONENT, "GetExtents", GLib.Variant("(u)", (OF_THE_SCREEN,))))
        except Gone:
            return None


class ScreenReader:
    """A connection to the bus of assistive technologies."""

    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        address, = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                     Gio.DBusCallFlags.NONE, MILLISECONDS, None).unpack()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def close(self):
        self._bus.close_sync(None)

    def ask(self, address, interface, method, arguments=None):
        name, path = address
        try:
            return self._bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, MILLISECONDS,
                                       None).unpack()[0]
        except GLib.Error as error:
            is_unknown = Gio.DBusError.get_remote_error(error) in UNKNOWN
            raise (Gone if is_unknown else Unanswered)(error.message) from None

    def elements(self, program="curtain"):
        """What the program shows, in reading order, read again while it changes."""
        deadline = time.monotonic() + SECONDS_TO_SETTLE
        while True:
            try:
                return self._elements(program)
            except Gone:
                if time.monotonic() > deadline:
                    raise

    def act(self, line, action="Press"):
        """Whether there was an element that says so, to do it."""
        for element in self.elements():
            if str(element) == line:
                try:
                    element.act(action)
                except Unanswered:
                    raise
                except Gone:
                    # The view has been made anew meanwhile.
                    return False
                return True
        return False

    def _elements(self, program):
        found = []
        for application in self.ask(REGISTRY, ACCESSIBLE, "GetChildren"):
            if self._property(application, "Name") == program:
                for window in self.ask(application, ACCESSIBLE, "GetChildren"):
                    self._read(window, 0, found)
        return found

    def _read(self, address, depth, found):
        low, high = self.ask(address, ACCESSIBLE, "GetState")
        bits = low | high << 32
        states = frozenset(name for bit, name in STATES.items() if bits >> bit & 1)
        if "showing" not in states:
            return
        role = self.ask(address, ACCESSIBLE, "GetRoleName")
        role = EARLIER_ROLES.get(role, role)
        found.append(Element(self, address, role, self._property(address, "Name"),
                             self._property(address, "Description"), states, depth))
        for child in self.ask(address, ACCESSIBLE, "GetChildren"):
            self._read(child, depth + 1, found)

    def _property(self, address, name):
        return self.ask(address, "org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (ACCESSIBLE, name)))
