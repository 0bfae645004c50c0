#!/usr/bin/env python3
"""End-to-end tests of the headless mixer, with real files and the real encoder: tool_test.py BUILD_DIRECTORY"""

import array
import contextlib
import hashlib
import json
import math
import os
import pty
import random
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import wave
from pathlib import Path

MIX = "melvane-mix"  # Becomes the path in the build directory.
RATE = 44100
STREAMED_HEADER = struct.pack("<4sI8sIHHIIHH4sI", b"RIFF", 0xFFFFFFFF, b"WAVEfmt ", 16, 1, 2, RATE, RATE * 4, 4, 16,
                              b"data", 0xFFFFFFFF)
LAME = shutil.which("lame")
LONG = 12 * RATE  # frames; more than is mixed ahead of the encoder
PRESET = ["--alt-preset", "standard", "-"]
HANG = 60  # seconds; a hang is a failure, slowness is none


def noise(frames, seed=1):
    """Stereo noise, 16 bits, at half of full scale."""
    samples = array.array("h", random.Random(seed).randbytes(frames * 4))
    return array.array("h", (s // 2 for s in samples)).tobytes()


def sine(frames, dbfs):
    """1 kHz on both sides."""
    one_second = [round(32768 * 10 ** (dbfs / 20) * math.sin(2 * math.pi * 1000 * i / RATE)) for i in range(RATE)]
    return array.array("h", [s for i in range(frames) for s in (one_second[i % RATE],) * 2]).tobytes()


def clicks(frames, places, side):
    """Silence with a short bell on one side (0 left, 1 right) around each of the places."""
    samples = array.array("h", bytes(frames * 4))
    for place in places:
        for k in range(-5, 6):
            samples[(place + k) * 2 + side] = round(12000 * (0.5 + 0.5 * math.cos(math.pi * k / 6)))
    return samples.tobytes()


def click_places(pcm, side):
    """The loudest frame of each stretch above half of the peak; none in silence."""
    channel = array.array("h", pcm)[side::2]
    peak = max(map(abs, channel))
    loud = [i for i, sample in enumerate(channel) if abs(sample) > max(peak / 2, 1000)]
    starts = [i for i, before in zip(loud, [-1000] + loud) if i - before > 100]
    return [max((i for i in loud if 0 <= i - start <= 100), key=lambda i: abs(channel[i])) for start in starts]


def write_wav(path, pcm):
    with wave.open(str(path), "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        file.writeframes(pcm)
    return path


def lame(*arguments, **options):
    subprocess.run(["lame", "--quiet", *arguments], check=True, timeout=HANG, **options)


def gone(pid):
    """True when no process, not even a dead one that nobody asked for, has this number."""
    return not Path(f"/proc/{pid}").exists()


def wait_until(condition):
    end = time.monotonic() + HANG
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("waited in vain")
        time.sleep(0.01)


class ToolTest(unittest.TestCase):
    """A directory for each test, the current one of the mixer."""

    def setUp(self):
        self.dir = Path(tempfile.mkdtemp(prefix="melvane-tool-"))
        self.addCleanup(shutil.rmtree, self.dir)
        self.home = self.folder("home")

    def folder(self, name):
        path = self.dir / name
        path.mkdir()
        return path

    def environment(self, path=None):
        paths = os.environ.get("PATH", os.defpath) if path is None else path
        return {**os.environ, "HOME": str(self.home), "XDG_STATE_HOME": str(self.home / "state"), "PATH": paths, "LC_ALL": "C.UTF-8"}

    def start(self, *arguments, path=None, **options):
        pipes = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "stdin": subprocess.DEVNULL}
        return subprocess.Popen([MIX, *map(str, arguments)], cwd=self.dir, env=self.environment(path),
                                **{**pipes, **options})

    def finish(self, process):
        with process:
            try:
                output, errors = process.communicate(timeout=HANG)
            finally:
                process.kill()
        return process.returncode, output.decode(), errors.decode(errors="surrogateescape")

    def mix(self, *arguments, **options):
        """Exit status and what was said; standard output is for --json alone."""
        status, output, errors = self.finish(self.start(*arguments, **options))
        self.assertEqual(output, "")
        return status, errors

    def expect_mixed(self, *arguments, **options):
        self.assertEqual(self.mix(*arguments, **options), (0, ""))

    def expect_refused(self, *arguments, says, **options):
        status, errors = self.mix(*arguments, **options)
        self.assertEqual(status, 1, errors)
        self.assertRegex(errors, r"\Amelvane-mix: [^\n]+\n\Z")
        self.assertRegex(errors, says)

    def encoder(self, body=f'cat > "${{0%/*}}/given"; exec {LAME} --quiet "$@" < "${{0%/*}}/given"',
                folder="fake", name="lame.exe"):
        """A PATH on which an encoder comes first that notes its process and its arguments, then does `body`."""
        script = self.dir / folder / name
        script.parent.mkdir(exist_ok=True)
        script.write_text(f"#!/bin/sh\nfor last; do :; done\n"
                          f"printf '%s\\0' $$ \"$@\" > '{script.parent}/call'\n{body}\n")
        script.chmod(0o755)
        return f"{script.parent}:/usr/bin:/bin"

    def call(self, folder="fake"):
        """Process and arguments of the encoder that ran last."""
        pid, *arguments = (self.dir / folder / "call").read_bytes().split(b"\0")[:-1]
        return int(pid), list(map(os.fsdecode, arguments))

    def given(self):
        """What the fake encoder was given, with its header."""
        return (self.dir / "fake/given").read_bytes()

    def decode(self, mp3):
        lame("--decode", mp3, self.dir / "decoded.wav")
        with wave.open(str(self.dir / "decoded.wav")) as file:
            self.assertEqual(file.getparams()[:3], (2, 2, RATE))
            return file.readframes(file.getnframes())

    def files(self):
        """What lies beside the fake encoder's notes, and is no folder."""
        return sorted(str(file) for file in self.dir.rglob("*") if file.is_file() and file.name != "call")

    def wav(self, name, frames=0, pcm=None):
        return write_wav(self.dir / name, noise(frames, name) if pcm is None else pcm)


class MixTest(ToolTest):
    PERIOD = 29011
    FIRST = 1000
    PLACES = [FIRST, FIRST + PERIOD, FIRST + 2 * PERIOD]
    FRAMES = 3 * PERIOD

    def songs(self):
        wav = self.wav("song.wav", pcm=clicks(self.FRAMES, self.PLACES, side=0))
        lame("--alt-preset", "standard", wav, self.dir / "song.mp3")
        yield self.dir / "song.mp3"
        if shutil.which("ffmpeg"):
            subprocess.run(["ffmpeg", "-v", "error", "-i", wav, "-c:a", "libvorbis", self.dir / "song.ogg"], check=True)
            yield self.dir / "song.ogg"

    def test_song_and_voice_are_frame_exact(self):
        loops = self.wav("loops.wav", pcm=clicks(self.PERIOD, [self.FIRST], side=1))
        cut = self.wav("cut.wav", pcm=clicks(2 * self.FRAMES, [self.FIRST + self.PERIOD * n for n in range(6)], 1))
        for song in self.songs():
            for volume, left, right in (("100,100", self.PLACES, self.PLACES), ("100,0", self.PLACES, []),
                                        ("0,100", [], self.PLACES)):
                for voice in (loops, cut):
                    with self.subTest(song=song.name, voice=voice.name, volume=volume):
                        self.expect_mixed("--overwrite", "--volume", volume, song, voice, "mix.mp3")
                        pcm = self.decode(self.dir / "mix.mp3")
                        self.assertEqual([click_places(pcm, 0), click_places(pcm, 1)], [left, right])
                        self.assertAlmostEqual(len(pcm) // 4, self.FRAMES, delta=1152)

    def mixed_pcm(self, *options, song, voice):
        """What the encoder gets, without its header."""
        self.expect_mixed("--overwrite", *options, song, voice, "mix.mp3", path=self.encoder())
        return self.given()[len(STREAMED_HEADER):]

    def test_a_voice_lines_itself_up(self):
        pcm = noise(LONG)
        song = self.wav("song.wav", pcm=pcm)
        late = self.wav("late.wav", pcm=bytes(RATE * 6) + pcm)
        stranger = self.wav("stranger.wav", LONG)
        finding = ("--find-sync", "--json")
        self.assertEqual(self.finish(self.start(*finding, song, late)),
                         (0, '{"sync": 1.500, "drift_ppm": 0.0, "certainty": 1.00}\n', ""))
        self.assertEqual(self.finish(self.start(*finding, late, song))[1][:15], '{"sync": -1.500')
        self.expect_mixed("--sync", "auto", song, late, "mix.mp3")
        before = self.files()
        for song_file, voice, says in ((song, stranger, "no trace"), (song, "none.wav", "none.wav"), ("no.mp3", late, "no.mp3")):
            for options in (("--find-sync",), ("--sync", "auto")):
                with self.subTest(says=says, options=options):
                    destination = () if "--find-sync" in options else ("new.mp3",)
                    self.expect_refused(*options, song_file, voice, *destination, says=says)
                    self.assertEqual(self.files(), before)

    def test_knobs_do_what_they_say(self):
        song = self.wav("song.wav", pcm=clicks(self.FRAMES, self.PLACES, side=0))
        voice = self.wav("voice.wav", pcm=clicks(self.FRAMES, self.PLACES, side=1))
        for seconds in ("-0.1", "0.02"):
            with self.subTest(sync=seconds):
                pcm = self.mixed_pcm("--sync", seconds, song=song, voice=voice)
                moved = [place - round(float(seconds) * RATE) for place in self.PLACES]
                self.assertEqual([click_places(pcm, 0), click_places(pcm, 1)], [self.PLACES, moved])
        for seconds in ("40", "-40"):
            status, errors = self.mix("--overwrite", "--sync", seconds, song, voice, "mix.mp3", path=self.encoder())
            self.assertEqual((status, errors.count("outside of the song")), (0, 1), seconds)
        pcm = self.mixed_pcm("--balance", "100,-100", song=song, voice=voice)
        self.assertEqual(max(map(abs, array.array("h", pcm))), 0, "each click is turned away from its own side")
        echoes = click_places(self.mixed_pcm("--volume", "0,100", "--effects", "0,0;1,100;0,0;0,0", song=song,
                                             voice=self.wav("one.wav", pcm=clicks(self.FRAMES, [self.FIRST], 1))), 1)
        self.assertEqual(echoes[:2], [self.FIRST, self.FIRST + round(0.266 * RATE)])

    def test_any_recording_is_song_or_voice(self):
        def convert(*arguments):
            subprocess.run(["ffmpeg", "-v", "error", *arguments], check=True, cwd=self.dir)

        wav = self.wav("in.wav", 3 * RATE)
        for name in ("-song.m4a", "voice.wma"):
            convert("-i", wav, f"./{name}")
            convert("-i", f"./{name}", "-map", "0:a:0", "-c:a", "pcm_f32le", f"./{Path(name).stem}.float.wav")
        expected = self.mixed_pcm(song="./-song.float.wav", voice="voice.float.wav")
        self.assertEqual(self.mixed_pcm("--", song="-song.m4a", voice="voice.wma"), expected)
        alone = self.encoder(folder="alone").split(":")[0]
        self.expect_refused(wav, "voice.wma", "none.mp3", path=alone, says="apt install ffmpeg.*voice.wma")

    def result(self, *arguments):
        """Of a mix that was made: its levels, if there were any to be found, and its result."""
        status, output, errors = self.finish(self.start("--json", "--quiet", "--overwrite", *arguments, "mix.mp3"))
        self.assertEqual(status, 0, errors)
        lines = [json.loads(line) for line in output.splitlines()]
        return {line["event"]: line for line in lines if line["event"] in ("levels", "result")}

    def test_every_mix_is_measured(self):
        tone = self.wav("tone.wav", pcm=sine(12 * RATE, -23))
        silence = self.wav("silence.wav", pcm=bytes(4 * RATE * 2))
        for song, options, expected in ((tone, (), (-23, 0, -23)), (tone, ("--voice-trim", "6"), (-17, 0, -17)),
                                        (silence, (), (None, None, None))):
            with self.subTest(expected=expected):
                voice = tone if "--voice-trim" in options else silence
                volume = "0,100" if voice is tone else "100,100"
                result = self.result("--volume", volume, *options, song, voice)["result"]
                for name, value in zip(("lufs", "range_lu", "true_peak_db"), expected):
                    self.assertEqual(result[name], value) if value is None else self.assertAlmostEqual(result[name], value, delta=0.1)

    def test_levels_are_matched_and_loudness_is_reached(self):
        song, voice = self.wav("song.wav", pcm=noise(LONG)), self.wav("voice.wav", pcm=sine(LONG, -50))
        found = self.result("--match-levels", song, voice)["levels"]
        self.assertAlmostEqual(found["voice_lufs"] - found["song_lufs"], 2, delta=0.5)
        self.assertLessEqual(found["limited_share"], 0.01)
        volume = ",".join(map(str, found["volume"]))
        matched = (self.dir / "mix.mp3").read_bytes()
        self.result("--volume", volume, "--voice-trim", found["voice_trim"], song, voice)
        self.assertEqual((self.dir / "mix.mp3").read_bytes(), matched, "levels that are found are those that are set")
        for target in (-20, -14):
            result = self.result("--loudness", target, song, voice)["result"]
            self.assertAlmostEqual(result["lufs"], target, delta=0.1)
            self.assertEqual((result["frames"], result["target_reached"]), (LONG, True))
        first = (self.dir / "mix.mp3").read_bytes()
        self.result("--loudness", -14, song, voice)
        self.assertEqual((self.dir / "mix.mp3").read_bytes(), first, "the same job, the same bytes")
        ticks = self.wav("ticks.wav", pcm=clicks(LONG, range(1000, LONG, RATE), side=0))
        self.assertFalse(self.result("--loudness", -14, ticks, ticks)["result"]["target_reached"])

    def test_what_cannot_be_matched_or_kept_leaves_nothing(self):
        tone, silence = self.wav("tone.wav", pcm=sine(LONG, -23)), self.wav("silence.wav", pcm=bytes(4 * RATE))
        before = self.files()
        self.expect_refused("--match-levels", silence, tone, "new.mp3", says="song is silent")
        self.expect_refused("--match-levels", tone, silence, "new.mp3", says="voice is silent")
        limit = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))}
        for option in (("--match-levels",), ("--loudness", "-14")):
            self.expect_refused(*option, tone, tone, "new.mp3", says="no room", **limit)
        self.assertEqual(self.files(), before)

    def test_job_is_mixed_as_its_options_would_be(self):
        work = self.folder("work")
        write_wav(work / "song.wav", clicks(self.FRAMES, self.PLACES, side=0))
        write_wav(work / "voice.wav", clicks(self.FRAMES, self.PLACES, side=1))
        job = {"melvane job": 1, "song": {"path": "/gone/song.wav", "relative": "song.wav"}, "voice": {"relative": "voice.wav"},
               "mix": {"relative": "mix.mp3"}, "volume": [30, 70], "synchronisation": 0.02, "balance": [-50, 20]}
        (work / "one.melvane").write_text(json.dumps(job))
        self.expect_mixed("--job", "work/one.melvane", path=self.encoder())
        by_job = self.given()
        options = ["--volume", "30,70", "--balance=-50,20"]
        self.expect_mixed(*options, "--sync", "0.02", "work/song.wav", "work/voice.wav", "mix.mp3", path=self.encoder())
        self.assertEqual(by_job, self.given())
        self.assertEqual((work / "mix.mp3").read_bytes(), (self.dir / "mix.mp3").read_bytes())
        self.expect_refused("--job", "work/one.melvane", says=r"mix\.mp3 exists already")
        self.expect_mixed("--job", "work/one.melvane", "--sync=-0.1", "other.mp3", path=self.encoder())
        by_job = self.given()
        self.expect_mixed(*options, "--sync=-0.1", "work/song.wav", "work/voice.wav", "same.mp3", path=self.encoder())
        self.assertEqual(by_job, self.given())

    def test_job_that_cannot_be_mixed_is_told(self):
        for text, says in (("{}", "no Melvane job"), ('{"melvane job": 2}', "newer Melvane"), ('{"melvane job": 1, "key": 9}', "key"),
                           ('{"melvane job": 1}', "names no song, voice or destination"), (None, "There is no such file")):
            with self.subTest(text=text):
                (self.dir / "one.melvane").unlink(missing_ok=True)
                if text:
                    (self.dir / "one.melvane").write_text(text)
                self.expect_refused("--job", "one.melvane", says=says)

    def test_names_pass_as_they_are(self):
        path = self.encoder()
        pcm = noise(5003)
        for name in ("mix", "with  two blanks ", " before", "it's", 'a "quoted" word', "back\\slash\\", '\\"',
                     "zażółć gęślą jaźń", "カラオケの歌", "-o", "--overwrite", "x" * 200, "100%d %s %n", "$HOME `id` $(id)",
                     "a;b|c&d>e<f*?", "new\nline", "tab\t", "#1", "~", "\udcff no UTF-8", "a.b.c"):
            with self.subTest(name=name):
                names = [name + end for end in (".song.wav", ".voice.wav", ".mp3")]
                for source in names[:2]:
                    write_wav(self.dir / source, pcm)
                self.expect_mixed("--volume", "100,0", "--", *names, path=path)
                *words, written = self.call()[1]
                self.assertEqual((words, str(Path(written).parent)), (PRESET, str((self.dir / names[2]).parent)))
                self.assertEqual(self.given(), STREAMED_HEADER + pcm)
                self.assertEqual(len(self.decode(self.dir / names[2])), len(pcm))
                for file in (*names, "decoded.wav"):
                    (self.dir / file).unlink()
        self.assertEqual(sorted(file.name for file in self.dir.iterdir()), ["fake", "home"])
        self.assertEqual(list(self.home.iterdir()), [])


class EncoderTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.sources = self.wav("song.wav", RATE), self.wav("voice.wav", 1000)

    def test_failing_encoder_is_reported(self):
        short, long = self.wav("short.wav", 100), self.wav("long.wav", LONG)
        part = 'head -c 100000 > "$last"; '
        (self.dir / "old.mp3").write_text("precious")
        usual = self.sources[0]
        for song, body in ((usual, "exit 0"), (short, "kill -9 $$"), (short, 'rm "$last"; exit 1'),
                           (usual, part + "kill -15 $$"), (usual, 'cat > "$last"; exit 3'),
                           (usual, 'exec cat > "$last"'), (usual, 'exec lame -t --quiet "$@"'),
                           (usual, 'head -c 99044 | lame --quiet "$@"; cat > /dev/null'),
                           (long, f"exec <&-; exec sleep {HANG + 10}"), (long, None)):
            path = self.encoder(body or "")
            if not body:
                (self.dir / "fake/lame.exe").write_text("no program\n")
            before = self.files()
            for name in ("mix.mp3", "old.mp3"):
                with self.subTest(body=body, name=name):
                    says = f"encoder.*{name}" if body else "encoder"
                    self.expect_refused("--overwrite", song, self.sources[1], name, path=path, says=says)
                    self.assertTrue(gone(self.call()[0]))
                    self.assertEqual((self.files(), (self.dir / "old.mp3").read_text()), (before, "precious"))

    def test_full_disk_is_reported(self):
        limit = 65536
        too_much = self.wav("long.wav", LONG), self.sources[1]
        self.expect_refused(*too_much, "mix.mp3", says="encoder.*mix.mp3",
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        disk = self.folder("disk")
        mount = ["mount", "-t", "tmpfs", "-o", f"size={limit}", "tmpfs", disk]
        if subprocess.run(mount, capture_output=True).returncode:
            self.skipTest("nothing can be mounted")
        try:
            (disk / "mix.mp3").write_text("precious")
            self.expect_refused("--overwrite", *too_much, "disk/mix.mp3", says="disk is full.*disk/mix.mp3")
            (disk / "filler").write_bytes(bytes(limit - 4096))
            self.expect_refused(*too_much, "disk/other.mp3", says="disk/other.mp3")
            self.assertEqual((disk / "mix.mp3").read_text(), "precious")
            self.assertEqual(sorted(file.name for file in disk.iterdir()), ["filler", "mix.mp3"])
        finally:
            subprocess.run(["umount", disk], check=True)


@unittest.skipUnless(shutil.which("ffmpeg"), "songs with tags are made by ffmpeg")
class TagsTest(ToolTest):
    TEXTS = {"title": "Zażółć gęślą jaźń", "artist": "美空ひばり", "album": "Płyta 1", "date": "1999", "genre": "Pop"}

    def setUp(self):
        super().setUp()
        self.song, self.voice = self.wav("song.wav", RATE), self.wav("voice.wav", 1000)
        self.cover = self.dir / "cover.jpg"
        self.convert("-f", "lavfi", "-i", "testsrc=size=640x480", "-frames:v", "1", self.cover)

    def convert(self, *arguments):
        subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, cwd=self.dir)

    def tagged(self, name, *coding, picture=False):
        texts = [word for field, text in self.TEXTS.items() for word in ("-metadata", f"{field}={text}")]
        pictures = ["-i", self.cover, "-map", "0:a", "-map", "1:v", "-c:v", "copy", "-disposition:v", "attached_pic"]
        self.convert("-i", self.song, *(pictures if picture else []), *coding, *texts, name)
        return name

    def mixed(self, song, *options):
        self.expect_mixed("--overwrite", *options, song, self.voice, "mix.mp3")
        return (self.dir / "mix.mp3").read_bytes()

    def told(self, file="mix.mp3"):
        """What another program reads in the mix: its texts."""
        entries = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format_tags", "-of", "json", file],
                                 check=True, cwd=self.dir, capture_output=True).stdout
        tags = json.loads(entries)["format"].get("tags", {})
        return {field: text for field, text in tags.items() if field in self.TEXTS}

    def expect_tagged(self, mix, sound, cover):
        self.assertTrue(mix.startswith(b"ID3\3\0\0"))
        length = int.from_bytes(mix[6:10], "big")
        start = 10 + sum((length >> shift & 0x7F) << (shift // 8 * 7) for shift in (0, 8, 16, 24))
        self.assertTrue(mix[start:] == sound, "the sound is another")
        if not cover:
            return self.assertNotIn(b"APIC", mix[:start])
        self.convert("-i", "mix.mp3", "-map", "0:v", "-c", "copy", "-f", "image2", "read.jpg")
        self.assertEqual((self.dir / "read.jpg").read_bytes(), self.cover.read_bytes())

    def test_songs_of_all_kinds_hand_on_their_tags(self):
        for name, picture, *coding in (("s.mp3", True), ("s4.mp3", True, "-id3v2_version", "4"), ("s.flac", True),
                                       ("s.m4a", True), ("s.ogg", False, "-c:a", "libvorbis"), ("s.wma", False, "-metadata", "WM/Year=1999"),
                                       ("s.opus", False)):
            with self.subTest(name):
                song = self.tagged(name, *coding, picture=picture)
                sound = self.mixed(song, "--no-tags")
                self.assertFalse(sound.startswith(b"ID3"))
                mix = self.mixed(song)
                self.expect_tagged(mix, sound, picture)
                self.assertEqual(self.told(), self.TEXTS)
                self.assertTrue(self.mixed(song) == mix, "another time it is another")
        # A mix is a song like any other.
        (self.dir / "mix.mp3").rename(self.dir / "again.mp3")
        self.mixed("again.mp3", "--title", "")
        self.assertEqual(self.told(), {field: text for field, text in self.TEXTS.items() if field != "title"})

    def test_options_and_jobs_win_over_the_song(self):
        song = self.tagged("s.mp3", picture=True)
        sound = self.mixed(song, "--no-tags")
        mix = self.mixed(song, "--title", "Inny", "--album=", "--year", "2001", "--cover", "")
        self.expect_tagged(mix, sound, cover=False)
        self.assertEqual(self.told(), {**{f: t for f, t in self.TEXTS.items() if f != "album"}, "title": "Inny", "date": "2001"})
        untagged = self.mixed(self.song)
        self.expect_tagged(self.mixed(self.song, "--cover", "cover.jpg"), untagged, cover=True)
        job = {"melvane job": 1, "song": {"relative": "s.mp3"}, "voice": {"relative": "voice.wav"}, "mix": {"relative": "mix.mp3"},
               "tags": {"title": "Inny", "album": "", "year": "1800", "cover": {}}}
        (self.dir / "one.melvane").write_text(json.dumps(job))
        self.expect_mixed("--overwrite", "--job", "one.melvane", "--year", "2001")
        self.assertTrue((self.dir / "mix.mp3").read_bytes() == mix)

    def test_cover_that_is_none_is_told_before_the_mix(self):
        (self.dir / "text.jpg").write_text("La la la")
        with open(self.dir / "large.png", "wb") as file:
            file.truncate(17 << 20)
        for cover, says in (("text.jpg", "JPEG or PNG.*text.jpg"), ("large.png", "16 MB.*large.png"), ("gone.jpg", "gone.*gone.jpg"),
                            (".", "gone")):
            self.expect_refused("--cover", cover, self.song, self.voice, "mix.mp3", says=says)
        self.assertEqual(self.mix("--year", "99", self.song, self.voice, "mix.mp3")[0], 2)
        self.assertFalse((self.dir / "mix.mp3").exists())

    def test_mix_without_room_for_its_tags_takes_its_place_without_them(self):
        with open(self.cover, "ab") as file:
            file.write(bytes(1 << 20))
        sound = self.mixed(self.song)
        limit = len(sound) + 65536
        status, errors = self.mix("--overwrite", "--cover", "cover.jpg", self.song, self.voice, "mix.mp3",
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(status, 0, errors)
        self.assertRegex(errors, "without tags")
        self.assertTrue((self.dir / "mix.mp3").read_bytes() == sound)
        self.assertEqual(list(self.dir.glob(".melvane*")), [])


class BadInputTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.song, self.voice = self.wav("song.wav", 20000), self.wav("voice.wav", 1000)

    def digests(self):
        return {file.name: hashlib.sha256(file.read_bytes()).digest() for file in self.dir.iterdir() if file.is_file()}

    def test_what_cannot_be_mixed_is_named_and_nothing_changes(self):
        (self.dir / "text.mp3").write_bytes(b"La la la\n" * 5000)
        (self.dir / "bare.wav").write_bytes(self.voice.read_bytes()[:44])
        (self.dir / "old.mp3").write_bytes(b"precious")
        (self.dir / "hard.wav").hardlink_to(self.voice)
        for link, target in (("link.wav", "song.wav"), ("here", "."), ("full.mp3", "/dev/full")):
            (self.dir / link).symlink_to(target)
        taken = self.folder("taken.mp3")
        os.mkfifo(self.dir / "pipe.mp3")
        cases = [(["song.wav", "voice.wav", "old.mp3"], "old.mp3 exists.*--overwrite"),
                 (["--overwrite", "none.mp3", "voice.wav", "old.mp3"], "none.mp3")]
        for name in ("text.mp3", "bare.wav", "missing.mp3", "taken.mp3", "pipe.mp3", "/dev/null"):
            cases += [([name, "voice.wav", "mix.mp3"], f"background.*{name}$"),
                      (["song.wav", name, "mix.mp3"], f"vocal.*{name}$")]
        for name in ("song.wav", "home/../song.wav", "hard.wav", "link.wav", "here/voice.wav"):
            cases += [(["song.wav", "voice.wav", name], "exists already"),
                      (["--overwrite", "song.wav", "voice.wav", name], "destination is one of the source files")]
        for name in ("nowhere/mix.mp3", "taken.mp3", "full.mp3", "pipe.mp3", "x" * 300, "home/", ""):
            cases.append((["--overwrite", "song.wav", "voice.wav", name], f"{name}$"))
        before = self.digests()
        for arguments, says in cases:
            with self.subTest(arguments=arguments):
                self.expect_refused(*arguments, says=says)
                left = [file for folder in (taken, self.home) for file in folder.rglob("*") if file.is_file()]
                self.assertEqual((self.digests(), left), (before, []))
        self.expect_mixed("--overwrite", self.song, self.voice, "old.mp3")
        self.assertAlmostEqual(len(self.decode(self.dir / "old.mp3")) // 4, 20000, delta=1152)

    def test_source_that_can_no_longer_be_read_is_named(self):
        for broken in ("song.wav", "voice.wav"):
            song, voice = self.wav("song.wav", LONG), self.wav("voice.wav", LONG)
            path = self.encoder(f'truncate -s 1200000 "{self.dir / broken}"; exec cat > "$last"')
            self.expect_refused(song, voice, self.dir / f"{broken}.mp3", path=path, says=broken)


    def test_one_of_many_runs_writes_a_file(self):
        for options, says in (([], "mix.mp3 exists"), (["--overwrite"], "being written")):
            with self.subTest(options=options):
                path = self.encoder(f"while [ ! -e '{self.dir}/go' ]; do sleep 0.01; done; exec lame \"$@\"")
                runs = [self.start(*options, self.song, self.voice, "mix.mp3", path=path) for _ in range(10)]
                wait_until(lambda: sum(run.poll() is None for run in runs) == 1)
                (self.dir / "go").touch()
                ended = sorted(map(self.finish, runs))
                (self.dir / "go").unlink()
                self.assertEqual([status for status, _, _ in ended], [0] + [1] * 9)
                for _, _, errors in ended[1:]:
                    self.assertRegex(errors, says)
                (self.dir / "mix.mp3").unlink()


class InterruptTest(ToolTest):
    def test_interrupted_mix_is_kept(self):
        pcm = noise(RATE) * 240
        song, voice = self.wav("song.wav", pcm=pcm), self.wav("voice.wav", 1000)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for send in (os.kill, os.killpg):
                with self.subTest(signal=number.name, send=send.__name__):
                    mix = self.dir / f"{number.name}-{send.__name__}.mp3"
                    process = self.start("--json", "--volume", "100,0", song, voice, mix, start_new_session=True)
                    while json.loads(process.stdout.readline())["fraction"] < 0.05:
                        pass
                    send(process.pid, number)
                    status, output, errors = self.finish(process)
                    self.assertEqual((status, errors), (128 + number, ""))
                    self.expect_kept(mix, pcm, json.loads(output.splitlines()[-1]))

    def test_part_of_a_mix_never_takes_the_place_of_a_longer_one(self):
        """Neither one that was interrupted nor one that was killed, with its encoder and without."""
        song, voice = self.wav("song.wav", pcm=noise(RATE) * 240), self.wav("voice.wav", 1000)
        mix = self.dir / "mix.mp3"
        lame(song, mix)
        longer = b"ID3\3\0\0\0\0\1\0" + bytes(128) + mix.read_bytes()
        for number, send in ((signal.SIGINT, os.kill), (signal.SIGKILL, os.kill), (signal.SIGKILL, os.killpg)):
            for stood in (longer, None):
                with self.subTest(signal=number.name, send=send.__name__, stood=stood is not None):
                    mix.write_bytes(stood) if stood else mix.unlink()
                    process = self.start("--json", "--overwrite", "--title", "Part", song, voice, mix, start_new_session=True)
                    while json.loads(process.stdout.readline())["fraction"] < 0.05:
                        pass
                    send(process.pid, number)
                    _, output, errors = self.finish(process)
                    kept = self.dir / "mix (part).mp3" if stood or number == signal.SIGKILL else mix
                    if number == signal.SIGKILL:
                        status, errors = self.mix(voice, voice, "next.mp3")
                        self.assertEqual((status, errors.count(str(kept))), (0, 1), errors)
                        (self.dir / "next.mp3").unlink()
                    else:
                        self.assertEqual(json.loads(output.splitlines()[-1])["destination"], str(kept))
                    self.assertGreater(len(self.decode(kept)), RATE)
                    self.assertEqual(kept.read_bytes().startswith(b"ID3"), number != signal.SIGKILL)
                    kept.unlink()
                    self.assertEqual(mix.read_bytes() if mix.exists() else None, stood)
                    mix.write_bytes(longer)
                    self.assertEqual(self.files(), [str(self.dir / n) for n in ("decoded.wav", "mix.mp3", "song.wav", "voice.wav")])

    def test_run_that_is_stopped_before_its_first_frame_leaves_nothing(self):
        song, voice = self.wav("song.wav", LONG), self.wav("voice.wav", 1000)
        old = self.dir / "old.mp3"
        old.write_text("precious")
        for name in ("mix.mp3", "old.mp3"):
            process = self.start("--overwrite", song, voice, name, path=self.encoder("kill -TERM $PPID; exec cat > $last"))
            status, _, errors = self.finish(process)
            self.assertIn(status, (1, 143))
            self.assertRegex(errors, "before anything was mixed|encoder")
            self.assertEqual(old.read_text(), "precious")
            self.assertEqual(sorted(file.name for file in self.dir.glob("*.mp3")), ["old.mp3"])

    def expect_kept(self, mix, pcm, result):
        self.assertEqual((result["event"], result["status"]), ("result", "interrupted"))
        frames = result["frames"]
        self.assertTrue(0 < frames < len(pcm) // 4, frames)
        wanted = self.dir / "wanted.mp3"
        lame(*PRESET, wanted, input=STREAMED_HEADER + pcm[:frames * 4])
        self.assertEqual(mix.read_bytes(), wanted.read_bytes())
        self.assertEqual(len(self.decode(mix)), frames * 4)

    def test_interrupt_ends_an_opening(self):
        self.wav("song.wav", RATE)
        lame(self.dir / "song.wav", self.dir / "endless.mp3")
        os.truncate(self.dir / "endless.mp3", 1 << 40)
        process = self.start(self.dir / "endless.mp3", self.wav("voice.wav", RATE), self.dir / "mix.mp3")
        time.sleep(1)
        process.send_signal(signal.SIGINT)
        status, _, errors = self.finish(process)
        self.assertEqual((status, errors), (128 + signal.SIGINT, "melvane-mix: interrupted before the mix began\n"))


class CommandLineTest(ToolTest):
    def test_wrong_usage_is_explained(self):
        for arguments, says in ((["--volume=101,1", "song.wav", "voice.wav", "mix.mp3"], "--volume .*0 to 100"),
                                ([], "BACKGROUND, VOCAL and DESTINATION"), (["--", "--help"], "BACKGROUND")):
            with self.subTest(arguments=arguments):
                status, errors = self.mix(*arguments)
                self.assertEqual(status, 2)
                self.assertRegex(errors, r"\Amelvane-mix: [^\n]*" + says + r"[^\n]*\nTry melvane-mix --help\.\n\Z")

    def test_help_and_version(self):
        for option, says in (("--help", r"\AUsage: .*--volume.*0 to 100.*--overwrite.*--json"),
                             ("--version", r"\Amelvane-mix \d+\.\d+\.\d+\n\Z")):
            with self.subTest(option=option):
                status, output, errors = self.finish(self.start(option))
                self.assertEqual((status, errors), (0, ""))
                self.assertRegex(output, re.compile(says, re.DOTALL))

    def test_json_lines(self):
        frames = 20 * RATE
        song, voice = self.wav("song.wav", frames), self.wav("voice.wav", 1000)
        name = 'zażółć "カ".mp3'
        status, output, errors = self.finish(self.start("--json", "--quiet", song, voice, name))
        self.assertEqual((status, errors), (0, ""))
        *progress, result = map(json.loads, output.splitlines())
        loudness = {key: result.pop(key) for key in ("lufs", "range_lu", "true_peak_db")}
        self.assertTrue(-40 < loudness["lufs"] < 0 <= loudness["range_lu"], loudness)
        self.assertEqual(result, {"event": "result", "status": "done", "destination": name, "frames": frames,
                                  "seconds": 20})
        self.assertEqual({(line["event"], line["length"]) for line in progress}, {("progress", 20)})
        positions = [line["position"] for line in progress]
        self.assertEqual(positions, sorted(positions))
        for line in progress:
            self.assertAlmostEqual(line["fraction"], line["position"] / 20)
        status, output, errors = self.finish(self.start("--json", song, "none.wav", "other.mp3"))
        self.assertEqual((status, errors.count("\n")), (1, 1))
        result, = map(json.loads, output.splitlines())
        self.assertEqual((result["event"], result["status"]), ("result", "failed"))
        self.assertIn("none.wav", result["message"])

    def test_bar_is_for_terminals_and_not_for_quiet(self):
        song, voice = self.wav("song.wav", RATE), self.wav("voice.wav", 1000)
        for options, says in (([], r"\[#{40}\] 100 %  0:01"), (["--quiet"], r"\A\Z")):
            with self.subTest(options=options):
                terminal, side = pty.openpty()
                process = self.start("--overwrite", *options, song, voice, "mix.mp3", stderr=side)
                os.close(side)
                self.assertEqual(process.communicate(timeout=HANG)[0], b"")
                shown = b""
                with contextlib.suppress(OSError):  # at its end
                    while True:
                        shown += os.read(terminal, 65536)
                os.close(terminal)
                self.assertEqual(process.returncode, 0)
                self.assertRegex(shown.decode(), says)


if __name__ == "__main__":
    MIX = str(Path(sys.argv.pop(1), MIX).resolve())
    unittest.main()
