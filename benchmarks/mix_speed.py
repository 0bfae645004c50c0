#!/usr/bin/env python3
"""How long the headless mixer takes for a song, beside the encoder alone and beside ffmpeg.

    mix_speed.py BUILD_DIRECTORY [--rounds N]
"""

import argparse
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

from side_by_side import PRESET, measure, music, print_table, take_turns, write_wav

SONG_MINUTES = 4
OTHER_MINUTES = (1, 12)
# Times the encoder alone, on the same samples.
LIMITS = {"melvane-mix": ("lame", 1.05), "all effects": ("lame, effects", 1.2)}
EFFECTS = ["--effects", "1,60;1,60;1,40;1,50", "--preset", "Rock", "--tone", "20,30,40,60", "--balance", "-20,20"]
FFMPEG_EFFECTS = ("aecho=0.8:0.5:266:0.5,chorus=0.7:0.5:20:0.4:1:2,flanger=delay=2:depth=2:regen=-50:speed=4," +
                  ",".join(f"equalizer=f={f}:t=o:w=1.5:g=2" for f in (80, 170, 310, 600, 1000, 3000, 6000, 12000, 14000,
                                                                     16000)) + ",bass=g=4,treble=g=-3")
MEMORY_LIMIT = 60  # MB
SLOW = ("key +2", "rubberband +2", "ffmpeg, all")
SLOW_ROUNDS = 2


def write_mp3(path, seconds):
    wav = write_wav(path.with_suffix(".wav"), seconds)
    subprocess.run(["lame", "--quiet", *PRESET, wav, path], check=True)
    wav.unlink()
    return path


def song(folder, minutes):
    return write_mp3(folder / f"song{minutes}.mp3", music(1, minutes, notes=4, hiss=1.0))


def encoder_input(path, mixing):
    """What `mixing` gives its encoder, as a WAV file with a length in its header."""
    with tempfile.TemporaryDirectory(prefix="melvane-tap-") as folder:
        tap, tapped = Path(folder) / "lame.exe", Path(folder) / "tapped"
        tap.write_text(f'#!/bin/sh\ncat > "{tapped}"\nexec lame --quiet "$@" < "{tapped}"\n', encoding="ascii")
        tap.chmod(0o755)
        subprocess.run([*mixing, Path(folder) / "mix.mp3"], check=True,
                       env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"})
        with open(tapped, "rb") as samples:
            samples.seek(44)
            return write_wav(path, iter(lambda: samples.read(1 << 20), b""))


def ffmpeg(sources, graph, folder):
    return ["ffmpeg", "-v", "error", "-y", "-i", sources[0], "-i", sources[1], "-filter_complex", graph,
            "-c:a", "libmp3lame", "-q:a", "2", folder / "ffmpeg.mp3"]


def compare(folder, mixing, rounds):
    voice = write_wav(folder / "voice.wav", music(2, SONG_MINUTES, notes=1, hiss=0.1))
    sources = [song(folder, SONG_MINUTES), voice]
    mixing = [*mixing, *sources]
    all_effects = [*mixing[:1], *EFFECTS, *mixing[1:]]
    encoding = ["lame", "--quiet", *PRESET]
    commands = {"melvane-mix": [*mixing, folder / "mixed.mp3"],
                "lame": [*encoding, encoder_input(folder / "mix.wav", mixing), folder / "lame.mp3"],
                "all effects": [*all_effects, folder / "effects.mp3"],
                "lame, effects": [*encoding, encoder_input(folder / "effects.wav", all_effects), folder / "lame.mp3"]}
    commands["key +2"] = [*mixing[:1], "--key", "2", *mixing[1:], folder / "key.mp3"]
    song_wav = folder / "song.wav"
    subprocess.run(["lame", "--quiet", "--decode", sources[0], song_wav], check=True)
    if shutil.which("rubberband"):
        commands["rubberband +2"] = ["rubberband", "-q", "-3", "-p", "2", song_wav, folder / "shifted.wav"]
    if shutil.which("ffmpeg"):
        commands["ffmpeg"] = ffmpeg(sources, "amix=inputs=2:duration=first", folder)
        commands["ffmpeg, all"] = ffmpeg(
            sources, f"[0]rubberband=pitch=1.122462[s];[1]{FFMPEG_EFFECTS}[v];[s][v]amix=inputs=2:duration=first", folder)
    results = take_turns(commands, rounds, SLOW, SLOW_ROUNDS)
    print(f"A song of {SONG_MINUTES} minutes, {rounds} rounds in turn: median (least..most)\n")
    print_table(results, "lame", LIMITS, MEMORY_LIMIT)
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
