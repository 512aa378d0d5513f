"""Scripts that tests give KWin over the session bus, beside those of Curtain."""

import re
import subprocess
import unittest

# Control, Alt, Super and H.
SHORTCUT_IN_QT = 0x04000000 | 0x08000000 | 0x10000000 | ord("H")
BRINGING_BACK = """\
(workspace.windowList ? workspace.windowList() : workspace.clientList()).forEach(function (window) {
    if (String(window.resourceClass).toLowerCase().indexOf("%s") >= 0) {
        window.minimized = false;
        workspace[workspace.windowList ? "activeWindow" : "activeClient"] = window;
    }
});
"""


def gdbus(service, path, method, *arguments):
    return subprocess.run(["gdbus", "call", "--session", "--dest", service, "--object-path", path, "--method", method,
                           *arguments], check=True, capture_output=True, text=True).stdout


def scripting(method, *arguments):
    return gdbus("org.kde.KWin", "/Scripting", f"org.kde.kwin.Scripting.{method}", *arguments)


def owner_of_shortcut():
    """What KDE's service of global accelerators says."""
    return gdbus("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel.action", str(SHORTCUT_IN_QT))


class KWinScripts(unittest.TestCase):
    """For tests with a folder `scratch`."""

    def run_script(self, name, text):
        """Of somebody else's; it stays until the test ends."""
        script = self.scratch / f"{name}.js"
        script.write_text(text)
        number = re.search(r"\d+", scripting("loadScript", str(script), name))[0]
        self.addCleanup(scripting, "unloadScript", name)
        paths = (f"/Scripting/Script{number}", f"/{number}")
        self.assertTrue(any(map(self._can_run, paths)), paths)

    @staticmethod
    def _can_run(path):
        try:
            gdbus("org.kde.KWin", path, "org.kde.kwin.Script.run")
        except subprocess.CalledProcessError:
            return False
        return True

    def choose(self, program):
        """As a task bar does; part of its class in small letters."""
        self.run_script(f"choose-{program}", BRINGING_BACK % program)
