#!/usr/bin/env python3
"""Writes the seeds of the MIDI fuzzing into corpus/, one for each thing that a song can hold."""

import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "samples"))

from midi_file import END, LYRIC, NAME, TEMPO, chunk, meta, tempo, variable_length  # noqa: E402

BEAT = 96


def song(form, division, *tracks, more_header=b"", count=None):
    numbers = (form, len(tracks) if count is None else count, division)
    return chunk(b"MThd", b"".join(n.to_bytes(2, "big") for n in numbers) + more_header) + b"".join(tracks)


def track(*events, end=True):
    """Events are (ticks behind the one before, bytes)."""
    data = b"".join(variable_length(ticks) + data for ticks, data in events)
    return chunk(b"MTrk", data + (b"\x00" + meta(END) if end else b""))


def note(pitch, channel=0, ticks=BEAT):
    return [(0, bytes([0x90 + channel, pitch, 100])), (ticks, bytes([0x80 + channel, pitch, 64]))]


def set_up(channel, program, volume, pan):
    return [(0, bytes([0xC0 + channel, program])), (0, bytes([0xB0 + channel, 7, volume])),
            (0, bytes([0xB0 + channel, 10, pan]))]


def settings(*lines):
    return "\r\n".join(("#VEXMidi",) + lines + ("#End VEXMidi",)).encode("cp1250")


TUNE = track(*set_up(3, 40, 90, 64), *note(60, 3), *note(64, 3), *note(67, 3))
WORDS = track((0, meta(NAME, "Words")), *((BEAT, meta(LYRIC, word)) for word in ("la ", "li ", "/lu")))
PLAIN = song(1, BEAT, track((0, tempo(100))), TUNE, WORDS)

SEEDS = {
    "one_track.mid": song(0, BEAT, track((0, tempo(132)), *set_up(0, 1, 100, 20), *note(60), *note(40, 9))),
    "words.kar": PLAIN,
    "sequences.mid": song(2, BEAT, track((0, tempo(60)), *note(60)), track(*note(62)), track((0, tempo(200)), *note(65))),
    "tempos.mid": song(1, 480, track(*((240, tempo(bpm)) for bpm in (40, 55, 90, 133, 251)), (9, meta(TEMPO, bytes(3)))),
                       track(*note(50, 1, 1201))),
    "film.mid": song(1, 0xE728, track(*note(60, 2, 1000))),
    "drop_frames.mid": song(0, 0xE350, track(*note(60, 2, 2997))),
    "running.mid": song(0, BEAT, track((0, b"\x90\x3c\x40"), (40, b"\x3c\x00"), (3, meta(LYRIC, "x")), (0, b"\x40\x40"),
                                       (200, b"\x40\x00"), (0, b"\xe0\x00\x50"), (9, b"\x01\x51"), (0, b"\xd0\x12"),
                                       (5, b"\x13"), (0, b"\xa0\x3c\x22"))),
    "exclusive.mid": song(0, BEAT, track((0, b"\xf0\x05\x7e\x7f\x09\x01\xf7"), (0, b"\xf0\x03\x43\x12\x00"),
                                         (20, b"\xf7\x02\x11\x12"), (20, b"\xf7\x02\x13\xf7"), (0, b"\xf7\x01\xfa"),
                                         (0, b"\xf7\x03\xf0\x01\xf7"), *note(60))),
    "wrapped.mid": b"RIFF" + (len(PLAIN) + 12).to_bytes(4, "little") + b"RMIDdata" + len(PLAIN).to_bytes(4, "little") + PLAIN,
    "odd_chunks.mid": b"junk" + song(1, BEAT, chunk(b"XFIH", b"\x01\x02\x03"), TUNE, b"\x00\x00", TUNE, more_header=b"\x09\x08"),
    "damaged.mid": song(1, BEAT, track((0, b"\x3c\x40"), (0, b"\x90\xbc\x40"), (0, b"\xf4"), *note(60), end=False),
                        b"MTrk\x00\x00\x00\x05" + TUNE[8:], b"MTrk\x7f\xff\xff\xff" + TUNE[8:], TUNE[:-9], count=65535),
    "long_gap.mid": song(0, BEAT, track(*note(60), (0xFFFFFFF, b"\x90\x3c\x40"))),
    "container.kar": PLAIN + settings("ch03,1,0,90,64,25", "ch 9,1,1,127,0,0", "ch04,0,0,127,64,1"),
    "container_odd.kar": PLAIN + settings("ch1") + b"rest" + settings("", "ą 99999999999,-1,,x,1e9,", "--15:1,,,,", "ch16,1,1,1,1,1"),
    "container_open.kar": PLAIN + settings("ch01,1,1,1,1,1")[-12:] + settings("ch01,1,1,1,1,1")[:-12],
}


def main():
    folder = HERE / "corpus"
    folder.mkdir(exist_ok=True)
    for name, data in SEEDS.items():
        (folder / name).write_bytes(data)


if __name__ == "__main__":
    main()
