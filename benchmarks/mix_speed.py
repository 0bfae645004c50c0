#!/usr/bin/env python3
"""How long the headless mixer takes for a song, beside the encoder alone and beside ffmpeg.

    mix_speed.py BUILD_DIRECTORY [--rounds N]
"""

import argparse
import math
import os
import random
import select
import shutil
import statistics
import subprocess
import tempfile
import time
import wave
from array import array
from pathlib import Path

RATE = 44100
PRESET = ["--alt-preset", "standard"]
SONG_MINUTES = 4
OTHER_MINUTES = (1, 12)
WALL_LIMIT = 1.15  # times the encoder alone; 1.3 with all effects
EFFECTS = ["--effects", "1,60;1,60;1,40;1,50", "--preset", "Rock", "--tone", "20,30,40,60", "--balance", "-20,20"]
FFMPEG_EFFECTS = ("aecho=0.8:0.5:266:0.5,chorus=0.7:0.5:20:0.4:1:2,flanger=delay=2:depth=2:regen=-50:speed=4," +
                  ",".join(f"equalizer=f={f}:t=o:w=1.5:g=2" for f in (80, 170, 310, 600, 1000, 3000, 6000, 12000, 14000,
                                                                     16000)) + ",bass=g=4,treble=g=-3")
MEMORY_LIMIT = 60  # MB
LOOK_INTERVAL = 20  # ms
QUICK = ("melvane-mix", "lame", "all effects", "ffmpeg")
SLOW_ROUNDS = 2
# One second of a 1 Hz tone with overtones: every nth sample of it, over and over, is a tone of n Hz.
TONE = [sum(math.sin(2 * math.pi * k * i / RATE) / k for k in range(1, 13)) for i in range(RATE)]
ROOTS = (110, 131, 147, 165, 175, 196)


def tone(hertz):
    return (TONE * hertz)[::hertz]


def bar(rng, notes, hiss):
    """A second of stereo: a chord that dies away over hiss in two strokes, as loud as it comes."""
    root = rng.choice(ROOTS) * rng.choice((1, 2))
    chord = [tone(round(root * ratio)) for ratio in (1, 1.26, 1.5, 2)[:notes]]
    level = rng.uniform(0.1, 1) * 5000
    strokes = [math.exp(-6 * (i % (RATE // 2)) / RATE) for i in range(RATE)]
    sides = []
    for _ in range(2):
        noise = (rng.uniform(-hiss, hiss) for _ in range(RATE))
        sides.append([round(level * (sum(tones) * 0.5 + n) * stroke)
                      for tones, n, stroke in zip(zip(*chord), noise, strokes)])
    return array("h", (max(-32768, min(32767, s)) for frame in zip(*sides) for s in frame)).tobytes()


def music(seed, minutes, notes, hiss):
    """The seconds of a piece of that length, drawn from a few different bars."""
    rng = random.Random(seed)
    bars = [bar(rng, notes, hiss) for _ in range(16)]
    for _ in range(minutes * 60):
        yield rng.choice(bars)


def write_wav(path, seconds):
    with wave.open(str(path), "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        for second in seconds:
            file.writeframesraw(second)
    return path


def write_mp3(path, seconds):
    wav = write_wav(path.with_suffix(".wav"), seconds)
    subprocess.run(["lame", "--quiet", *PRESET, wav, path], check=True)
    wav.unlink()
    return path


def song(folder, minutes):
    return write_mp3(folder / f"song{minutes}.mp3", music(1, minutes, notes=4, hiss=1.0))


def own_peak(pid):
    """The most memory that the process itself has had so far, in MB; 0 when it has ended."""
    for line in Path(f"/proc/{pid}/status").read_text(encoding="ascii").splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) / 1024
    return 0


def measure(command):
    """Wall time and CPU time, the latter with the children, in seconds, and the peak memory of the process alone."""
    began = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL)
    ended = select.poll()
    descriptor = os.pidfd_open(process.pid)
    ended.register(descriptor, select.POLLIN)
    memory = 0
    while not ended.poll(LOOK_INTERVAL):
        memory = max(memory, own_peak(process.pid))
    wall = time.perf_counter() - began
    os.close(descriptor)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        raise SystemExit(f"failed: {' '.join(map(str, command))}")
    return wall, usage.ru_utime + usage.ru_stime, memory


def encoder_input(folder, mixing):
    """What `mixing` gives its encoder, as a WAV file with a length in its header."""
    tap = folder / "tap" / "lame.exe"
    tap.parent.mkdir()
    tap.write_text('#!/bin/sh\nfor last; do :; done\nexec cat > "$last"\n', encoding="ascii")
    tap.chmod(0o755)
    subprocess.run([*mixing, folder / "tapped"], check=True,
                   env={**os.environ, "PATH": f"{tap.parent}:{os.environ['PATH']}"})
    with open(folder / "tapped", "rb") as tapped:
        tapped.seek(44)
        return write_wav(folder / "mix.wav", iter(lambda: tapped.read(1 << 20), b""))


def spread(values, width):
    text = f"{statistics.median(values):.2f} ({min(values):.2f}..{max(values):.2f})"
    return text.ljust(width)


def print_table(results):
    print(f"{'':14}{'wall, s':22}{'of lame':10}{'CPU, s':22}{'of lame':10}{'memory, MB':12}")
    base = [statistics.median(run[column] for run in results["lame"]) for column in (0, 1)]
    for name, runs in results.items():
        wall, cpu, memory = zip(*runs)
        print(f"{name:14}{spread(wall, 22)}{statistics.median(wall) / base[0]:<10.2f}"
              f"{spread(cpu, 22)}{statistics.median(cpu) / base[1]:<10.2f}{max(memory):<12.1f}")
    print(f"{'limit':14}{'':22}{WALL_LIMIT:<42.2f}{MEMORY_LIMIT:<12.1f}")


def ffmpeg(sources, graph, folder):
    return ["ffmpeg", "-v", "error", "-y", "-i", sources[0], "-i", sources[1], "-filter_complex", graph,
            "-c:a", "libmp3lame", "-q:a", "2", folder / "ffmpeg.mp3"]


def compare(folder, mixing, rounds):
    voice = write_wav(folder / "voice.wav", music(2, SONG_MINUTES, notes=1, hiss=0.1))
    sources = [song(folder, SONG_MINUTES), voice]
    mixing = [*mixing, *sources]
    commands = {"melvane-mix": [*mixing, folder / "mixed.mp3"],
                "lame": ["lame", "--quiet", *PRESET, encoder_input(folder, mixing), folder / "lame.mp3"]}
    commands["all effects"] = [*mixing[:1], *EFFECTS, *mixing[1:], folder / "effects.mp3"]
    commands["key +2"] = [*mixing[:1], "--key", "2", *mixing[1:], folder / "key.mp3"]
    song_wav = folder / "song.wav"
    subprocess.run(["lame", "--quiet", "--decode", sources[0], song_wav], check=True)
    if shutil.which("rubberband"):
        commands["rubberband +2"] = ["rubberband", "-q", "-3", "-p", "2", song_wav, folder / "shifted.wav"]
    if shutil.which("ffmpeg"):
        commands["ffmpeg"] = ffmpeg(sources, "amix=inputs=2:duration=first", folder)
        commands["ffmpeg, all"] = ffmpeg(
            sources, f"[0]rubberband=pitch=1.122462[s];[1]{FFMPEG_EFFECTS}[v];[s][v]amix=inputs=2:duration=first", folder)
    results = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            if len(results[name]) < (rounds if name in QUICK else SLOW_ROUNDS):
                results[name].append(measure(command))
    print(f"A song of {SONG_MINUTES} minutes, {rounds} rounds in turn: median (least..most)\n")
    print_table(results)
    print(f"\nMemory of melvane-mix alone by the length of the song, limit {MEMORY_LIMIT} MB\n")
    memory = {SONG_MINUTES: max(run[2] for run in results["melvane-mix"])}
    for minutes in OTHER_MINUTES:
        memory[minutes] = measure([*mixing[:-2], song(folder, minutes), voice, folder / "mixed.mp3"])[2]
    for minutes in sorted(memory):
        print(f"{minutes:4} minutes {memory[minutes]:8.1f} MB")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path, help="the build directory with melvane-mix")
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    mixing = [options.build.resolve() / "melvane-mix", "--quiet", "--overwrite"]
    with tempfile.TemporaryDirectory(prefix="melvane-speed-") as folder:
        compare(Path(folder), mixing, max(options.rounds, 1))


if __name__ == "__main__":
    main()
