"""A viewer of the remote framebuffer protocol, version 3.8 (RFC 6143), that counts what it is sent."""

import contextlib
import socket
import struct
import threading

RAW = 0
FRAMEBUFFER_UPDATE, SET_COLOUR_MAP, BELL, SERVER_CUT_TEXT = range(4)


class VncViewer:
    def __init__(self, port):
        self.pixels = 0
        self._socket = socket.create_connection(("127.0.0.1", port), timeout=10)
        self._stream = self._socket.makefile("rb")
        self._size = self._shake_hands()
        self._thread = threading.Thread(target=self._follow, daemon=True)
        self._thread.start()

    def close(self):
        # A blocked reader keeps the descriptor open; shutting the connection down wakes it.
        with contextlib.suppress(OSError):
            self._socket.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        self._stream.close()
        self._socket.close()

    def _read(self, layout):
        size = struct.calcsize(layout)
        data = self._stream.read(size)
        if len(data) < size:
            raise EOFError
        return struct.unpack(layout, data)

    def _shake_hands(self):
        self._stream.read(12)
        self._socket.sendall(b"RFB 003.008\n")
        number, = self._read("B")
        if 1 not in self._stream.read(number):
            raise ConnectionError("the server wants a password")
        self._socket.sendall(b"\1")
        if self._read(">I") != (0,):
            raise ConnectionError("the server refused")
        self._socket.sendall(b"\1")
        width, height, depth, *_, name = self._read(">HHB15xI")
        self._stream.read(name)
        self._bytes_per_pixel = depth // 8
        self._socket.sendall(struct.pack(">BxHi", 2, 1, RAW))
        return width, height

    def _ask(self, is_incremental):
        self._socket.sendall(struct.pack(">BBHHHH", 3, is_incremental, 0, 0, *self._size))

    def _follow(self):
        with contextlib.suppress(OSError, EOFError, ValueError):
            self._ask(False)
            while True:
                kind, = self._read("B")
                if kind == FRAMEBUFFER_UPDATE:
                    self._take_update()
                    self._ask(True)
                elif kind == SET_COLOUR_MAP:
                    _, _, colours = self._read(">BHH")
                    self._stream.read(6 * colours)
                elif kind == SERVER_CUT_TEXT:
                    _, length = self._read(">3sI")
                    self._stream.read(length)

    def _take_update(self):
        rectangles, = self._read(">xH")
        for _ in range(rectangles):
            _, _, width, height, _ = self._read(">HHHHi")
            self._stream.read(width * height * self._bytes_per_pixel)
            self.pixels += width * height
