"""Does on a fresh machine what README tells a newcomer to do first: `make run`, where there is no display.

usage: newcomer_test.py LOG

The machine has this one's release, make, the tree as it is committed, and nothing of the tests. LOG is a file for all that is said there.
"""

import sys
from pathlib import Path

from fresh_system import INSIDE, TREE, copy_tree, make_system, own_release, run_there

ONLY_FOR_TESTS = "libgtest-dev"


def use_system(root):
    copy_tree(root)
    run_there(root, None, True, "scripts/setup", "--tour")
    # Nothing is left to be fetched; beside the displays of other machines there is no room for its own.
    run_there(root, None, False, "make", "run")
    assert list((root / TREE / "build/tour").glob("*.png")), "the tour has left no pictures"
    # As those that are there already.
    run_there(root, None, False, "sh", "-c", f"dpkg-query --show pcmanfm && ! dpkg-query --show {ONLY_FOR_TESTS}")


if __name__ == "__main__":
    if sys.argv[1] == INSIDE:
        use_system(Path(sys.argv[2]))
    else:
        TOLD = "^Need to get|^After this operation|checked: |Everything happened"
        sys.exit(make_system(own_release(), Path(sys.argv[1]), [], ["make", "ca-certificates"], TOLD))
