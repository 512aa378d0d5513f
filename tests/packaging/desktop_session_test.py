"""Uses the Debian package in a whole desktop's own session: a fresh system of a release with the desktop and the package in it.

usage: desktop_session_test.py DESKTOP RELEASE LOG PACKAGES

DESKTOP is one of those below, RELEASE a codename, PACKAGES the folder of the package. The system is made from the mirrors that this
machine uses for its own release and is gone afterwards. LOG is a file for all that is said there; a failure shows its end.
"""

import os
import sys
from pathlib import Path
from typing import NamedTuple

from fresh_system import INSIDE, TREE, copy_tree, make_system, run_there

# What the virtual desktop needs around it, and programs that the tests look at. The rest comes with the package.
PROGRAMS = ["dbus", "libglib2.0-bin", "libxcb-xtest0", "procps", "python3", "python3-gi", "rxvt-unicode", "xdotool", "xterm",
            "xvfb"]
# Panels draw their icons with these.
ICONS = ["adwaita-icon-theme", "librsvg2-common"]

CASTS = ["gstreamer1.0-pipewire", "gstreamer1.0-tools", "pipewire-pulse", "pulseaudio-utils", "wireplumber"]


class Run(NamedTuple):
    """A test, what its virtual desktop is given, and what is set for it."""
    test: str
    options: tuple = ()
    variables: tuple = ()


class WholeDesktop(NamedTuple):
    """The packages that it consists of, the session of the virtual desktop that it is, and the tests that use it."""
    programs: list
    session: str
    runs: tuple = (Run("whole_desktop_test.py"),)
    # What only one release has a package of its own for, by the release.
    more_programs: dict = {}


def x11_desktop(name, *programs):
    return WholeDesktop([*programs, *ICONS, "at-spi2-core", "mousepad"], f"x11-{name}-desktop")


PANEL = ("--tray", "none", "--accessibility")
GNOME_RUNS = (
    Run("gnome_test.py"),
    Run("gnome_panel_test.py", PANEL),
    Run("gnome_share_test.py", (*PANEL, "--media")),
    Run("gnome_panel_test.py", (*PANEL, "--size", "2560x1600"), ("MUTTER_DEBUG_DUMMY_MONITOR_SCALES=2",)),
    Run("gnome_panel_test.py", PANEL, ("MUTTER_DEBUG_NUM_DUMMY_MONITORS=2",)),
)
DESKTOPS = {
    "gnome": WholeDesktop(["gnome-shell", "at-spi2-core", "dunst", "foot", "xwayland", *CASTS], "gnome", GNOME_RUNS),
    "cinnamon": x11_desktop("cinnamon", "cinnamon", "cinnamon-session", "cinnamon-settings-daemon", "muffin", "nemo", "xapp-sn-watcher"),
    "labwc": WholeDesktop(["at-spi2-core", "dunst", "foot", "labwc", "mousepad", "x11-utils", "xwayland"], "labwc",
                          (Run("labwc_test.py", ("--tray", "sni", "--accessibility")),)),
    "lxde": x11_desktop("lxde", "lxde-core", "lxde-session", "lxpanel", "notification-daemon", "openbox", "pcmanfm"),
    "lxqt": x11_desktop("lxqt", "lxqt-globalkeys", "lxqt-notificationd", "lxqt-panel", "lxqt-policykit", "lxqt-qtplugin", "lxqt-runner",
                        "lxqt-session", "lxqt-themes", "openbox", "pcmanfm-qt")._replace(
                            # Else PCManFM-Qt 2.1 hangs in about one start of three.
                            more_programs={"trixie": ["gvfs"]}),
    "mate": x11_desktop("mate", "caja", "marco", "mate-desktop", "mate-menus", "mate-notification-daemon", "mate-panel",
                        "mate-session-manager", "mate-settings-daemon", "xapp-sn-watcher"),
    "plasma": x11_desktop("plasma", "breeze", "kde-cli-tools", "kwin-x11", "plasma-desktop", "plasma-workspace"),
    "plasma-wayland": WholeDesktop([*ICONS, "at-spi2-core", "breeze", "kde-cli-tools", "konsole", "kwin-wayland", "plasma-desktop",
                                    "plasma-workspace", "xwayland", *CASTS], "wayland-plasma-desktop",
                                   (Run("plasma_wayland_test.py", ("--media",)),), {"bookworm": ["plasma-workspace-wayland"]}),
    "xfce": x11_desktop("xfce", "thunar", "xfce4-notifyd", "xfce4-panel", "xfce4-session", "xfce4-settings", "xfconf", "xfdesktop4", "xfwm4"),
}


def make_desktop(desktop, release, log, packages):
    """Returns the status of the tests, which run in the system while it is there."""
    package = max(packages.glob("*.deb"), key=os.path.getmtime)
    programs = [*PROGRAMS, *DESKTOPS[desktop].programs, *DESKTOPS[desktop].more_programs.get(release, [])]
    return make_system(release, log, [desktop, package.resolve()], programs, "^(Ran |test_)",
                       ["--aptopt=APT::Install-Recommends \"false\""])


def use_system(desktop, package, root):
    copy_tree(root)
    (root / TREE / "curtain.deb").write_bytes(package.read_bytes())
    run_there(root, None, True, "apt-get", "install", "--yes", "--no-install-recommends", "./curtain.deb")
    for run in desktop.runs:
        run_there(root, None, False, "env", "CURTAIN=/usr/bin/curtain", *run.variables, "scripts/virtual-desktop", "--session",
                  desktop.session, "--deadline", "60", *run.options, "--", "/usr/bin/python3", "-B", f"tests/desktop/{run.test}", "-v")


if __name__ == "__main__":
    if sys.argv[1] == INSIDE:
        use_system(DESKTOPS[sys.argv[2]], Path(sys.argv[3]), Path(sys.argv[4]))
    else:
        sys.exit(make_desktop(sys.argv[1], sys.argv[2], Path(sys.argv[3]), Path(sys.argv[4])))
