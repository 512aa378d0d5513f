"""What tests in GNOME's session ask of the shell itself, beside what a person can do there."""

import json
import re
import subprocess
import unittest

from desktop_case import wait_until

UUID = "curtain@com.curtain.Curtain"


def call_shell(path, method, *arguments):
    return subprocess.run(["gdbus", "call", "--session", "--dest", "org.gnome.Shell", "--object-path", path, "--method",
                           method, *arguments], check=True, capture_output=True, text=True).stdout


class GnomeShell(unittest.TestCase):
    def evaluate(self, script):
        answer = call_shell("/org/gnome/Shell", "org.gnome.Shell.Eval", script)
        self.assertTrue(answer.startswith("(true,"), f"{script}: {answer}")
        text = re.search(r"'(.*)'", answer, re.DOTALL)[1]
        return json.loads(text.replace("\\'", "'").replace('\\\\', '\\')) if text else None

    def describe(self, script):
        """What it gives as JSON."""
        answer = self.evaluate(script)
        # One version gives the value, another its text.
        return json.loads(answer) if isinstance(answer, str) else answer

    def switch_extension(self, is_on):
        method = "EnableExtension" if is_on else "DisableExtension"
        call_shell("/org/gnome/Shell", f"org.gnome.Shell.Extensions.{method}", UUID)

    def set_overview(self, is_shown):
        self.evaluate(f"Main.overview.{'show' if is_shown else 'hide'}(); 0")
        wait_until(lambda: self.evaluate(
            f"Main.overview.visible === {str(is_shown).lower()} && !Main.overview.animationInProgress"),
            f"the overview is {'open' if is_shown else 'closed'}")
