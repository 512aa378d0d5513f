"""Runs the package's own test, as a distribution does, on a fresh machine of this one's release.

usage: autopkgtest_test.py LOG PACKAGES

PACKAGES is the folder of the package. LOG is a file for all that is said there.
"""

import os
import shutil
import sys
from pathlib import Path

from fresh_system import INSIDE, TREE, copy_tree, make_system, own_release, run_there


def use_system(package, root):
    copy_tree(root)
    shutil.copy(package, root / TREE.rpartition("/")[0])
    # The machine is thrown away anyway, so the test may run on it as it is.
    run_there(root, None, True, "autopkgtest", "--no-built-binaries", f"../{package.name}", "./", "--", "null")


if __name__ == "__main__":
    if sys.argv[1] == INSIDE:
        use_system(Path(sys.argv[2]), Path(sys.argv[3]))
    else:
        PACKAGE = max(Path(sys.argv[2]).glob("*.deb"), key=os.path.getmtime).resolve()
        sys.exit(make_system(own_release(), Path(sys.argv[1]), [PACKAGE], ["autopkgtest", "ca-certificates"], "^tour +PASS|checked: "))
