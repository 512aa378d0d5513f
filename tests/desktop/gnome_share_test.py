"""Checks that a cast of GNOME's screen switches privacy mode on by itself, while a program receives it.

It runs with --session gnome, --media, --tray none, --accessibility and the installation's shared data.
"""

import unittest

from desktop_case import XTERM, XTERM_COLOUR, stays, wait_until, write_preferences
from gi.repository import Gio, GLib
from gnome_panel_test import PanelCase

CAST = "org.gnome.Mutter.ScreenCast"
MILLISECONDS = 10000
# For a machine that is busy; how many looks it takes is checked elsewhere.
PATIENCE = 30
TWO_LOOKS = 6


class Cast:
    """Of the first screen, which the shell gives to whoever asks it there."""

    def __init__(self):
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self._session = self._call("/org/gnome/Mutter/ScreenCast", CAST, "CreateSession", GLib.Variant("(a{sv})", ({},)))[0]
        stream = self._call(self._session, f"{CAST}.Session", "RecordMonitor", GLib.Variant("(sa{sv})", ("", {})))[0]
        nodes = []
        self._bus.signal_subscribe(CAST, f"{CAST}.Stream", "PipeWireStreamAdded", stream, None, Gio.DBusSignalFlags.NONE,
                                   lambda *signal: nodes.append(signal[5].unpack()[0]))
        self._call(self._session, f"{CAST}.Session", "Start")
        wait_until(lambda: GLib.MainContext.default().iteration(False) or nodes, "the cast has a stream")
        self.node = nodes[0]

    def stop(self):
        self._call(self._session, f"{CAST}.Session", "Stop")

    def _call(self, path, interface, method, arguments=None):
        return self._bus.call_sync(CAST, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, MILLISECONDS,
                                   None).unpack()


class GnomeShareTest(PanelCase):
    def test_privacy_mode_is_on_while_a_program_receives_the_screen(self):
        self.start_xterm()
        wait_until(lambda: self.shows(XTERM_COLOUR), "the private window is on the screen")
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, autoDetectEnabled=True)
        self.start_curtain()
        wait_until(self.button, "the button is in the panel")
        cast = Cast()
        # Nobody receives it.
        self.assertTrue(stays(lambda: self.shows(XTERM_COLOUR), TWO_LOOKS))
        receiver = self.desktop.start("gst-launch-1.0", "pipewiresrc", f"path={cast.node}", "!", "video/x-raw", "!", "fakesink")
        wait_until(lambda: not self.shows(XTERM_COLOUR), "the private window is hidden", PATIENCE, seen=receiver.complaints)
        self.assertEqual(self.icon(), "com.curtain.Curtain-close-symbolic.svg")
        receiver.kill()
        wait_until(lambda: self.shows(XTERM_COLOUR), "the private window is back", PATIENCE)
        cast.stop()


if __name__ == "__main__":
    unittest.main()
