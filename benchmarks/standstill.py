#!/usr/bin/env python3
"""For how long the windows stand still: standstill.py BUILD_DIRECTORY [SECONDS]

Starts the program under Xvfb and openbox with a PulseAudio null sink and, where it is installed, a JACK server, and asks
its main window over and over, as a window manager does (_NET_WM_PING), whether it still answers. The program answers
from the event loop of its windows, so the longest that an answer takes is the longest standstill; it is asked again as
soon as it has answered. Beside each figure stands the limit: 50 ms more than the longest answer of the seconds before, in
which nothing was done. All of it is done once with servers that answer and once with servers that are stopped (SIGSTOP).
SECONDS is how long the run is whose end is watched. Nothing fails on the figures."""

import ctypes
import os
import shutil
import signal
import subprocess
import threading
import time
from ctypes import byref, c_int, c_long, c_ulong, c_void_p
from pathlib import Path

import live_cost

LIMIT = 50  # ms
WATCHED = 5  # seconds: servers are given up after two
CLOSING_LIMIT = 1  # second
SAMPLES = Path(__file__).resolve().parent.parent / "samples"
LONG_SONG = 40  # times the sample
NOTIFY = 1 << 17 | 1 << 19  # of the root window, and of what is in it
CLIENT_MESSAGE = 33


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", c_ulong), ("send_event", c_int), ("display", c_void_p), ("window", c_ulong),
                ("message_type", c_ulong), ("format", c_int), ("data", c_long * 5)]


class Event(ctypes.Union):
    _fields_ = [("type", c_int), ("message", ClientMessage), ("room", c_long * 24)]


class Pinger(threading.Thread):
    """Notes the longest answer since it was asked last."""

    def __init__(self, window):
        super().__init__(daemon=True)
        self.window, self.longest, self.asked, self.ended = int(window), 0.0, None, False
        self.x11 = ctypes.CDLL("libX11.so.6")
        for name in ("XOpenDisplay", "XDefaultRootWindow", "XInternAtom"):
            getattr(self.x11, name).restype = c_void_p if name == "XOpenDisplay" else c_ulong
        self.start()

    def run(self):
        x11 = self.x11
        display = c_void_p(x11.XOpenDisplay(None))
        root = x11.XDefaultRootWindow(display)
        protocols, ping = (x11.XInternAtom(display, name, 0) for name in (b"WM_PROTOCOLS", b"_NET_WM_PING"))
        x11.XSelectInput(display, c_ulong(root), c_long(NOTIFY))
        number = 0
        while not self.ended:
            number += 1
            event = Event(message=ClientMessage(CLIENT_MESSAGE, 0, 1, display, self.window, protocols, 32,
                                                (c_long * 5)(ping, number, self.window, 0, 0)))
            self.asked = time.monotonic()
            x11.XSendEvent(display, c_ulong(self.window), 0, c_long(0), byref(event))
            x11.XFlush(display)
            while not self.ended and not self.answered(display, number):
                time.sleep(0.0005)
            self.longest = max(self.longest, time.monotonic() - self.asked)
            self.asked = None

    def answered(self, display, number):
        while self.x11.XPending(display):
            event = Event()
            self.x11.XNextEvent(display, byref(event))
            if event.type == CLIENT_MESSAGE and event.message.data[1] == number:
                return True
        return False

    def standstill(self):
        """In ms; an answer that is still waited for counts too."""
        asked = self.asked
        longest = max(self.longest, time.monotonic() - asked if asked else 0)
        self.longest = 0
        return longest * 1000


def observe(pinger, name, action, seconds=WATCHED):
    time.sleep(1)  # what was done before is over
    pinger.standstill()
    time.sleep(3)
    idle = pinger.standstill()
    action()
    time.sleep(seconds)
    busy = pinger.standstill()
    print(f"  {name:32}{busy:8.1f}   idle {idle:6.1f}   limit {idle + LIMIT:6.1f}"
          f"{'' if busy <= idle + LIMIT else '   exceeded'}", flush=True)


def key(*keys):
    subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)


def start_jack(**quiet):
    if not shutil.which("jackd"):
        return None
    name = f"melvane-{os.getpid()}"
    os.environ.update(JACK_DEFAULT_SERVER=name, JACK_NO_AUDIO_RESERVATION="1", JACK_NO_START_SERVER="1")
    server = subprocess.Popen(["jackd", "-S", "--no-realtime", "-n", name, "-d", "dummy", "-r", "44100", "-p", "1024"],
                              **quiet)
    time.sleep(2)
    return server


def make_files(folder, seconds):
    voice, song = folder / "voice.wav", folder / "song.mp3"
    live_cost.write_sound(voice, 10, 0.2, 0)
    live_cost.write_sound(folder / "song.wav", seconds, 0.3, 0.1)
    subprocess.run(["lame", "--quiet", folder / "song.wav", song], check=True)
    long_song = folder / "long.mp3"
    long_song.write_bytes((SAMPLES / "evening-ferry.mp3").read_bytes() * LONG_SONG)
    midi = shutil.copy(SAMPLES / "evening-ferry.kar", folder / "song.kar")
    return song, voice, long_song, midi


def close(program, window):
    live_cost.xdotool("windowactivate", "--sync", window)
    began = time.monotonic()
    key("alt+F4")
    try:
        program.wait(10)
    except subprocess.TimeoutExpired:
        program.kill()
    print(f"  {'closing the program':32}{time.monotonic() - began:8.2f} s   limit {CLOSING_LIMIT} s", flush=True)


def look_at_everything(build, files, servers, state, seconds):
    song, voice, long_song, midi = files
    program, window, _ = live_cost.start_program(build)
    pinger = Pinger(window)

    def hand_over(*chosen):
        subprocess.run([build / "melvane", *chosen], check=True, timeout=10)

    def focus():
        live_cost.xdotool("windowactivate", "--sync", window)

    def preferences():
        for _ in range(3):
            focus()
            key("ctrl+comma")
            time.sleep(0.3)

    def play(file):
        focus()
        key("ctrl+p")

    print(f"{state}: longest standstill, ms")
    for server in servers:
        server.send_signal(signal.SIGSTOP if state == "servers that hang" else signal.SIGCONT)
    observe(pinger, "choosing a long MP3", lambda: hand_over(long_song))
    observe(pinger, "choosing a MIDI song", lambda: hand_over(midi))
    observe(pinger, "activating the preferences", preferences)
    key("Escape")
    hand_over(song, voice)
    time.sleep(2)
    focus()
    mix = song.with_name("song2.mp3")
    mix.unlink(missing_ok=True)
    observe(pinger, "starting a run", lambda: key("ctrl+m"))
    time.sleep(max(0, seconds - WATCHED - 6))
    observe(pinger, "the end of the run", lambda: None, 12)
    shutil.copy(long_song, mix)
    observe(pinger, "opening the player", lambda: play(mix))
    key("space")
    time.sleep(1)
    key("Escape")
    observe(pinger, "the preferences again", preferences)
    pinger.ended = True
    close(program, window)


def measure(build, folder, seconds):
    socket = folder / "stopped.sock"
    os.environ.update(XDG_RUNTIME_DIR=str(folder), PULSE_SERVER=f"unix:{socket}")
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    manager = subprocess.Popen(["openbox"], **quiet)
    sound, jack = live_cost.start_sound(socket, **quiet), start_jack(**quiet)
    files = make_files(folder, seconds)
    servers = [server for server in (sound, jack) if server]
    try:
        for state in ("servers that answer", "servers that hang"):
            look_at_everything(build, files, servers, state, seconds)
    finally:
        for server in servers:
            server.send_signal(signal.SIGCONT)
        for helper in (*servers, manager):
            helper.terminate()
            helper.wait()


if __name__ == "__main__":
    live_cost.main(measure)
