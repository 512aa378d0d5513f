"""Switches privacy mode very often, and looks at what grows.

usage: toggles_test.py TOGGLES
"""

import sys
import unittest

from desktop_case import XTERM, DesktopCase, wait_until, write_preferences
from process_costs import ServerResources, handles, memory

TOGGLES = int(sys.argv.pop(1))
# Until everything has been made that is made once.
WARM_UP = 300
MEGABYTES_OF_NOISE = 1


class TogglesTest(DesktopCase):
    def test_nothing_grows(self):
        write_preferences(self.settings, targetApps=[XTERM], hasOnboarded=True, notificationsMarkedHandled=True)
        self.xterm = self.open_xterm()
        self.start_curtain()
        wait_until(self.desktop.tray_icon, "the tray icon is there")
        resources = ServerResources()
        self.addCleanup(resources.close)
        self.toggle_times(WARM_UP)
        before = self.costs(resources)
        self.assertGreater(before[1].get("PASSIVE GRAB", 0), 0)
        self.toggle_times(TOGGLES)
        after = self.costs(resources)
        print(f"{TOGGLES} toggles: {before[2]:.2f} MiB before, {after[2]:.2f} MiB after, {after[0]} handles, "
              f"{after[1].get('PASSIVE GRAB')} grabs")
        self.assertEqual(after[:2], before[:2])
        self.assertLess(after[2] - before[2], MEGABYTES_OF_NOISE)

    def toggle_times(self, number):
        for index in range(number):
            self.toggle()
            is_hidden = index % 2 == 0
            wait_until(lambda: self.xterm.is_hidden == is_hidden, f"hidden: {is_hidden}", seen=lambda: self.xterm.is_hidden)

    def costs(self, resources):
        """Handles, the server's resources and memory of its own, once two looks in a row agree on the first two."""
        seen = []

        def are_at_rest():
            seen.append((handles(self.curtain.pid), resources.of(self.curtain.pid)))
            return len(seen) > 50 and all(look == seen[-1] for look in seen[-50:])
        wait_until(are_at_rest, "handles and resources are at rest", 30)
        return *seen[-1], memory(self.curtain.pid).anonymous


if __name__ == "__main__":
    unittest.main()
