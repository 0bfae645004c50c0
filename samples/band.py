"""The instruments of the song: sums of sines that die away, and noise for the drums."""

import math
import random
from typing import NamedTuple

import tune


class Instrument(NamedTuple):
    partials: list  # (multiple of the note's frequency, amplitude, seconds until it has fallen to 1/e)
    attack: float  # seconds
    release: float  # seconds after the note's end
    gain: float
    pan: float  # -1 left, 0 middle, 1 right
    room: float  # share sent to the reverberation


PIANO = Instrument([(1, 1, 1.3), (2, .45, .8), (3, .25, .5), (4, .12, .3), (5, .06, .2), (14, .02, .06)],
                   .004, .18, .14, -.25, .25)
PAD = Instrument([(.998, .5, 9), (1.002, .5, 9), (2.003, .16, 9), (3, .05, 9)], .35, .5, .045, .3, .5)
BASS = Instrument([(1, 1, .9), (2, .5, .5), (3, .22, .3), (4, .09, .2)], .006, .07, .34, 0, 0)
BELL = Instrument([(1, 1, .8), (2.0, .2, .5), (3.98, .22, .22), (9.2, .04, .06)], .002, .6, .13, .4, .5)
FLUTE = Instrument([(1, 1, 9), (2, .18, 9), (3, .07, 9)], .05, .1, .06, .1, .3)  # hums the melody under the singer

TAIL = .35  # seconds in which the whole song fades at its end
SECONDS_PER_BEAT = 60 / tune.BEATS_PER_MINUTE


def frequency(pitch):
    return 440 * 2 ** ((pitch - 69) / 12)


class Desk:
    """Left and right of the mix, and what the reverberation gets."""

    def __init__(self, rate):
        self.rate = rate
        self.frames = round(tune.BARS * tune.BEATS_PER_BAR * SECONDS_PER_BEAT * rate)
        self.left, self.right, self.room = ([0.0] * self.frames for _ in range(3))

    def add(self, seconds, samples, pan, room):
        angle = (pan + 1) * math.pi / 4
        left, right = math.cos(angle), math.sin(angle)
        for index, value in enumerate(samples[: self.frames - int(seconds * self.rate)], int(seconds * self.rate)):
            self.left[index] += left * value
            self.right[index] += right * value
            self.room[index] += room * value


def decaying_sine(rate, pitch, decay, frames):
    """A recurrence of two multiplications a sample, cheaper than a sine each."""
    fall = math.exp(-1 / (decay * rate))
    twice, square = 2 * fall * math.cos(2 * math.pi * pitch / rate), fall * fall
    now, before = 0.0, -math.sin(2 * math.pi * pitch / rate) / fall
    for _ in range(frames):
        yield now
        now, before = twice * now - square * before, now


def envelope(rate, attack, length, release):
    """Rises and falls on raised cosines: neither end clicks."""
    up, down = max(1, round(attack * rate)), round(release * rate)
    whole = [1.0] * max(up, round(length * rate)) + [(1 + math.cos(math.pi * i / down)) / 2 for i in range(down)]
    whole[:up] = [(1 - math.cos(math.pi * i / up)) / 2 for i in range(up)]
    return whole


def play_note(desk, instrument, note):
    gains = envelope(desk.rate, instrument.attack, note.length * SECONDS_PER_BEAT, instrument.release)
    sound = [0.0] * len(gains)
    for multiple, amplitude, decay in instrument.partials:
        partial = decaying_sine(desk.rate, multiple * frequency(note.pitch), decay, len(gains))
        sound = [value + amplitude * sine for value, sine in zip(sound, partial)]
    sound = [instrument.gain * value * gain for value, gain in zip(sound, gains)]
    desk.add(note.start * SECONDS_PER_BEAT, sound, instrument.pan, instrument.room)


def kick(rate, _noise):
    phase, sound = 0.0, []
    for i in range(round(.28 * rate)):
        phase += 2 * math.pi * (48 + 110 * math.exp(-i / (.025 * rate))) / rate
        sound.append(.45 * math.sin(phase) * math.exp(-i / (.09 * rate)))
    return [value * gain for value, gain in zip(sound, envelope(rate, .001, .18, .1))]


def snare(rate, noise):
    """Brushed: noise without its lows, and a short skin."""
    skin, before, sound = decaying_sine(rate, 185, .05, round(.22 * rate)), 0.0, []
    for i, tone in enumerate(skin):
        hiss = noise.uniform(-1, 1)
        sound.append(.16 * (hiss - .75 * before) * math.exp(-i / (.05 * rate)) + .12 * tone)
        before = hiss
    return [value * gain for value, gain in zip(sound, envelope(rate, .002, .12, .1))]


def hat(rate, noise):
    older, old, sound = 0.0, 0.0, []
    for i in range(round(.08 * rate)):
        hiss = noise.uniform(-1, 1)
        sound.append(.06 * (hiss - 2 * old + older) * math.exp(-i / (.016 * rate)))
        older, old = old, hiss
    return [value * gain for value, gain in zip(sound, envelope(rate, .0005, .04, .04))]


DRUMS = {"kick": (kick, 0, 0), "snare": (snare, -.1, .2), "hat": (hat, .35, .05)}  # sound, pan, room


def play_drums(desk):
    noise = random.Random(13)
    for name, (strike, pan, room) in DRUMS.items():
        for bar in tune.DRUM_BARS:
            for step, sign in enumerate(tune.DRUM_BAR[name]):
                if sign != ".":
                    sound = [(1 if sign == "X" else .5) * value for value in strike(desk.rate, noise)]
                    desk.add((bar * tune.BEATS_PER_BAR + step / 4) * SECONDS_PER_BEAT, sound, pan, room)


def comb(samples, delay, feedback):
    """An echo that grows duller and weaker each time round."""
    line, dull, place = [0.0] * delay, 0.0, 0
    for value in samples:
        echo = line[place]
        dull += .6 * (echo - dull)
        line[place] = value + feedback * dull
        place = (place + 1) % delay
        yield echo


def reverberate(desk):
    for side, delays in ((desk.left, (.0297, .0371, .0411, .0437)), (desk.right, (.0303, .0363, .0419, .0431))):
        for delay in delays:
            for index, echo in enumerate(comb(desk.room, round(delay * desk.rate), .78)):
                side[index] += .16 * echo


def fade_out(desk):
    frames = round(TAIL * desk.rate)
    for side in (desk.left, desk.right):
        for i in range(frames):
            side[i - frames] *= (1 + math.cos(math.pi * i / frames)) / 2


def play_song(rate):
    """The left and the right channel, as lists of numbers of any height."""
    desk = Desk(rate)
    parts = [(PIANO, tune.CHORDS), (PAD, tune.CHORDS), (BASS, tune.BASS), (BELL, tune.BELL), (FLUTE, tune.MELODY)]
    for instrument, notes in parts:
        for note in notes:
            play_note(desk, instrument, note)
    play_drums(desk)
    reverberate(desk)
    fade_out(desk)
    return desk.left, desk.right
