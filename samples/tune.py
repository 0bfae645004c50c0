"""The notes of "Evening Ferry": a tune of 13 bars in D major, 30 seconds long."""

from typing import NamedTuple

TITLE = "Evening Ferry"
BEATS_PER_MINUTE = 104
BEATS_PER_BAR = 4
BARS = 13


class Note(NamedTuple):
    start: float  # beats from the beginning
    length: float  # beats
    pitch: int  # MIDI key number


def key_number(name):
    """Of a note name such as F#4; C4 is 60."""
    semitone = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}[name[0]]
    return 12 * (int(name[-1]) + 1) + semitone + name.count("#")


def line(text):
    """The notes of a line of NAMES:BEATS words; names joined by + sound together, "-" is a rest, "|" only a bar line."""
    notes, beat = [], 0.0
    for word in text.replace("|", " ").split():
        names, length = word.split(":")
        if names != "-":
            notes += [Note(beat, float(length), key_number(name)) for name in names.split("+")]
        beat += float(length)
    return notes


MELODY = line("""
    -:4 | -:4
    | F#4:1.5 E4:.5 F#4:1 A4:1 | B4:1.5 A4:.5 F#4:2 | G4:1 F#4:.5 G4:.5 B4:1 G4:1 | A4:2.5 -:1.5
    | F#4:1.5 E4:.5 F#4:1 A4:1 | C#5:1.5 B4:.5 A4:2 | B4:1 A4:.5 B4:.5 D5:1 B4:1 | A4:2.5 -:1.5
    | D5:1.5 C#5:.5 B4:1 F#4:1 | G4:1 A4:.5 B4:.5 A4:1 E4:1 | D4:3 -:1""")

# A syllable for each note of the melody, a line for each breath.
WORDS = """
    Eve-ning fer-ry, take me home
    O-ver the si-lent bay,
    Lights are danc-ing on the foam,
    Soft at the end of day.
    Rock me gent-ly, car-ry me all the way.
"""

# Opens the song, and answers the voice where that rests.
BELL = line("""
    A5:.5 D6:.5 F#6:1 E6:.5 D6:.5 A5:1 | B5:.5 D6:.5 G6:1 E6:.5 C#6:.5 A5:1
    | -:4 | -:4 | -:4 | -:2.5 E6:.5 C#6:.5 A5:.5
    | -:4 | -:4 | -:4 | -:2.5 C#6:.5 E6:.5 G6:.5
    | F#6:2 -:2 | -:4 | -:.5 A5:.5 D6:.5 F#6:.5 A6:2""")

CHORDS = line("""
    D4+F#4+A4:2.5 F#4+A4+C#5:1.5 | D4+G4+B4:2 E4+G4+C#5:2
    | D4+F#4+A4:2.5 F#4+A4+C#5:1.5 | D4+F#4+B4:2.5 D4+F#4+A4:1.5
    | D4+G4+B4:2.5 D4+F#4+B4:1.5 | C#4+E4+A4:2.5 C#4+E4+G4:1.5
    | D4+F#4+A4:2.5 F#4+A4+C#5:1.5 | C#4+F#4+A4:2.5 C#4+E4+A4:1.5
    | D4+G4+B4:2.5 D4+F#4+B4:1.5 | C#4+E4+A4:2.5 C#4+E4+G4:1.5
    | D4+F#4+B4:2.5 D4+F#4+A4:1.5 | D4+G4+B4:2 C#4+G4+A4:2 | D4+F#4+A4:4""")

BASS = line("""
    D2:1.5 A2:1 D3:.5 A2:1 | G2:1.5 D2:.5 A2:1.5 C#3:.5
    | D2:1.5 A2:1 D3:.5 A2:1 | B2:1.5 F#2:1 B2:.5 A2:1 | G2:1.5 D2:1 G2:.5 B2:1 | A2:1.5 E2:1 A2:.5 C#3:1
    | D2:1.5 A2:1 D3:.5 A2:1 | F#2:1.5 C#3:1 F#2:.5 A2:1 | G2:1.5 D2:1 G2:.5 B2:1 | A2:1.5 E2:1 A2:.5 C#3:1
    | B2:1.5 F#2:1 B2:.5 A2:1 | G2:1.5 D2:.5 A2:1.5 E2:.5 | D2:4""")

# One bar, a sign a quarter of a beat: X loud, x soft.
DRUM_BAR = {
    "kick": "X.....x.X.....x.",
    "snare": "....X.......X..x",
    "hat": "x.X.x.X.x.X.x.X.",
}
DRUM_BARS = range(1, 12)
