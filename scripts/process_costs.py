"""What a process costs its computer and its X server, as these tell it."""

import ctypes
import os
import re
import struct
from pathlib import Path
from typing import NamedTuple

from desktop_driver import Cookie, libc, xcb

xres = ctypes.CDLL("libxcb-res.so.0")
LOCAL_PROCESS = 2


class Memory(NamedTuple):
    """In MiB."""
    proportional: float
    resident: float
    private: float
    # The process's own, however many others share its libraries.
    anonymous: float


def memory(pid):
    rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
    sizes = {name: int(size) / 1024 for name, size in re.findall(r"^(\w+): +(\d+) kB", rollup, re.MULTILINE)}
    return Memory(sizes["Pss"], sizes["Rss"], sizes["Private_Clean"] + sizes["Private_Dirty"],
                  sizes["Anonymous"])


def handles(pid):
    return len(os.listdir(f"/proc/{pid}/fd"))


def switches(pid):
    """How often each thread has gone to sleep or was made to wait so far, by its number."""
    counts = {}
    for thread in Path(f"/proc/{pid}/task").iterdir():
        text = (thread / "status").read_text()
        name = (thread / "comm").read_text().strip()
        counts[f"{name} {thread.name}"] = sum(int(count) for count in re.findall(r"ctxt_switches:\s+(\d+)", text))
    return counts


def seconds_at_work(pid):
    """Processor time of all threads so far."""
    return sum(int((thread / "schedstat").read_text().split()[0]) for thread in Path(f"/proc/{pid}/task").iterdir()) / 1e9


class ServerResources:
    """What the X server keeps for a process, such as windows and key grabs (X-Resource 1.2)."""

    def __init__(self):
        self._connection = ctypes.c_void_p(xcb.xcb_connect(None, None))
        self._names = {}

    def close(self):
        xcb.xcb_disconnect(self._connection)

    def of(self, pid):
        """Counts by the names of the kinds, over all the process's connections."""
        counts = {}
        for client in self._clients(pid):
            reply = self._ask(xres, "xcb_res_query_client_resources", ctypes.c_uint32(client))
            number, = struct.unpack_from("I", reply, 8)
            for kind, count in struct.iter_unpack("II", reply[32:32 + 8 * number]):
                counts[self._name(kind)] = counts.get(self._name(kind), 0) + count
        return counts

    def _clients(self, pid):
        question = (ctypes.c_uint32 * 2)(0, LOCAL_PROCESS)
        reply = self._ask(xres, "xcb_res_query_client_ids", ctypes.c_uint32(1), question)
        number, = struct.unpack_from("I", reply, 8)
        offset = 32
        for _ in range(number):
            client, mask, length = struct.unpack_from("III", reply, offset)
            value = struct.unpack_from("I", reply, offset + 12)[0] if length else None
            offset += 12 + length
            if mask == LOCAL_PROCESS and value == pid:
                yield client

    def _name(self, atom):
        if atom not in self._names:
            reply = self._ask(xcb, "xcb_get_atom_name", ctypes.c_uint32(atom))
            length, = struct.unpack_from("H", reply, 8)
            self._names[atom] = reply[32:32 + length].decode()
        return self._names[atom]

    def _ask(self, library, request, *arguments):
        send = library[request]
        send.restype = Cookie
        receive = library[request + "_reply"]
        receive.restype = ctypes.c_void_p
        reply = receive(self._connection, send(self._connection, *arguments), None)
        if not reply:
            raise ConnectionError(f"the X server does not answer {request}")
        length, = struct.unpack("I", ctypes.string_at(reply + 4, 4))
        data = ctypes.string_at(reply, 32 + 4 * length)
        libc.free(ctypes.c_void_p(reply))
        return data
