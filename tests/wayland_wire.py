"""A client of a Wayland display with a mouse of its own, which the headless sway has none of."""

import socket
import struct
import time

POINTERS, ACTIVATION = "zwlr_virtual_pointer_manager_v1", "xdg_activation_v1"
LEFT, RIGHT = 0x110, 0x111
DISPLAY, REGISTRY = 1, 2
SYNC, GET_REGISTRY = 0, 1  # requests to the display
BIND = 0
MOVE_TO, BUTTON, FRAME = 1, 2, 4  # requests to a pointer
CREATE_POINTER, GET_TOKEN, COMMIT_TOKEN = 0, 1, 3


class Client:
    def __init__(self, display, size):
        """`size`: pixels of the display, which the mouse's places are in."""
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(60)
        self.socket.connect(str(display))
        self.size, self.last, self.unread, self.globals = size, DISPLAY, b"", {}
        self.send(DISPLAY, GET_REGISTRY, self.new())
        self.sync()
        self.activation = self.bind(ACTIVATION)
        self.pointer = self.create(self.bind(POINTERS), CREATE_POINTER, 0)
        self.sync()

    def close(self):
        self.socket.close()

    def move_to(self, place):
        self.send(self.pointer, MOVE_TO, self.now(), *place, *self.size)
        self.send(self.pointer, FRAME)

    def button(self, down, button=LEFT):
        self.send(self.pointer, BUTTON, self.now(), button, int(down))
        self.send(self.pointer, FRAME)

    def activation_token(self):
        """What a launcher gives to a program that it starts."""
        token = self.create(self.activation, GET_TOKEN)
        self.send(token, COMMIT_TOKEN)
        return next(text_of(body) for sender, _, body in self.events() if sender == token).decode()

    @staticmethod
    def now():
        return int(time.monotonic() * 1000) & 0xFFFFFFFF

    def new(self):
        self.last += 1
        return self.last

    def create(self, maker, request, *arguments):
        self.send(maker, request, *arguments, self.new())
        return self.last

    def bind(self, interface):
        name = self.globals[interface]
        self.send(REGISTRY, BIND, name, interface.encode() + b"\0", 1, self.new())
        return self.last

    def send(self, receiver, request, *arguments):
        body = b"".join(struct.pack("=I", a) if isinstance(a, int) else
                        struct.pack("=I", len(a)) + a + bytes(-len(a) % 4) for a in arguments)
        self.socket.sendall(struct.pack("=II", receiver, len(body) + 8 << 16 | request) + body)

    def sync(self):
        """Until the display has done all that was sent."""
        done = self.create(DISPLAY, SYNC)
        for sender, event, body in self.events():
            if sender == done:
                return
            if (sender, event) == (DISPLAY, 0):
                raise AssertionError(f"refused: {body}")
            if (sender, event) == (REGISTRY, 0):
                self.globals[text_of(body[4:]).decode()] = struct.unpack_from("=I", body)[0]

    def events(self):
        while True:
            while len(self.unread) >= 8:
                sender, head = struct.unpack_from("=II", self.unread)
                if len(self.unread) < head >> 16:
                    break
                body, self.unread = self.unread[8:head >> 16], self.unread[head >> 16:]
                yield sender, head & 0xFFFF, body
            more = self.socket.recv(65536)
            if not more:
                raise AssertionError("the display has gone")
            self.unread += more


def text_of(body):
    length = struct.unpack_from("=I", body)[0]
    return body[4:3 + length]
