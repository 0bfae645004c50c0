#!/usr/bin/env python3
"""How long the headless mixer takes for a MIDI song, beside the synthesiser alone and the encoder alone.

    midi_speed.py BUILD_DIRECTORY [--rounds N] [--soundfont FILE]
"""

import argparse
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

from side_by_side import PRESET, music, print_table, take_turns, write_wav

sys.path.append(str(Path(__file__).resolve().parent.parent / "samples"))
import karaoke  # noqa: E402
import tune  # noqa: E402

SONG_MINUTES = 4
WALL_LIMIT = 1.2  # times the slower of the synthesiser and the encoder
MEMORY_LIMIT = 100  # MB
FONT = "/usr/share/sounds/sf2/FluidR3_GM.sf2"


def compare(folder, mixer, font, rounds):
    voice = write_wav(folder / "voice.wav", music(2, SONG_MINUTES, notes=1, hiss=0.1))
    song, played = folder / "song.kar", folder / "played.wav"
    karaoke.write_karaoke(song, times=round(SONG_MINUTES * tune.BEATS_PER_MINUTE / karaoke.BEATS))
    playing = ["fluidsynth", "-ni", "-q", "-r", "44100", "-F", played, font, song]
    subprocess.run(playing, check=True)
    commands = {"melvane-mix": [mixer, "--quiet", "--overwrite", "--soundfont", font, song, voice, folder / "mix.mp3"],
                "fluidsynth": playing,
                "lame": ["lame", "--quiet", *PRESET, played, folder / "lame.mp3"]}
    results = take_turns(commands, rounds)
    slower = max(("fluidsynth", "lame"), key=lambda name: statistics.median(run[0] for run in results[name]))
    print(f"A MIDI song of {SONG_MINUTES} minutes, {rounds} rounds in turn: median (least..most)\n")
    print_table(results, slower, {"melvane-mix": (slower, WALL_LIMIT)}, MEMORY_LIMIT)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path, help="the build directory with melvane-mix")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--soundfont", default=FONT)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="melvane-speed-") as folder:
        compare(Path(folder), options.build.resolve() / "melvane-mix", options.soundfont, max(options.rounds, 1))


if __name__ == "__main__":
    main()
