#!/usr/bin/env python3
"""End-to-end tests of the headless mixer with MIDI songs: midi_tool_test.py BUILD_DIRECTORY"""

import array
import cmath
import math
import statistics
import subprocess
import sys
import unittest
from pathlib import Path

import tool_test
from tool_test import RATE, STREAMED_HEADER, clicks, click_places

SAMPLES = Path(__file__).resolve().parent.parent / "samples"
sys.path.append(str(SAMPLES))
import karaoke  # noqa: E402
import tune  # noqa: E402

SONG = SAMPLES / "evening-ferry.kar"
FONT = Path("/usr/share/sounds/sf2/TimGM6mb.sf2")  # the smaller one, soon loaded
SONG_SECONDS = karaoke.BEATS * 60 / tune.BEATS_PER_MINUTE
SILENT = 10 ** (-50 / 20)  # of the loudest sample
LINGERS = 2  # seconds that fluidsynth plays on after the end of a song
MELODY, ONLY_MELODY, ONLY_DRUMS = "4", "1,2,3,5,10", "1,2,3,4,5"
ALONE = (13.5, 17, 19, 29.5, 33, 45)  # beats where no other part, nor an overtone of one, has the melody's pitch
BLOCK = RATE // 100


def seconds_of(note):
    return note.start * 60 / tune.BEATS_PER_MINUTE


def level(pcm, frequency, start):
    """Amplitude of a frequency in the middle of both sides for a fifth of a second, through a Hann window."""
    first, count = round(start * RATE), RATE // 5
    middle = [pcm[2 * i] + pcm[2 * i + 1] for i in range(first, first + count)]
    turn = cmath.exp(-2j * math.pi * frequency / RATE)
    place, total = 1, 0
    for i, sample in enumerate(middle):
        total += place * sample * (1 - math.cos(2 * math.pi * i / count))
        place *= turn
    return abs(total) / count


def note_level(pcm, note, semitones=0):
    return level(pcm, 440 * 2 ** ((note.pitch + semitones - 69) / 12), seconds_of(note) + 0.05)


def loudness(samples):
    return math.hypot(*samples) / math.sqrt(len(samples))


def strokes(pcm):
    """How much louder the highs get from one hundredth of a second to the next, in powers of e."""
    left = pcm[::2]
    highs = [after - before for before, after in zip(left, left[1:])]
    course = [math.log(1 + loudness(highs[i:i + BLOCK])) for i in range(0, len(highs) - BLOCK, BLOCK)]
    return [max(0.0, after - before) for before, after in zip(course, course[1:])]


def fluidsynth(song, output, rate, *options):
    """Samples of both sides as fluidsynth plays them."""
    command = ["fluidsynth", "-ni", "-q", *options, "-T", "raw", "-F", output, "-r", str(rate), FONT, song]
    subprocess.run(command, check=True, capture_output=True, timeout=tool_test.HANG)
    samples = array.array("h", output.read_bytes())
    output.unlink()
    return samples


class MidiTest(tool_test.ToolTest):
    def setUp(self):
        super().setUp()
        self.silence = self.wav("silence.wav", pcm=bytes(4000))

    def play(self, *options, song=SONG):
        """What the encoder gets of a song, at about its own volume; the voice is silent."""
        self.expect_mixed("--overwrite", "--soundfont", FONT, "--volume", "70,100", *options, "--", song, self.silence,
                          "mix.mp3", path=self.encoder())
        return array.array("h", self.given()[len(STREAMED_HEADER):])


class PlayTest(MidiTest):
    def test_song_and_voice_start_together(self):
        voice = self.wav("voice.wav", pcm=clicks(40 * RATE, [1000], side=1))
        self.expect_mixed("--balance", "-100,100", "--soundfont", FONT, SONG, voice, "mix.mp3")
        pcm = self.decode(self.dir / "mix.mp3")
        self.assertEqual(click_places(pcm, 1), [1000])
        left = array.array("h", pcm)[::2]
        peak = max(map(abs, left))
        self.assertGreater(peak, 1000)
        self.assertLess(next(i for i, sample in enumerate(left) if abs(sample) > peak / 100), BLOCK)
        self.assertTrue(SONG_SECONDS - 0.01 < len(left) / RATE < SONG_SECONDS + LINGERS + 0.1, len(left) / RATE)

    def test_notes_sound_when_they_should(self):
        pcm, reference = self.play(), fluidsynth(SONG, self.dir / "wanted.raw", RATE, "-g", "0.1")
        self.assertAlmostEqual(loudness(pcm) / loudness(reference[:len(pcm)]), 10 ** (-0.6 / 20), delta=0.05)
        mixed, wanted = strokes(pcm), strokes(reference)
        count = round(SONG_SECONDS * 100) - 10  # the fade stays out
        likeness = {lag: statistics.correlation(mixed[5 + lag:count + lag], wanted[5:count]) for lag in range(-5, 6)}
        self.assertEqual(max(likeness, key=likeness.get), 0, likeness)
        self.assertGreater(likeness[0], 0.8)

    def test_what_cannot_be_played_is_named(self):
        song = SONG.read_bytes()
        for name, content in (("empty.mid", b""), ("early.kar", song[:100]), ("zeros.mid", bytes(5000))):
            (self.dir / name).write_bytes(content)
        before = sorted(self.dir.iterdir())
        for font, name, says in ((FONT, "empty.mid", "no MIDI song"), (FONT, "early.kar", "no note"),
                                 (FONT, "zeros.mid", "no MIDI song"), (FONT, "missing.kar", "missing.kar"),
                                 ("missing.sf2", SONG, "missing.sf2")):
            with self.subTest(name=name):
                self.expect_refused("--soundfont", font, name, self.silence, "mix.mp3", says=says)
                self.assertEqual(sorted(self.dir.iterdir()), before)
        (self.dir / "half.kar").write_bytes(song[:len(song) // 2])
        self.assertGreater(loudness(self.play(song="half.kar")), 10, "what can be read is played")

    def test_container_and_name_change_nothing(self):
        (self.dir / "-カラオケの歌.KAR").write_bytes(SONG.read_bytes() + b"#VEXMidi\r\n0004,1,0,20,0,56\r\n#End VEXMidi\r\n")
        self.assertEqual(self.play(song="-カラオケの歌.KAR"), self.play())
        self.assertEqual(sorted(file.name for file in self.dir.iterdir()),
                         ["-カラオケの歌.KAR", "fake", "home", "mix.mp3", "silence.wav"])

    def test_songs_of_others_have_their_length(self):
        files = subprocess.run(["dpkg", "-L", "openttd-openmsx"], capture_output=True, text=True).stdout.split()
        songs = sorted(Path(file) for file in files if file.endswith(".mid"))[::16]
        if not songs:
            self.skipTest("openttd-openmsx is not installed")
        for song in songs:
            with self.subTest(song=song.name):
                mixed = len(self.play(song=song)) / 2 / RATE
                samples = fluidsynth(song, self.dir / "wanted.raw", 8000, "-R", "0", "-C", "0")
                silent = max(map(abs, samples)) * SILENT
                heard = next(i for i in range(len(samples) - 1, 0, -1) if abs(samples[i]) > silent) / 2 / 8000
                # fluidsynth goes on until its last voice is quite silent, which takes up to half a minute.
                self.assertTrue(heard - 0.1 < mixed < len(samples) / 2 / 8000 + 0.1, (heard, mixed))


class ChannelTest(MidiTest):
    def test_key_moves_melody_but_not_drums(self):
        plain, moved = (self.play("--mute", ONLY_MELODY, "--key", key) for key in ("0", "2"))
        self.assertLess(max(map(abs, plain[:2 * round(RATE * (seconds_of(tune.MELODY[0]) - 0.1))])), 10)
        for note in tune.MELODY[::2]:
            for pcm, here, elsewhere in ((plain, 0, 2), (moved, 2, 0)):
                self.assertGreater(note_level(pcm, note, here), 2 * note_level(pcm, note, elsewhere), (note, here))
        drums, same = (self.play("--mute", ONLY_DRUMS, "--key", key) for key in ("0", "2"))
        self.assertGreater(loudness(drums), 10)
        self.assertLess(loudness([a - b for a, b in zip(drums, same, strict=True)]), loudness(drums) / 20)

    def test_settings_are_heard(self):
        plain = self.play()
        low = next(note for note in tune.BASS if note.pitch == tune.key_number("G2"))
        alone = [note for note in tune.MELODY if note.start in ALONE]
        muted = self.play("--mute", MELODY, "--tone", "0,50,50,50")
        self.assertGreater(note_level(muted, low), 1.4 * note_level(plain, low))
        for note in alone:
            self.assertGreater(note_level(plain, note), 10 * note_level(muted, note), note)
        melody = self.play("--mute", ONLY_MELODY)
        for options, near in ((("--channel-balance", "4=0"), 0), (("--channel-balance", "4=127"), 1),
                              (("--balance", "-100,0"), 0), (("--balance", "100,0"), 1)):
            pcm = self.play("--mute", ONLY_MELODY, "--channel-volume", "4=26", *options)
            self.assertGreater(loudness(pcm[near::2]), 3 * loudness(pcm[1 - near::2]), options)
            self.assertLess(loudness(pcm), loudness(melody) / 4)
        xylophone = self.play("--mute", ONLY_MELODY, "--program", "4=13")
        note = max(tune.MELODY, key=lambda note: note.length)
        held = slice(2 * round(RATE * (seconds_of(note) + 1)), 2 * round(RATE * (seconds_of(note) + 1.2)))
        self.assertGreater(loudness(xylophone), 10)
        self.assertGreater(loudness(melody[held]), 10 * loudness(xylophone[held]), "a flute holds its notes")


if __name__ == "__main__":
    tool_test.MIX = str(Path(sys.argv.pop(1), tool_test.MIX).resolve())
    unittest.main()
