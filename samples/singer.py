"""A singer who knows one syllable, "la": the overtones of each note, shaped by the resonances of a mouth."""

import bisect
import math
import random

import tune

# Resonances of the mouth as (frequency, bandwidth, gain), for the tongue up (l) and for the open vowel (a).
TONGUE = [(360, 90, .6), (1250, 160, .16), (2750, 240, .07), (3400, 300, .03)]
VOWEL = [(760, 95, 1.0), (1230, 120, .55), (2650, 170, .42), (3150, 200, .4), (4100, 300, .12)]

BLOCK = 32  # samples between two settings of the mouth
CONSONANT = .07  # seconds that the l lasts, before the beat
OPENING = .06  # seconds from l to a, after the beat
FALL = .14  # seconds in which a note before a rest dies away
LEGATO = .97  # share of its length that a note sounds; what follows at once is tied to it
GLIDE = .05  # seconds from one pitch to the next, around the consonant
VIBRATO_HERTZ = 5.4
VIBRATO_SEMITONES = .3
VIBRATO_DELAY = .25  # seconds until it starts, and again until it is full
BREATH = .012

SECONDS_PER_BEAT = 60 / tune.BEATS_PER_MINUTE


def smooth(value):
    """0 below 0, 1 above 1, and a soft step between."""
    value = min(1.0, max(0.0, value))
    return value * value * (3 - 2 * value)


class Phrase:
    """What the singer does at any time: pitch in semitones, loudness, and how far the mouth is open."""

    def __init__(self, notes):
        self.notes = notes
        self.starts = [note.start * SECONDS_PER_BEAT for note in notes]
        self.ends = [(note.start + note.length * LEGATO) * SECONDS_PER_BEAT for note in notes]

    def at(self, seconds):
        index = max(0, bisect.bisect_right(self.starts, seconds + CONSONANT) - 1)
        since = seconds - self.starts[index]
        return self.pitch(index, since), self.loudness(index, seconds), smooth(since / OPENING)

    def tied(self, index):
        """Whether the note follows another without a rest."""
        return index > 0 and self.starts[index] - self.ends[index - 1] < CONSONANT

    def pitch(self, index, since):
        pitch = self.notes[index].pitch
        if self.tied(index):
            before = self.notes[index - 1].pitch
            pitch = before + (pitch - before) * smooth((since + CONSONANT) / GLIDE)
        depth = VIBRATO_SEMITONES * smooth((since - VIBRATO_DELAY) / VIBRATO_DELAY)
        return pitch + depth * math.sin(2 * math.pi * VIBRATO_HERTZ * since)

    def loudness(self, index, seconds):
        rise = 1.0 if self.tied(index) else smooth((seconds - self.starts[index] + CONSONANT) / CONSONANT)
        held = index + 1 < len(self.notes) and self.tied(index + 1)
        fall = 1.0 if held else smooth((self.ends[index] - seconds) / FALL)
        swell = .85 + .15 * smooth((seconds - self.starts[index]) / .4)
        return rise * fall * swell


def resonance(hertz, formants):
    return sum(gain / math.sqrt(1 + ((hertz - centre) / (width / 2)) ** 2) for centre, width, gain in formants)


class Mouth:
    """The resonances at every 10 Hz, so that each is reckoned but once."""

    STEP = 10

    def __init__(self, rate):
        grid = range(0, rate, self.STEP)
        self.tongue = [resonance(hertz, TONGUE) for hertz in grid]
        self.vowel = [resonance(hertz, VOWEL) for hertz in grid]

    def overtones(self, rate, hertz, opening):
        """Amplitudes of the overtones below 0.45 of the rate; a voice's source falls by 12 dB an octave, lips add 6."""
        places = [(k, int(k * hertz / self.STEP)) for k in range(1, int(.45 * rate / hertz) + 1)]
        return [(self.tongue[i] + opening * (self.vowel[i] - self.tongue[i])) / k for k, i in places]


def block_of_overtones(phase, step, before, after):
    """BLOCK samples, fading from one set of amplitudes to the next; sin(k x) comes from sin((k-1) x), sin((k-2) x)."""
    count = max(len(before), len(after))
    before, after = (amplitudes + [0.0] * (count - len(amplitudes)) for amplitudes in (before, after))
    for i in range(BLOCK):
        angle, share, value = phase + i * step, i / BLOCK, 0.0
        now, last, twice = math.sin(angle), 0.0, 2 * math.cos(angle)
        for low, high in zip(before, after):
            value += (low + share * (high - low)) * now
            now, last = twice * now - last, now
        yield value


def sing(rate):
    """The melody as a list of numbers of any height, as long as the song."""
    phrase, mouth, chance = Phrase(tune.MELODY), Mouth(rate), random.Random(7)
    frames = round(tune.BARS * tune.BEATS_PER_BAR * SECONDS_PER_BEAT * rate)
    sound, phase, waver, before, hiss = [], 0.0, 0.0, [], 0.0
    while len(sound) < frames:
        pitch, loudness, opening = phrase.at(len(sound) / rate)
        waver += .05 * (chance.gauss(0, .12) - waver)  # No throat is quite steady.
        hertz = 440 * 2 ** ((pitch + waver - 69) / 12)
        after = [loudness * value for value in mouth.overtones(rate, hertz, opening)] if loudness > 0 else []
        step = 2 * math.pi * hertz / rate
        for value in block_of_overtones(phase, step, before, after):
            hiss += .5 * (chance.gauss(0, 1) - hiss)
            sound.append(value + BREATH * loudness * opening * hiss)
        phase, before = (phase + BLOCK * step) % (2 * math.pi), after
    return sound[:frames]
