"""Fresh systems of a release, which tests have made from the mirrors that this machine uses for its own and use while they are there.

A test that is given a release calls make_system(), which has mmdebstrap make the system and the test called again, with INSIDE as its
first argument and the folder of the system as its last.
"""

import os
import platform
import re
import shlex
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
INSIDE = "--inside"
HOME = "root"
TREE = f"{HOME}/curtain"
LINES_OF_A_FAILURE = 150
# Nothing of this machine's session is there.
ENVIRONMENT = {"HOME": f"/{HOME}", "USER": "root", "LOGNAME": "root", "SHELL": "/bin/bash", "LANG": "C.UTF-8",
               "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "CCACHE_DIR": "/ccache"}
# What a system that has been started has beyond its files. The files of the tests go where they are gone with it.
PREPARE = """\
set -e
mount --make-rprivate /
mount -t proc proc "$ROOT/proc"
for place in dev/shm tmp run; do mkdir -p "$ROOT/$place"; mount -t tmpfs -o mode=1777 tmpfs "$ROOT/$place"; done
mkdir -p "$ROOT/dev/pts"
# What is there may give every terminal to one user.
mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$ROOT/dev/pts"
if [ -n "$CACHE" ]; then mkdir -p "$ROOT/ccache"; mount --bind "$CACHE" "$ROOT/ccache"; fi
ip link set lo up 2>/dev/null || true
# As the root of the namespace, since the kernel lets nobody become an ordinary user in a folder that was only changed to.
mount --rbind "$ROOT" "$ROOT"
cd "$ROOT"
mkdir -p .machine
pivot_root . .machine
umount -l /.machine
exec env -i "$@"
"""


def own_sources():
    """Of this machine's release: for each the options, the address, the suite and the components."""
    for path in sorted([Path("/etc/apt/sources.list"), *Path("/etc/apt/sources.list.d").glob("*")]):
        text = path.read_text() if path.is_file() else ""
        if path.suffix == ".list":
            for line in re.finditer(r"^deb\s+(?:\[(.*?)\]\s+)?(\S+)\s+(\S+)\s+(.+)$", text, re.MULTILINE):
                yield line.groups(default="")
        elif path.suffix == ".sources":
            for stanza in re.split(r"\n\s*\n", text):
                fields = dict(re.findall(r"^([\w-]+):[ \t]*(.*)$", stanza, re.MULTILINE))
                options = f"signed-by={fields['Signed-By']}" if fields.get("Signed-By", "").startswith("/") else ""
                if "deb" in fields.get("Types", "").split():
                    for address in fields["URIs"].split():
                        for suite in fields["Suites"].split():
                            yield options, address, suite, fields["Components"]


def sources_of(release):
    own = own_release()
    for options, address, suite, components in own_sources():
        if suite == own or suite.startswith(f"{own}-"):
            yield f"deb {f'[{options}] ' if options else ''}{address} {release}{suite[len(own):]} {components}"


def own_release():
    return platform.freedesktop_os_release()["VERSION_CODENAME"]


def make_system(release, log, arguments, packages, told, options=()):
    """Returns the status of the test, which is called in the system with these arguments. All that is said is in the file LOG; what is
    told of it is its end in case of a failure, else the lines that match."""
    sources = list(sources_of(release))
    if not sources:
        sys.exit("this machine's package sources name no mirror of its own release")
    log.parent.mkdir(parents=True, exist_ok=True)
    hook = shlex.join([sys.executable, "-B", os.path.abspath(sys.argv[0]), INSIDE, *map(str, arguments)]) + ' "$1"'
    with open(log, "wb") as output:
        status = subprocess.run(["mmdebstrap", "--variant=apt", "--include=" + ",".join([*packages, "mount"]), "--format=null", *options,
                                 f"--customize-hook={hook}", release, "-", *sources], stdout=output, stderr=output,
                                check=False).returncode
    lines = log.read_text(errors="replace").splitlines()
    if status:
        print(f"The end of {len(lines)} lines in {log}:", *lines[-LINES_OF_A_FAILURE:], sep="\n")
    else:
        print(*[line for line in lines if re.search(told, line)], sep="\n")
    return status


def run_there(root, cache, has_network, *argv):
    """As the first user of a machine that has been started, whose processes end with the command; the cache may be None."""
    namespaces = ["--mount", "--pid", "--ipc", "--uts", "--fork", "--kill-child"] + ([] if has_network else ["--net"])
    variables = [f"{name}={value}" for name, value in ENVIRONMENT.items()]
    print("+", *argv, flush=True)
    subprocess.run(["unshare", *namespaces, "sh", "-c", PREPARE, "sh", *variables, "sh", "-c", f"cd /{TREE} && exec \"$@\"", "sh", *argv],
                   env=os.environ | {"ROOT": str(root), "CACHE": str(cache or "")}, check=True)


def copy_tree(root):
    """As it is committed."""
    tree = root / TREE
    tree.mkdir()
    committed = subprocess.run(["git", "-C", SOURCE, "-c", f"safe.directory={SOURCE}", "archive", "HEAD"], check=True,
                               stdout=subprocess.PIPE)
    subprocess.run(["tar", "--extract", "--directory", tree], input=committed.stdout, check=True)
