"""Locks numbers of X displays, so that several virtual desktops and tests have servers of their own beside each other."""

import contextlib
import errno
import fcntl
import itertools
import os
import socket
import tempfile
from pathlib import Path

# Where X servers listen; beside it they lock the numbers of their displays.
SOCKETS = Path("/tmp/.X11-unix/")
LOCKS = SOCKETS.parent
# Beyond those that compositors try for their own X servers.
FIRST_DISPLAY = 100


class DisplayLock:
    """A display that is nobody else's until it is released, by this process.

    An X server that chooses its display itself and tells it on a descriptor locks none: KWin takes it for one that is
    gone and removes its socket, and one that ends may remove that of the next.
    """

    def __init__(self):
        with tempfile.NamedTemporaryFile("w", dir=LOCKS, prefix=".tX") as text, _one_at_a_time():
            text.write(f"{os.getpid():10}\n")
            text.flush()
            os.chmod(text.name, 0o444)
            self._number = next(number for number in itertools.count(FIRST_DISPLAY) if _takes(text.name, number))

    @property
    def display(self):
        return f":{self._number}"

    def release(self):
        """Once the server has ended."""
        _lock_of(self._number).unlink(missing_ok=True)


def _lock_of(number):
    return LOCKS / f".X{number}-lock"


@contextlib.contextmanager
def _one_at_a_time():
    """Two that find the lock of the same process that is gone would each remove what the other has made since."""
    folder = os.open(LOCKS, os.O_RDONLY)
    try:
        fcntl.flock(folder, fcntl.LOCK_EX)
        yield
    finally:
        os.close(folder)


def _takes(text, number):
    """Whether the number was free; a file with the text is its lock then."""
    if _is_served(number):
        # Not every server locks its display.
        return False
    lock = _lock_of(number)
    if _is_left_behind(lock):
        with contextlib.suppress(PermissionError):
            lock.unlink()
    try:
        # Nobody sees a lock before it says whose it is.
        os.link(text, lock)
    except FileExistsError:
        return False
    return True


def _is_served(number):
    path = str(SOCKETS / f"X{number}")
    # A server on another machine that shares this one's network, but not its files, is at the second only.
    return _is_heard(path) or _is_heard(f"\0{path}")


def _is_heard(address):
    """A server that is killed leaves its socket, but nobody listens there."""
    with socket.socket(socket.AF_UNIX) as call:
        call.setblocking(False)
        return call.connect_ex(address) not in (errno.ENOENT, errno.ECONNREFUSED)


def _is_left_behind(lock):
    """Whether its process is gone, as X servers tell it."""
    try:
        os.kill(int(lock.read_text()), 0)
    except ProcessLookupError:
        return True
    except (OSError, ValueError):
        # There is no lock, or its process is somebody else's.
        pass
    return False
