#!/usr/bin/env python3
"""What the window program costs: live_cost.py BUILD_DIRECTORY [SECONDS]

Starts it under Xvfb with a PulseAudio null sink and a song and a voice, mixes live with the real encoder, and prints how long the first window took, the share of one core in the run and at rest, and
the memory. The limits are printed beside the figures; nothing fails on them."""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import wave
from pathlib import Path
from random import Random

RATE = 44100
TICKS = os.sysconf("SC_CLK_TCK")
DISPLAY = ":94"
MIX_BUTTON = (61, 130)  # in the main window
KEY_STEPS = 13  # pixels of the key knob: two semitones


def write_noise(path, seconds, level):
    samples = Random(1).randbytes(RATE * 4)
    quiet = b"".join(int(int.from_bytes(samples[i:i + 2], "little", signed=True) * level).to_bytes(2, "little", signed=True)
                     for i in range(0, len(samples), 2))
    with wave.open(str(path), "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        for _ in range(seconds):
            file.writeframes(quiet)


def xdotool(*words):
    return subprocess.run(["xdotool", *words], check=True, capture_output=True, text=True).stdout.strip()


def press(key):
    xdotool("key", key)
    time.sleep(0.4)


def cpu_seconds(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def share_of_core(pid, seconds):
    before, start = cpu_seconds(pid), time.monotonic()
    time.sleep(seconds)
    return (cpu_seconds(pid) - before) / (time.monotonic() - start) * 100


def memory(pid):
    status = Path(f"/proc/{pid}/status").read_text()
    return int(status.split("VmRSS:")[1].split()[0]) / 1024


def wait_for_window(program):
    search = ["xdotool", "search", "--onlyvisible", "--pid", str(program.pid)]
    while not (found := subprocess.run(search, capture_output=True, text=True).stdout.split()):
        time.sleep(0.005)
    return found[-1]


def start_program(build, *files):
    """The program with its main window open, the window's number, and the time of the first window."""
    start = time.monotonic()
    program = subprocess.Popen([build / "melvane", *files])
    first = wait_for_window(program)
    shown = time.monotonic() - start
    time.sleep(1)
    press("Return")
    while wait_for_window(program) == first:
        time.sleep(0.05)
    time.sleep(1)
    return program, wait_for_window(program), shown


def start_mix(window):
    xdotool("mousemove", "--window", window, *map(str, MIX_BUTTON))
    xdotool("click", "1")
    time.sleep(3)


def make_sources(folder, seconds):
    song, voice = folder / "song.mp3", folder / "voice.wav"
    write_noise(folder / "song.wav", 2 * seconds + 30, 0.3)
    write_noise(voice, 15, 0.2)
    subprocess.run(["lame", "--quiet", folder / "song.wav", song], check=True)
    return song, voice


def measure(build, folder, seconds):
    sources = make_sources(folder, seconds)
    start_program(build)[0].kill()  # so that everything is in memory
    program, window, shown = start_program(build, *sources)
    time.sleep(2)
    idle = share_of_core(program.pid, 5)
    rest = memory(program.pid)
    start_mix(window)
    running = share_of_core(program.pid, seconds)
    press("shift+Tab")
    for _ in range(KEY_STEPS):
        xdotool("key", "Right")
    time.sleep(1)
    shifted = share_of_core(program.pid, seconds)
    print(f"first window        {shown:6.2f} s   (limit 0.4)")
    print(f"live run            {running:6.2f} % of one core, without the encoder (limit 3)")
    print(f"the same, key +2    {shifted:6.2f} % (limit 15)")
    print(f"main window at rest {idle:6.2f} % of one core")
    print(f"memory at rest      {rest:6.1f} MB, in the run {memory(program.pid):.1f} MB")
    print(f"the run's file      {(folder / 'song2.mp3').stat().st_size} bytes so far")
    program.kill()


def main(measure):
    build = Path(sys.argv[1]).resolve()
    seconds = int(sys.argv[2]) if len(sys.argv) > 2 else 30
    folder = Path(tempfile.mkdtemp(prefix="melvane-live-"))
    sound = folder / "pulse.sock"
    os.environ.update(DISPLAY=DISPLAY, PULSE_SERVER=f"unix:{sound}", XDG_CONFIG_HOME=str(folder), QT_QPA_PLATFORM="xcb")
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    helpers = [
        subprocess.Popen(["Xvfb", DISPLAY, "-screen", "0", "1280x800x24", "-nolisten", "tcp"], **quiet),
        subprocess.Popen(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                          f"module-native-protocol-unix auth-anonymous=1 socket={sound}", "-L", "module-null-sink"], **quiet),
    ]
    try:
        time.sleep(2)
        measure(build, folder, seconds)
    finally:
        for helper in helpers:
            helper.kill()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main(measure)
