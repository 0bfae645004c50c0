"""Writes Standard MIDI Files: a track is a list of (beat, bytes), in any order."""

TICKS_PER_BEAT = 120
TEXT, LYRIC, NAME, END, TEMPO, METRE = 0x01, 0x05, 0x03, 0x2F, 0x51, 0x58
NOTE_OFF, NOTE_ON, CONTROL, PROGRAM = 0x80, 0x90, 0xB0, 0xC0
VOLUME, PAN, EXPRESSION, ALL_SOUND_OFF = 7, 10, 11, 120


def variable_length(number):
    """Seven bits a byte, the highest first; all but the last have the top bit set."""
    digits = [number & 0x7F]
    while number := number >> 7:
        digits.insert(0, number & 0x7F | 0x80)
    return bytes(digits)


def meta(kind, data=b""):
    data = data.encode("ascii") if isinstance(data, str) else data
    return bytes([0xFF, kind]) + variable_length(len(data)) + data


def tempo(beats_per_minute):
    """Rounded so that the last byte is no status of a note, which those would find who search a file for such bytes."""
    return meta(TEMPO, (32 * round(60e6 / 32 / beats_per_minute)).to_bytes(3, "big"))


def control(channel, number, value):
    return bytes([CONTROL + channel, number, value])


def note(channel, start, length, pitch, loudness):
    """Both ends of a note; channels count from 0 here."""
    return [(start, bytes([NOTE_ON + channel, pitch, loudness])),
            (start + length, bytes([NOTE_OFF + channel, pitch, 64]))]


def chunk(kind, data):
    return kind + len(data).to_bytes(4, "big") + data


def track(events, beats):
    """Ends after `beats`. What is simultaneous keeps its order, but a note ends before the next one begins."""
    data, now = b"", 0
    for beat, event in sorted(events, key=lambda item: (item[0], item[1][0] & 0xF0 == NOTE_ON)) + [(beats, meta(END))]:
        tick = round(beat * TICKS_PER_BEAT)
        data += variable_length(tick - now) + event
        now = tick
    return chunk(b"MTrk", data)


def write_midi(path, tracks, beats):
    """All tracks begin together (format 1)."""
    header = b"".join(number.to_bytes(2, "big") for number in (1, len(tracks), TICKS_PER_BEAT))
    path.write_bytes(chunk(b"MThd", header) + b"".join(track(events, beats) for events in tracks))
