#!/usr/bin/env python3
"""The program under a Wayland compositor without a screen: wayland_test.py BUILD_DIRECTORY"""

import contextlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import wayland_wire
from tool_test import HANG, RATE, lame, noise, wait_until, write_wav

PROGRAM = "melvane"  # Becomes the path in the build directory.
SECONDS = 3
PLACEHOLDER = 100  # bytes at most of what a mix's name holds until it is finished
SIZE = (1280, 800)
CONFIG = f"""
xwayland disable
output HEADLESS-1 resolution {SIZE[0]}x{SIZE[1]}
focus_on_window_activation focus
"""
SOUND = ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes"]
KEY = "HKEY_CURRENT_USER\\software\\Tessaro\\Melvane"
START, MAIN, PREFERENCES = (274, 174), (460, 196), (460, 210)  # sizes of windows, and places in them
CONTINUE, MIX, LIST, CLOSE, STRIP, EMPTY = (137, 136), (45, 130), (386, 11), (436, 11), (150, 8), (300, 185)


class Desktop:
    """A compositor, a sound server, a mouse and a keyboard; ends them with the stack."""

    def __init__(self, stack, folder):
        self.stack, self.folder = stack, folder
        self.env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK")}
        for variable in ("XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "HOME"):
            (folder / variable).mkdir(mode=0o700)
            self.env[variable] = str(folder / variable)
        self.start_compositor()
        sound = folder / "sound"
        self.start([*SOUND, "-L", f"module-native-protocol-unix auth-anonymous=1 socket={sound}",
                    "-L", "module-null-sink"])
        wait_until(sound.exists)
        self.env |= {"PULSE_SERVER": f"unix:{sound}", "QT_QPA_PLATFORM": "wayland"}
        self.mouse = stack.enter_context(contextlib.closing(
            wayland_wire.Client(self.env["WAYLAND_DISPLAY"], SIZE)))
        self.start(["wtype", "-s", "1000000"])  # one that stays, so that no key comes before its keyboard is known
        wait_until(lambda: any(seat["capabilities"] & 2 for seat in self.ask("get_seats")))

    def start_compositor(self):
        home = self.folder / "compositor"
        home.mkdir(mode=0o700)
        (home / "config").write_text(CONFIG)
        who = {}
        if os.getuid() == 0:  # which it refuses to run as
            who = {"user": "nobody", "group": "nogroup", "extra_groups": []}
            self.folder.chmod(0o711)
            for path in (home, home / "config"):
                shutil.chown(path, who["user"], who["group"])
        self.start(["sway", "--config", home / "config"], who, XDG_RUNTIME_DIR=str(home), WLR_BACKENDS="headless",
                   WLR_RENDERER="pixman")
        found = {"WAYLAND_DISPLAY": "wayland-?", "SWAYSOCK": "sway-ipc.*"}
        wait_until(lambda: all(list(home.glob(name)) for name in found.values()))
        self.env |= {variable: str(next(home.glob(name))) for variable, name in found.items()}

    def start(self, command, who=None, **variables):
        log = self.stack.enter_context(open(self.folder / f"{Path(command[0]).name}.log", "ab"))
        process = subprocess.Popen(command, env=self.env | variables, stdout=log, stderr=log, **(who or {}))
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)
        return process

    def ask(self, what):
        said = subprocess.run(["swaymsg", "-r", "-t", what], env=self.env, capture_output=True, timeout=HANG)
        return json.loads(said.stdout)

    def windows(self):
        nodes, found = [self.ask("get_tree")], []
        while nodes:
            node = nodes.pop()
            nodes += node["nodes"] + node["floating_nodes"]
            if node.get("app_id") == "melvane":
                found.append(node)
        return found

    def window(self, size=MAIN):
        return next((node for node in self.windows() if size_of(node) == size), None)

    def press(self, window, place, button=wayland_wire.LEFT):
        """Returns where on the screen that is."""
        there = added(place_of(window), place)
        self.mouse.move_to(there)
        self.mouse.button(True, button)
        return there

    def click(self, window, place, button=wayland_wire.LEFT):
        self.press(window, place, button)
        self.mouse.button(False, button)

    def type(self, key):
        subprocess.run(["wtype", "-k", key], env=self.env, check=True, timeout=HANG)


def size_of(window):
    return window["rect"]["width"], window["rect"]["height"]


def place_of(window):
    return window["rect"]["x"], window["rect"]["y"]


def added(place, way):
    return place[0] + way[0], place[1] + way[1]


@unittest.skipUnless(shutil.which("sway"), "sway is not installed")
class WaylandTest(unittest.TestCase):
    def setUp(self):
        stack = contextlib.ExitStack()
        self.addCleanup(stack.close)
        self.dir = Path(stack.enter_context(tempfile.TemporaryDirectory()))
        self.desktop = Desktop(stack, self.dir)
        settings = self.dir / "XDG_CONFIG_HOME" / "Tessaro" / "registry.json"
        settings.parent.mkdir()
        settings.write_text(json.dumps({KEY: {"language": "en"}, KEY + "\\windows": {"zoom": "100"}}))
        lame(write_wav(self.dir / "song.wav", noise(SECONDS * RATE)), self.dir / "song.mp3")
        self.program = self.desktop.start(
            [PROGRAM, self.dir / "song.mp3", write_wav(self.dir / "voice.wav", noise(RATE, 2))], WAYLAND_DEBUG="1")
        wait_until(lambda: self.desktop.window(START))
        self.retry(self.enter, self.desktop.window)

    def enter(self):
        start = self.desktop.window(START)
        if start:
            self.desktop.click(start, CONTINUE)

    def retry(self, act, condition):
        """Acts again once in a while: what was done may have come too early."""
        acted = 0

        def done():
            nonlocal acted
            if condition():
                return True
            if time.monotonic() > acted + 0.5:
                acted = time.monotonic()
                act()
            return False
        wait_until(done)

    def move_by_title(self, wanted):
        before = place_of(self.desktop.window())
        mouse = self.desktop.press(self.desktop.window(), STRIP)

        def pull():
            nonlocal mouse
            place = place_of(self.desktop.window())
            # A little until the window is held, then all the way.
            way = (4, 0) if place == before else (wanted[0] - place[0], wanted[1] - place[1])
            mouse = added(mouse, way)
            self.desktop.mouse.move_to(mouse)
        self.retry(pull, lambda: place_of(self.desktop.window()) == wanted)
        self.desktop.mouse.button(False)

    def choose_preferences(self):
        self.retry(lambda: self.desktop.type("p"), lambda: self.desktop.window(PREFERENCES))
        wait_until(lambda: self.desktop.window(PREFERENCES)["focused"])

    def test_a_mix_from_start_to_end(self):
        desktop = self.desktop
        self.move_by_title((110, 90))

        mixed = self.dir / "song2.mp3"
        self.retry(lambda: desktop.click(desktop.window(), MIX), mixed.exists)
        wait_until(lambda: mixed.stat().st_size > PLACEHOLDER and "%" not in desktop.window()["name"])
        lame("--decode", mixed, self.dir / "mix.wav")
        self.assertAlmostEqual((self.dir / "mix.wav").stat().st_size / 4, SECONDS * RATE, delta=2 * 1152)

        desktop.click(desktop.window(), LIST)
        self.choose_preferences()
        self.retry(lambda: desktop.type("Escape"), lambda: not desktop.window(PREFERENCES))
        desktop.click(desktop.window(), EMPTY, wayland_wire.RIGHT)
        self.choose_preferences()

        token = desktop.mouse.activation_token()
        self.assertEqual(desktop.start([PROGRAM], XDG_ACTIVATION_TOKEN=token).wait(HANG), 0)
        wait_until(lambda: desktop.window()["focused"])
        self.assertIn(f'activate("{token}"', (self.dir / "melvane.log").read_text())
        desktop.click(desktop.window(), CLOSE)
        self.assertEqual(self.program.wait(HANG), 0)


if __name__ == "__main__":
    PROGRAM = str(Path(sys.argv.pop(1), PROGRAM).resolve())
    unittest.main()
