"""The song as a karaoke file: a MIDI channel for each part, and the words for those who show them."""

import math
from typing import NamedTuple

import band
import tune
from midi_file import (ALL_SOUND_OFF, EXPRESSION, LYRIC, METRE, NAME, PAN, PROGRAM, TEXT, VOLUME, control, meta, note,
                       tempo, write_midi)

BEATS = tune.BARS * tune.BEATS_PER_BAR
FADE_STEPS = 12


class Part(NamedTuple):
    name: str
    channel: int  # as users count them, from 1
    program: int  # of General MIDI, from 0
    volume: int
    pan: float  # -1 left, 0 middle, 1 right
    notes: list
    loudness: int = 96


PARTS = [
    Part("Electric piano", 1, 4, 96, band.PIANO.pan, tune.CHORDS),
    Part("Bass", 2, 33, 100, band.BASS.pan, tune.BASS),
    Part("Bell", 3, 11, 90, band.BELL.pan, tune.BELL),
    Part("Sung melody", 4, 73, 104, band.FLUTE.pan, tune.MELODY),  # where karaoke files have what is sung
    Part("Pad", 5, 89, 64, band.PAD.pan, tune.CHORDS),
]
DRUMS = Part("Drums", 10, 40, 96, 0, [])  # 40: brushes
KEYS = {"kick": 36, "snare": 38, "hat": 42}


def drum_notes(drums):
    for name, key in KEYS.items():
        for bar in tune.DRUM_BARS:
            for step, sign in enumerate(tune.DRUM_BAR[name]):
                if sign != ".":
                    yield note(drums.channel - 1, bar * tune.BEATS_PER_BAR + step / 4, 1 / 8, key,
                               drums.loudness if sign == "X" else 60)


def settings(part):
    channel = part.channel - 1
    return [(0, meta(NAME, part.name)), (0, bytes([PROGRAM + channel, part.program])),
            (0, control(channel, VOLUME, part.volume)), (0, control(channel, PAN, 64 + round(63 * part.pan))),
            (0, control(channel, EXPRESSION, 127))]


def fade_out(part):
    """As the band fades; nothing rings on into a repetition."""
    tail = band.TAIL / band.SECONDS_PER_BEAT
    levels = [(step / FADE_STEPS, (1 + math.cos(math.pi * step / FADE_STEPS)) / 2) for step in range(FADE_STEPS)]
    steps = [(BEATS - tail + tail * share, control(part.channel - 1, EXPRESSION, round(127 * level)))
             for share, level in levels]
    return steps + [(BEATS, control(part.channel - 1, ALL_SOUND_OFF, 0))]


def part_track(part):
    notes = [note(part.channel - 1, *each, part.loudness) for each in part.notes] or drum_notes(part)
    return settings(part) + [event for ends in notes for event in ends] + fade_out(part)


def syllables():
    """The words in pieces, one for each note: (begins a verse or a line with this sign, piece, ends a line)."""
    for number, text in enumerate(tune.WORDS.strip().splitlines()):
        pieces = text.strip().replace("-", "-\0").replace(" ", " \0").split("\0")
        for index, piece in enumerate(pieces):
            sign = ("/" if number else "\\") if index == 0 else ""
            yield sign, piece.removesuffix("-"), index == len(pieces) - 1


def sung():
    return zip(tune.MELODY, syllables(), strict=True)


def words_track():
    """The usual text events of karaoke files: @ tells about the file, \\ begins a verse, / a line."""
    about = ["@KMIDI KARAOKE FILE", "@LENGL", "@T" + tune.TITLE]
    return ([(0, meta(NAME, "Words"))] + [(0, meta(TEXT, text)) for text in about] +
            [(note.start, meta(TEXT, sign + piece)) for note, (sign, piece, _) in sung()])


def lyrics():
    """The same as lyric events, where a return ends a line."""
    return [(note.start, meta(LYRIC, piece + ("\r" if last else ""))) for note, (_, piece, last) in sung()]


def song_tracks():
    opening = [(0, meta(NAME, tune.TITLE)), (0, tempo(tune.BEATS_PER_MINUTE)),
               (0, meta(METRE, bytes([tune.BEATS_PER_BAR, 2, 24, 8])))]
    parts = [part_track(part) + (lyrics() if part.notes is tune.MELODY else []) for part in [*PARTS, DRUMS]]
    return [opening, words_track(), *parts]


def write_karaoke(path, times=1):
    """The song, `times` in a row."""
    tracks = [[(beat + BEATS * time, event) for time in range(times) for beat, event in events]
              for events in song_tracks()]
    write_midi(path, tracks, BEATS * times)
