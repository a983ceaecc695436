# SPDX-License-Identifier: Apache-2.0
"""A client of an X server, with the few requests that a test makes behind a program's back."""
import socket
import struct

PATIENCE = 60  # seconds

DESTROY_WINDOW, QUERY_TREE, QUERY_EXTENSION, KILL_CLIENT = 4, 15, 98, 113
CHANGE_WINDOW_ATTRIBUTES, GET_GEOMETRY, GET_INPUT_FOCUS = 2, 14, 43
EVENT_MASK = 0x800
SUBSTRUCTURE_REDIRECT = 0x100000


def socket_seen_by(process):
    """Where the server on ":0" listens in the namespaces of that process."""
    return f"/proc/{process}/root/tmp/.X11-unix/X0"


class XError(Exception):
    """The server has refused a request."""


class XClient:
    """One connection. Every request is answered, or refused, before its method returns."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(path)
        self.sequence = 0
        self.socket.sendall(struct.pack("<BxHHHHxx", ord("l"), 11, 0, 0, 0))
        head = self._receive(8)
        if head[0] != 1:
            raise XError("the X server takes no more clients")
        setup = self._receive(4 * struct.unpack("<H", head[6:8])[0])
        self.base, = struct.unpack("<I", setup[4:8])
        vendor_length, = struct.unpack("<H", setup[16:18])
        formats = setup[21]
        first_screen = 32 + (vendor_length + 3) // 4 * 4 + 8 * formats
        self.root, = struct.unpack("<I", setup[first_screen:first_screen + 4])

    def close(self):
        self.socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.close()

    def _receive(self, count):
        received = b""
        while len(received) < count:
            got = self.socket.recv(count - len(received))
            if not got:
                raise ConnectionError("the X server has gone")
            received += got
        return received

    def _send(self, opcode, detail, body):
        self.sequence = (self.sequence + 1) & 0xFFFF
        self.socket.sendall(struct.pack("<BBH", opcode, detail, 1 + len(body) // 4) + body)

    def _answer(self):
        """To the last request; events are passed over."""
        while True:
            answer = self._receive(32)
            if answer[0] == 1:
                return answer + self._receive(4 * struct.unpack("<I", answer[4:8])[0])
            if answer[0] == 0 and struct.unpack("<H", answer[2:4])[0] == self.sequence:
                raise XError(f"error {answer[1]} for request {answer[10]}")
            assert answer[0] != 0, "an earlier request was refused"

    def _do(self, opcode, detail, body):
        """A request without an answer, and one with, that says that the first is done."""
        self._send(opcode, detail, body)
        asked = self.sequence
        self._send(GET_INPUT_FOCUS, 0, b"")
        while True:
            answer = self._receive(32)
            if answer[0] == 1:
                return
            if answer[0] == 0:
                assert struct.unpack("<H", answer[2:4])[0] == asked
                self._receive(32)  # the other one's
                raise XError(f"error {answer[1]} for request {answer[10]}")

    def children(self, window):
        self._send(QUERY_TREE, 0, struct.pack("<I", window))
        answer = self._answer()
        count, = struct.unpack("<H", answer[16:18])
        return list(struct.unpack(f"<{count}I", answer[32:32 + 4 * count]))

    def size(self, window):
        self._send(GET_GEOMETRY, 0, struct.pack("<I", window))
        return struct.unpack("<HH", self._answer()[16:20])

    def destroy(self, window):
        self._do(DESTROY_WINDOW, 0, struct.pack("<I", window))

    def kill_client(self, resource):
        """Cuts the connection that made `resource`."""
        self._do(KILL_CLIENT, 0, struct.pack("<I", resource))

    def other_clients(self):
        """A resource of each."""
        resources = self._extension(b"X-Resource")
        self._send(resources, 1, b"")  # QueryClients
        answer = self._answer()
        count, = struct.unpack("<I", answer[8:12])
        bases = [struct.unpack("<I", answer[32 + 8 * at:36 + 8 * at])[0] for at in range(count)]
        return [base for base in bases if base not in (0, self.base)]

    def _extension(self, name):
        self._send(QUERY_EXTENSION, 0, struct.pack("<Hxx", len(name)) + name.ljust((len(name) + 3) // 4 * 4, b"\0"))
        answer = self._answer()
        assert answer[8], f"the X server has no {name.decode()}"
        return answer[9]

    def hold_back_windows(self):
        """From now on no window is mapped: this client is asked instead, and does nothing."""
        self._do(CHANGE_WINDOW_ATTRIBUTES, 0, struct.pack("<III", self.root, EVENT_MASK, SUBSTRUCTURE_REDIRECT))

    def resize_screen(self, width, height):
        """By RandR, with the one output that a virtual server has switched off meanwhile."""
        randr = self._extension(b"RANDR")
        self._send(randr, 0, struct.pack("<II", 1, 5))
        self._answer()
        self._send(randr, 8, struct.pack("<I", self.root))  # GetScreenResources
        answer = self._answer()
        config, crtcs, outputs, _ = struct.unpack("<IHHH", answer[12:22])
        lists = answer[32:]
        crtc, = struct.unpack("<I", lists[:4])
        output, = struct.unpack("<I", lists[4 * crtcs:4 * crtcs + 4])
        name = f"{width}x{height}".encode()
        mode_info = struct.pack("<IHHIHHHHHHHHI", 0, width, height, width * height * 60, 0, 0, width, 0, 0, 0, height,
                                len(name), 0)
        self._send(randr, 16, struct.pack("<I", self.root) + mode_info + name.ljust((len(name) + 3) // 4 * 4, b"\0"))
        mode, = struct.unpack("<I", self._answer()[8:12])  # CreateMode
        self._do(randr, 18, struct.pack("<II", output, mode))  # AddOutputMode

        def set_crtc(the_mode, outputs):
            self._send(randr, 21, struct.pack("<IIIhhIHxx", crtc, 0, config, 0, 0, the_mode, 1) + outputs)
            assert self._answer()[1] == 0, "the mode is refused"

        set_crtc(0, b"")
        self._do(randr, 7, struct.pack("<IHHII", self.root, width, height, width // 4, height // 4))
        set_crtc(mode, struct.pack("<I", output))
