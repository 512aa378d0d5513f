"""Asks i3 and sway for their layout and gives them commands, at the socket that both have."""

import json
import os
import socket
import struct
import subprocess

RUN_COMMAND, GET_WORKSPACES, SUBSCRIBE, GET_TREE = 0, 1, 2, 4
EVENT = 1 << 31
SCRATCHPAD = "__i3_scratch"


def socket_path():
    if path := os.environ.get("SWAYSOCK"):
        return path
    return subprocess.run(["i3", "--get-socketpath"], check=True, capture_output=True, text=True).stdout.strip()


class I3:
    """One connection."""

    def __init__(self):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(socket_path())
        self._input = self._socket.makefile("rb")

    def close(self):
        self._input.close()
        self._socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def ask(self, kind, payload=""):
        """Events that come before the answer are left out."""
        text = payload.encode()
        self._socket.sendall(b"i3-ipc" + struct.pack("=II", len(text), kind) + text)
        while True:
            answered, answer = self._receive()
            if answered == kind:
                return answer

    def next_event(self, seconds):
        """Of what has been subscribed to; raises TimeoutError."""
        self._socket.settimeout(seconds)
        kind, event = self._receive()
        assert kind & EVENT, kind
        return event

    def _receive(self):
        length, kind = struct.unpack("=II", self._input.read(14)[6:])
        return kind, json.loads(self._input.read(length))


def ask(kind, payload=""):
    """One question, and its answer."""
    with I3() as connection:
        return connection.ask(kind, payload)


def windows(node=None, workspace=None):
    """Every window: its node and the name of its workspace."""
    node = node or ask(GET_TREE)
    if node["type"] == "dockarea":
        return
    workspace = node["name"] if node["type"] == "workspace" else workspace
    children = node["nodes"] + node["floating_nodes"]
    if node["type"] in {"con", "floating_con"} and (node.get("window") or node.get("pid")) and not children:
        yield node, workspace
    for child in children:
        yield from windows(child, workspace)


def class_of(node):
    return node.get("app_id") or node["window_properties"]["class"]
