"""Starts an installed Curtain as desktops do: by its D-Bus service and by its desktop entry.

CMAKE in the environment is the program and BUILD the build's folder. A test runs within scripts/virtual-desktop.
"""

import configparser
import os
import re
import shlex
import subprocess
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from desktop_case import DesktopCase, wait_until

CMAKE, BUILD = os.environ["CMAKE"], os.environ["BUILD"]
IDENTIFIER = "com.curtain.Curtain"
WIZARD = (420, 460)
SETTINGS = (440, 430)
BUS = """\
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={folder}/bus</listen>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class ActivationTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.scratch / "my programs"
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", self.prefix], check=True, stdout=subprocess.DEVNULL)
        configuration = self.scratch / "bus.conf"
        configuration.write_text(BUS.format(folder=self.scratch, services=self.prefix / "share/dbus-1/services"))
        # The bus hands its own environment to what it starts.
        self.environment = {"XDG_CONFIG_HOME": str(self.settings), "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.scratch}/bus"}
        self.bus = self.desktop.start("dbus-daemon", "--nofork", f"--config-file={configuration}", environment=self.environment)
        wait_until((self.scratch / "bus").is_socket, "the bus listens")
        parser = configparser.ConfigParser(interpolation=None, delimiters="=")
        parser.optionxform = str
        self.entry = self.prefix / f"share/applications/{IDENTIFIER}.desktop"
        parser.read(self.entry, encoding="utf-8")
        self.commands = {section.rpartition(" ")[2]: parser[section]["Exec"] for section in parser.sections()}

    def call(self, *argv):
        subprocess.run(argv, env=os.environ | self.environment, check=True, timeout=30, stdout=subprocess.DEVNULL)

    def run_command(self, name):
        self.call(*shlex.split(self.commands[name]))

    def process(self):
        """The one that owns Curtain's name; None if nobody does."""
        done = subprocess.run(["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
                               "org.freedesktop.DBus.GetConnectionUnixProcessID", IDENTIFIER], env=os.environ | self.environment,
                              check=False, text=True, timeout=30, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertTrue(done.returncode == 0 or "NameHasNoOwner" in done.stderr, done.stderr)
        return None if done.returncode else int(re.search(r"(\d+),\)", done.stdout)[1])

    def wait_window(self, size):
        wait_until(lambda: any(window.size == size for window in self.desktop.windows()),
                   f"a window of {size} is open", 30)

    def assert_runs_and_quits(self):
        process = self.process()
        self.assertEqual(Path(f"/proc/{process}/exe").resolve(), (self.prefix / "bin/curtain").resolve())
        self.run_command("quit")
        wait_until(lambda: not self.process() and not Path(f"/proc/{process}/exe").exists(), "Curtain has ended")
        # What the bus has started writes to its standard error.
        self.assertEqual([line for line in self.bus.complaints().splitlines() if not line.startswith("dbus-daemon[")], [])

    def test_offers_what_the_installed_description_of_its_interfaces_says(self):
        def described(text):
            """Each method and signal with its arguments, without the interfaces that every object has."""
            return {(interface.get("name"), member.tag, member.get("name")):
                    [(arg.get("name"), arg.get("type"), arg.get("direction", "in")) for arg in member.iter("arg")]
                    for interface in xml.fromstring(text).iter("interface") for member in interface
                    if not interface.get("name").startswith("org.freedesktop.DBus.")}

        installed = (self.prefix / f"share/dbus-1/interfaces/{IDENTIFIER}.xml").read_text()
        offered = subprocess.run(["gdbus", "introspect", "--session", "--xml", "--dest", IDENTIFIER, "--object-path",
                                  xml.fromstring(installed).get("name")], env=os.environ | self.environment, check=True, text=True,
                                 timeout=30, stdout=subprocess.PIPE).stdout
        self.assertTrue(described(installed))
        self.assertEqual(described(offered), described(installed))
        wait_until(self.desktop.tray_icon, "the icon is in the tray")
        self.assert_runs_and_quits()

    def test_an_action_starts_it(self):
        self.run_command("settings")
        self.wait_window(SETTINGS)
        self.assert_runs_and_quits()

    def test_its_activation_starts_and_opens_it(self):
        self.call("gdbus", "call", "--session", "--dest", IDENTIFIER, "--object-path", "/com/curtain/Curtain", "--method",
                 "org.freedesktop.Application.Activate", "{}")
        self.wait_window(WIZARD)
        self.assert_runs_and_quits()

    def test_the_desktop_entry_starts_it(self):
        self.desktop.start("gio", "launch", str(self.entry), environment=self.environment)
        wait_until(self.desktop.tray_icon, "the icon is in the tray")
        wait_until(self.process, "Curtain is on the bus")
        self.run_command("open")
        self.wait_window(WIZARD)
        self.assert_runs_and_quits()


if __name__ == "__main__":
    unittest.main()
