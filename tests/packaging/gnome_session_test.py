"""Uses the Debian package in GNOME's own session: a fresh system of a release with the shell and the package in it.

usage: gnome_session_test.py RELEASE LOG PACKAGES

RELEASE is a codename, PACKAGES the folder of the package. The system is made from the mirrors that this machine uses for its own
release and is gone afterwards. LOG is a file for all that is said there; a failure shows its end.
"""

import os
import shlex
import subprocess
import sys
from pathlib import Path

from other_release_test import INSIDE, LINES_OF_A_FAILURE, TREE, copy_tree, run_there, sources_of

# The shell, what the virtual desktop needs around it, and the programs that the tests look at. The rest comes with the package.
PROGRAMS = ["gnome-shell", "at-spi2-core", "dbus", "dunst", "foot", "libglib2.0-bin", "libxcb-xtest0", "procps", "python3", "python3-gi",
            "rxvt-unicode", "xdotool", "xterm", "xvfb", "xwayland"]
PANEL = ["--tray", "none", "--accessibility"]
# Each with what its virtual desktop is given, and what is set for its shell.
TESTS = [
    ("gnome_test.py", [], []),
    ("gnome_panel_test.py", PANEL, []),
    ("gnome_panel_test.py", [*PANEL, "--size", "2560x1600"], ["MUTTER_DEBUG_DUMMY_MONITOR_SCALES=2"]),
    ("gnome_panel_test.py", PANEL, ["MUTTER_DEBUG_NUM_DUMMY_MONITORS=2"]),
]


def make_system(release, log, packages):
    """Returns the status of the tests, which run in the system while it is there."""
    package = max(packages.glob("*.deb"), key=os.path.getmtime)
    log.parent.mkdir(parents=True, exist_ok=True)
    hook = shlex.join([sys.executable, "-B", str(Path(__file__).resolve()), INSIDE, str(package.resolve())]) + ' "$1"'
    with open(log, "wb") as output:
        status = subprocess.run(
            ["mmdebstrap", "--variant=apt", "--include=" + ",".join(PROGRAMS), "--aptopt=APT::Install-Recommends \"false\"",
             "--format=null", f"--customize-hook={hook}", release, "-", *sources_of(release)], stdout=output, stderr=output,
            check=False).returncode
    lines = log.read_text(errors="replace").splitlines()
    print(*(lines[-LINES_OF_A_FAILURE:] if status else [line for line in lines if line.startswith(("Ran ", "test_"))]), sep="\n")
    return status


def use_system(package, root):
    copy_tree(root)
    (root / TREE / "curtain.deb").write_bytes(package.read_bytes())
    run_there(root, None, True, "apt-get", "install", "--yes", "--no-install-recommends", "./curtain.deb")
    for test, options, variables in TESTS:
        run_there(root, None, False, "env", "CURTAIN=/usr/bin/curtain", *variables, "scripts/virtual-desktop", "--session", "gnome",
                  *options, "--", "/usr/bin/python3", "-B", f"tests/desktop/{test}", "-v")


if __name__ == "__main__":
    if sys.argv[1] == INSIDE:
        use_system(Path(sys.argv[2]), Path(sys.argv[3]))
    else:
        sys.exit(make_system(sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])))
