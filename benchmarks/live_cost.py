#!/usr/bin/env python3
"""What the window program costs: live_cost.py BUILD_DIRECTORY [SECONDS]

Starts it under Xvfb with a PulseAudio null sink and a song and a voice, mixes live with the real encoder, and prints
how long the first window took, the share of one core in the run and at rest, and the memory. The key that the run has
is read from the tone of the song in the file that is being recorded. Before and behind the run the program rubberband
does the work of the key shift alone, so that a slow machine shows as such. The limits are printed beside the figures;
nothing fails on them."""

import cmath
import os
import shutil
import subprocess
import sys
import tempfile
import time
from array import array
from pathlib import Path
from random import Random

import side_by_side
from side_by_side import RATE

TICKS = os.sysconf("SC_CLK_TCK")
MIX_BUTTON = (61, 130)  # in the main window
KEY_KNOB = (346, 153)
KEY_STEPS = 13  # pixels of the key knob: two semitones
TONE = 440  # Hz


def write_sound(path, seconds, noise, tone):
    """The same second of noise and a tone over and over."""
    samples = array("h", Random(1).randbytes(RATE * 4))
    for i in range(len(samples)):
        samples[i] = round(samples[i] * noise + tone * cmath.rect(32767, 2 * cmath.pi * TONE * (i // 2) / RATE).imag)
    side_by_side.write_wav(path, [samples.tobytes()] * seconds)


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
        if program.poll() is not None:
            raise SystemExit("the program has ended")
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


def move_key(window):
    xdotool("mousemove", "--window", window, *map(str, KEY_KNOB), "mousedown", "1")
    for _ in range(KEY_STEPS):
        xdotool("mousemove_relative", "1", "0")
    xdotool("mouseup", "1")
    time.sleep(1)


def heard_key(recording):
    """By how many semitones the tone is moved in the newest second of a file that is still written."""
    decoded = recording.with_suffix(".wav")
    subprocess.run(["lame", "--quiet", "--mp3input", "--decode", recording, decoded], check=True)
    left = array("h", decoded.read_bytes()[-4 * RATE:])[::2]

    def level(key):
        turn = cmath.rect(1, 2 * cmath.pi * TONE * 2 ** (key / 12) / RATE)
        place = total = 0j + 1
        for sample in left:
            total += sample * place
            place *= turn
        return abs(total)

    return max((step / 4 for step in range(-20, 21)), key=level)


def expect_key(recording, wanted):
    heard = heard_key(recording)
    if abs(heard - wanted) > 0.25:
        raise SystemExit(f"the run has the key {heard:+}, not {wanted:+}")


def make_sources(folder, seconds):
    song, voice = folder / "song.mp3", folder / "voice.wav"
    write_sound(folder / "song.wav", 2 * seconds + 30, 0.3, 0.1)
    write_sound(voice, 15, 0.2, 0)
    subprocess.run(["lame", "--quiet", folder / "song.wav", song], check=True)
    return song, voice


def shifting_alone(folder, seconds):
    """The share of a core that rubberband alone needs for the key of a song."""
    if not shutil.which("rubberband"):
        return 0.0
    wav = folder / "calibration.wav"
    write_sound(wav, seconds, 0.3, 0.1)
    _, cpu, _ = side_by_side.measure(["rubberband", "-q", "-3", "--ignore-clipping", "-p", "2", wav, folder / "shifted.wav"])
    return cpu / seconds * 100


def measure(build, folder, seconds):
    sources = make_sources(folder, seconds)
    start_program(build)[0].kill()  # so that everything is in memory
    alone = [shifting_alone(folder, seconds)]
    program, window, shown = start_program(build, *sources)
    time.sleep(2)
    idle = share_of_core(program.pid, 5)
    rest = memory(program.pid)
    start_mix(window)
    running = share_of_core(program.pid, seconds)
    recording, = folder.glob(".melvane-*.mp3")  # it takes the destination's place at the end
    expect_key(recording, 0)
    move_key(window)
    shifted = share_of_core(program.pid, seconds)
    expect_key(recording, 2)
    running_memory = memory(program.pid)
    program.kill()
    alone.append(shifting_alone(folder, seconds))
    print(f"first window        {shown:6.2f} s   (limit 0.4)")
    print(f"live run            {running:6.2f} % of one core, without the encoder (limit 2)")
    print(f"the same, key +2    {shifted:6.2f} % (limit 12)")
    print(f"rubberband -3 alone {alone[0]:6.2f} % before the run, {alone[1]:.2f} % behind it")
    print(f"main window at rest {idle:6.2f} % of one core")
    print(f"memory at rest      {rest:6.1f} MB, in the run {running_memory:.1f} MB")


def start_display(**quiet):
    """An X server on a display that is free, once it is ready."""
    answer, tell = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(tell), "-screen", "0", "1280x800x24", "-noreset",
                               "-nolisten", "tcp"],
                              pass_fds=[tell], **quiet)
    os.close(tell)
    with open(answer, encoding="ascii") as line:
        os.environ["DISPLAY"] = ":" + line.readline().strip()
    return server


def start_sound(socket, **quiet):
    server = subprocess.Popen(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                               f"module-native-protocol-unix auth-anonymous=1 socket={socket}", "-L",
                               "module-null-sink"], **quiet)
    while not socket.exists() and server.poll() is None:
        time.sleep(0.05)
    return server


def main(measure):
    build = Path(sys.argv[1]).resolve()
    seconds = int(sys.argv[2]) if len(sys.argv) > 2 else 30
    folder = Path(tempfile.mkdtemp(prefix="melvane-live-"))
    sound = folder / "pulse.sock"
    os.environ.update(PULSE_SERVER=f"unix:{sound}", XDG_CONFIG_HOME=str(folder), XDG_STATE_HOME=str(folder), QT_QPA_PLATFORM="xcb")
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    helpers = [start_display(**quiet), start_sound(sound, **quiet)]
    try:
        measure(build, folder, seconds)
    finally:
        for helper in helpers:
            helper.terminate()
            helper.wait()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main(measure)
