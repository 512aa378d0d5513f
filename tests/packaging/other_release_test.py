"""Does on a fresh machine of another Debian release what README tells a newcomer to do: the two commands.

usage: other_release_test.py RELEASE LOG

RELEASE is a codename. The system gets the tree as it is committed. LOG is a file for all that is said there; beside it a folder keeps
what the compiler made, so that the next time takes less long.
"""

import sys
from pathlib import Path

from fresh_system import INSIDE, copy_tree, make_system, run_there


def use_system(log, root):
    cache = log.with_suffix(".ccache")
    cache.mkdir(exist_ok=True)
    copy_tree(root)
    # Afterwards, there is nothing left to be fetched.
    run_there(root, cache, True, "scripts/setup", "--tests")
    run_there(root, cache, False, "make", "test")
    run_there(root, cache, False, "make", "run")


if __name__ == "__main__":
    if sys.argv[1] == INSIDE:
        use_system(Path(sys.argv[2]), Path(sys.argv[3]))
    else:
        RELEASE, LOG = sys.argv[1], Path(sys.argv[2])
        # What was counted and measured.
        TOLD = "tests passed|Total Test time|checked: |Everything happened"
        sys.exit(make_system(RELEASE, LOG, [LOG], ["make", "ca-certificates"], TOLD))
