#!/usr/bin/env python3
"""Plays the tune of tune.py into evening-ferry.mp3 (the song) and evening-ferry-voice.wav (a synthetic singer), and
writes its notes and words into evening-ferry.kar.

Needs nothing but Python and the encoder `lame`; each run gives the same sound.
"""

import array
import subprocess
import tempfile
import wave
from pathlib import Path

import tune
from band import play_song
from karaoke import write_karaoke
from singer import sing

FOLDER = Path(__file__).resolve().parent
SONG = FOLDER / "evening-ferry.mp3"
KARAOKE = FOLDER / "evening-ferry.kar"
VOICE = FOLDER / "evening-ferry-voice.wav"
SONG_RATE = 44100
VOICE_RATE = 22050  # Enough for a voice, at half the size.
SONG_PEAK, VOICE_PEAK = -3, -7  # dB of full scale; the voice then stands a little before the song


def write_wav(path, rate, peak, channels):
    """16 bits, with the highest peak of all channels at `peak` dB."""
    scale = 10 ** (peak / 20) * 32767 / max(max(map(abs, channel)) for channel in channels)
    samples = array.array("h", bytes(2 * len(channels) * len(channels[0])))
    for index, channel in enumerate(channels):
        samples[index::len(channels)] = array.array("h", (round(scale * value) for value in channel))
    with wave.open(str(path), "wb") as file:
        file.setnchannels(len(channels))
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def main():
    write_karaoke(KARAOKE)
    with tempfile.TemporaryDirectory() as folder:
        plain = Path(folder) / "song.wav"
        write_wav(plain, SONG_RATE, SONG_PEAK, play_song(SONG_RATE))
        subprocess.run(["lame", "--quiet", "-b", "128", "--tt", tune.TITLE, plain, SONG], check=True)
    write_wav(VOICE, VOICE_RATE, VOICE_PEAK, [sing(VOICE_RATE)])


if __name__ == "__main__":
    main()
