"""Checks what the compiler cannot: who includes whom, where time and threads are used, what may stand nowhere.

usage: check.py ROOT

Prints every offence as file:line and fails if there is one. The patterns do not match their own text.
"""

import posixpath
import re
import sys
from collections import Counter
from fnmatch import fnmatchcase
from pathlib import Path
from typing import NamedTuple

NOTHING = r"(?!)"
ANYTHING = r""
JSON = r"nlohmann/"


class Box(NamedTuple):
    """Files that follow the same rules. A `*` in a pattern stands for folders too."""
    name: str
    pattern: str
    sees: set  # the names of boxes
    foreign_headers: str = NOTHING  # on top of the standard library's
    may_wait: bool = False  # that is, read a clock, sleep or use threads


# The first match counts.
BOXES = [
    Box("main", "Curtain/main.cpp", {"app", "hotkeys", "ports", "core", "qt", "linux", "factory"}, ANYTHING),
    Box("app", "Curtain/*", {"app", "hotkeys", "ports", "core"}, ANYTHING),
    Box("hotkeys", "hotkeys/*.cpp", {"hotkeys", "ports", "core"}, JSON),
    Box("hotkeys", "hotkeys/*", {"hotkeys", "ports", "core"}),
    Box("factory", "platform/linux/*LinuxPlatform.*", {"ports", "core", "qt", "linux", "factory"}, ANYTHING,
        True),
    Box("linux", "platform/linux/*", {"ports", "core", "linux"}, ANYTHING, True),
    Box("qt", "platform/qt/*", {"ports", "core", "qt"}, ANYTHING, True),
    Box("ports", "platform/*", {"ports", "core"}),
    Box("core", "core/*.cpp", {"core"}, JSON),
    Box("core", "core/*", {"core"}),
]
OUTSIDE_THE_PRODUCT = ("tests/", "bench/")

# How many files stand side by side.
MOST_FILES = 60
MOST_FILES_IN = {"Curtain": 118}

LINUX = "platform/linux/"
LINUX_ROOMS = LINUX + "CMakeLists.txt"
LINUX_ROOM = re.compile(r"^linux_room\(([\w/]+)([^)]*)\)", re.MULTILINE)

CLOCK_SLEEP_OR_THREAD = re.compile(
    r"""\w*[cC]lock::now\b
    | \b (?: sleep_for | sleep_until | usleep | nanosleep | clock_gettime | gettimeofday | pthread_create ) \b
    | \b std:: (?: thread | jthread | async | time ) \b
    | <thread>
    | \b sleep \( \d | \b time \( (?: nullptr | NULL | 0 ) \)
    | \b Q (?: Thread | ThreadPool | tConcurrent | Timer | BasicTimer | ElapsedTimer | DeadlineTimer ) \b
    | \b current (?: DateTime | DateTimeUtc | Date | Time | MSecsSinceEpoch | SecsSinceEpoch ) \b
    | \b startTimer \b""",
    re.VERBOSE)

# The one place that may ask, and only about calls.
SENDER_OF_A_CALL = LINUX + "dbus/Caller.h"
SENDER_OF_A_MESSAGE = re.compile(r"(?:\.|->)\s*service\s*\(\s*\)")

FORBIDDEN = re.compile(
    r"""\b spec\.md \b
    | \b specificatio[n]s? \b
    | \b part [ ] \d+ \. \d+
    | (?<! [\w.~})-] ) / (?: work | tmp ) / (?! \.X11-unix/ )""",
    re.VERBOSE | re.IGNORECASE)

LITERAL_COLOUR = re.compile(
    r""""\#(?:[0-9A-Fa-f]{3,4}|[0-9A-Fa-f]{6}|[0-9A-Fa-f]{8})"
    | \b\w*[cC]olor\s*:\s*"(?!transparent")\w+" """,
    re.VERBOSE)

# An adapter that forgets to answer must not seem to be able to do something.
ANSWER_WITH_DEFAULT = re.compile(r"\bvirtual\s+(?!~|void\b)(?:[^;{=]|=(?!\s*0\s*;))*?(?:;|\{)")

SCRIPTS = ("scripts/*", "tests/*.py", "tests/*.sh")
ENDING_BY_NAME = re.compile(r"\b(?:p[k]ill|kill[a]ll)\b")

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^>"\n]+)[>"]', re.MULTILINE)
STANDARD_HEADER = re.compile(r"[a-z0-9_]+")
COMMENT_OR_STRING = re.compile(
    r"""(?P<comment> //[^\n]* | /\*.*?\*/ )
    | R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"
    | "(?:\\.|[^"\\\n])*"
    | '(?:\\.|[^'\\\n])*'""",
    re.VERBOSE | re.DOTALL)


def files(root):
    """The paths of the tree's files, without what .gitignore names at the top."""
    ignored = {".git"}
    if (root / ".gitignore").exists():
        ignored |= {entry.strip("/") for entry in (root / ".gitignore").read_text().split()}
    tops = [top for top in root.iterdir() if top.name not in ignored]
    return sorted(path.relative_to(root).as_posix()
                  for top in tops for path in [top, *top.rglob("*")] if path.is_file())


def matches(pattern, text):
    """Every match with its line number."""
    for match in pattern.finditer(text):
        yield text.count("\n", 0, match.start()) + 1, match


def without_comments(code):
    return COMMENT_OR_STRING.sub(
        lambda match: "\n" * match[0].count("\n") if match["comment"] else match[0], code)


def box_of(path):
    return next((box for box in BOXES if fnmatchcase(path, box.pattern)), None)


def included_path(including, target, paths):
    """The path in the tree that an include means; None if it means a header from outside."""
    beside = posixpath.normpath(posixpath.join(posixpath.dirname(including), target))
    if beside in paths:
        return beside
    from_root = posixpath.normpath(target)
    inside = from_root in paths or box_of(from_root) or from_root.startswith(OUTSIDE_THE_PRODUCT)
    return from_root if inside else None


def linux_rooms(text):
    """What the rooms of the Linux adapters declare: the line and the rooms that each one may include."""
    rooms = {}
    for line, match in matches(LINUX_ROOM, text):
        declared = re.search(r"\bROOMS\b([^A-Z]*)", match[2])
        rooms[match[1]] = line, set(declared[1].split()) if declared else set()
    return rooms


def linux_room_of(path, rooms):
    """None for what stands above the rooms, and outside."""
    folder = posixpath.dirname(path.removeprefix(LINUX)) if path.startswith(LINUX) else ""
    while folder and folder not in rooms:
        folder = posixpath.dirname(folder)
    return folder or None


def room_offences(texts):
    """Triples of a path, a line number and what is wrong there with the rooms."""
    rooms = linux_rooms(texts.get(LINUX_ROOMS, ""))
    used = {room: set() for room in rooms}
    for path, text in texts.items() if rooms else ():
        if not path.startswith(LINUX) or not path.endswith((".h", ".cpp")):
            continue
        room = linux_room_of(path, rooms)
        if not room:
            if "/" in path.removeprefix(LINUX):
                yield path, 0, f"{posixpath.dirname(path)} is no room of {LINUX_ROOMS}"
            continue
        for line, match in matches(INCLUDE, without_comments(text)):
            other = linux_room_of(included_path(path, match[1], texts) or "", rooms)
            if other not in {None, room} | rooms[room][1]:
                yield path, line, f"{room} does not say in {LINUX_ROOMS} that it includes from {other}"
            used[room].add(other)
    for room, (line, declared) in rooms.items():
        for other in sorted(declared - used[room]):
            yield LINUX_ROOMS, line, f"{room} includes nothing from {other}"


def folder_offences(paths):
    """Triples like those of the rooms."""
    for folder, count in sorted(Counter(map(posixpath.dirname, paths)).items()):
        most = MOST_FILES_IN.get(folder, MOST_FILES)
        if count > most:
            yield folder, 0, f"{count} files are too many for one folder; {most} may stand here"


def code_offences(box, path, code, paths):
    for line, match in matches(INCLUDE, code):
        inside = included_path(path, match[1], paths)
        if inside:
            other = box_of(inside)
            if not other or other.name not in box.sees:
                yield line, f"{box.name} must not include {inside}"
        elif not STANDARD_HEADER.fullmatch(match[1]) and not re.match(box.foreign_headers, match[1]):
            yield line, f"{box.name} must not include <{match[1]}>"
    if path.endswith(".h") and (box.name == "ports" or path.endswith("/WindowSystem.h")):
        for line, _ in matches(ANSWER_WITH_DEFAULT, code):
            yield line, "an interface answers nothing by itself; end the method with = 0"
    if not box.may_wait:
        for line, match in matches(CLOCK_SLEEP_OR_THREAD, code):
            yield line, f'"{match[0]}": time and threads come from the queues in platform/'
    for line, match in matches(SENDER_OF_A_MESSAGE, code):
        if path != SENDER_OF_A_CALL:
            yield line, f"{match[0]} is empty in replies of some Qt versions; ask the bus (BusNameOwner)"


def offences(path, text, paths):
    """Pairs of a line number and what is wrong there."""
    if match := FORBIDDEN.search(path):
        yield 0, f'"{match[0]}" must not stand in a file name'
    for line, match in matches(FORBIDDEN, text):
        yield line, f'"{match[0]}" must not stand here'
    if fnmatchcase(path, "Curtain/*.qml") and path != "Curtain/controls/Theme.qml":
        for line, match in matches(LITERAL_COLOUR, text):
            yield line, f"{match[0]}: colours are in Theme.qml"
    if any(fnmatchcase(path, pattern) for pattern in SCRIPTS):
        for line, match in matches(ENDING_BY_NAME, text):
            yield line, f"{match[0]} ends processes by name; end them by the ids you recorded"
    box = box_of(path)
    if box and path.endswith((".h", ".cpp")):
        yield from code_offences(box, path, without_comments(text), paths)


def check(root):
    """Prints the offences in a tree and returns whether it is free of them."""
    texts = {path: (root / path).read_text(errors="replace") for path in files(root)}
    found = [(path, line, message) for path, text in texts.items()
             for line, message in offences(path, text, texts)]
    found += room_offences(texts)
    found += folder_offences(texts)
    for path, line, message in found:
        print(f"{path}:{line}: {message}")
    print(f"{len(texts)} files, {len(found)} offences")
    return bool(texts) and not found


if __name__ == "__main__":
    sys.exit(0 if check(Path(sys.argv[1])) else 1)
