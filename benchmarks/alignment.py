#!/usr/bin/env python3
"""Where takes with a song behind the voice are found, and strangers are not: alignment.py BUILD_DIRECTORY [--takes N]

Every fourth take heard the song in another key, from the `rubberband` program, whose engine 2 puts attacks up to 5 ms early
or late and whose engine 3 hardly does; `--keyed` takes only such ones."""

import argparse
import array
import json
import math
import random
import statistics
import subprocess
import sys
import tempfile
import wave
from collections import namedtuple
from pathlib import Path

RATE = 44100
ROOT = Path(__file__).resolve().parent.parent
SONGS = Path("/usr/share/games/openttd/baseset")
SOUNDS = "/usr/share/sounds/sf2/FluidR3_GM.sf2"
READERS = ["en-us+m1", "en-gb+f2", "pl+m3", "en+f4", "en-us+m5", "pl+f1"]
LEAK, NOISE = -40, -50  # dB, against the voice while it sounds
CLOCK = 1000000  # of which a millionth is one part in a million of drift
RIGHT_MS, RIGHT_WITH_KEY_MS, RIGHT_PPM, NEAR_MS = 1, 5, 3, 20
KEYS = [-5, -3, -2, -1, 1, 2, 3, 4, 5]

Take = namedtuple("Take", "song voice offset drift room direct highpass rate codec seconds key")


def ffmpeg(*arguments, **options):
    return subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, **options).stdout


def loudness(file):
    """Root of the mean square of what sounds, of full scale: of the tenths of a second that aren't far below the loudest."""
    samples = array.array("h", ffmpeg("-i", file, "-f", "s16le", "-ac", 1, "-ar", 8000, "-", stdout=subprocess.PIPE))
    tenths = [math.sqrt(sum(s * s for s in samples[i:i + 800:2]) / 400) for i in range(0, len(samples) - 800, 800)]
    sounding = [t for t in tenths if t > max(tenths) / 10]
    return math.sqrt(sum(t * t for t in sounding) / len(sounding)) / 32768


def make_songs(folder):
    for midi in sorted(SONGS.rglob("*.mid")):
        wav, mp3 = folder / "song.wav", folder / f"{midi.stem}.mp3"
        if mp3.exists():
            yield mp3
            continue
        subprocess.run(["fluidsynth", "-ni", "-g", "0.6", "-r", str(RATE), "-F", wav, SOUNDS, midi], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with wave.open(str(wav)) as file:
            long_enough = file.getnframes() > 130 * RATE
        if long_enough:
            subprocess.run(["lame", "--quiet", "-V2", wav, mp3], check=True)
            yield mp3


def make_voices(folder):
    text = (ROOT / "docs/help.en.md").read_text(encoding="utf-8") + (ROOT / "README.md").read_text(encoding="utf-8")
    for n, reader in enumerate(READERS):
        file = folder / f"voice{n}.wav"
        subprocess.run(["espeak-ng", "-v", reader, "-s", str(110 + 10 * n), "-w", file, text[1000 * n:1000 * n + 5000]],
                       check=True)
        yield file
    yield ROOT / "samples/evening-ferry-voice.wav"


def make_room(path, seconds, direct, rng):
    """An answer of a room: the direct sound, and `direct` dB below or above it the sum of what fades by 60 dB."""
    tail = [rng.gauss(0, 1) * 10 ** (-3 * n / RATE / seconds) if n > RATE // 300 else 0 for n in range(int(seconds * RATE))]
    scale = 10 ** (-direct / 20) / math.sqrt(sum(t * t for t in tail))
    samples = array.array("h", [8000] + [max(-32768, min(32767, round(8000 * scale * t))) for t in tail[1:]])
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(samples.tobytes())


def draw(rng, songs, voices):
    return Take(song=rng.choice(songs), voice=rng.choice(voices), offset=round(rng.uniform(-60, 60) * RATE),
                drift=rng.choice([0, 1]) * rng.randint(-100, 100), room=rng.choice([0, 0.3, 0.6, 1]),
                direct=rng.choice([6, 0, -3]), highpass=rng.choice([0, 0, 200]), rate=rng.choice([16000, 44100, 48000]),
                codec=rng.choice(["wav", "m4a"]), seconds=rng.uniform(121, 240), key=0)


def in_key(take, engine, folder):
    """The song as another program plays it in the take's key."""
    plain, heard = folder / "plain.wav", folder / "heard.wav"
    ffmpeg("-i", take.song, plain)
    subprocess.run(["rubberband", "-q", f"-{engine}", "-p", str(take.key), plain, heard], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return heard


def record(take, heard, folder, levels, rng, leaks=True):
    """What a microphone beside the singer makes of it: `heard` is the file that plays."""
    leak = folder / "leak.wav"
    place = f"adelay={take.offset}S" if take.offset > 0 else f"atrim=start_sample={-take.offset},asetpts=PTS-STARTPTS"
    make_room(folder / "room.wav", max(take.room, 0.1), take.direct if take.room else 60, rng)
    chain = f"[0]aresample={RATE},pan=mono|c0=0.5*c0+0.5*c1,{place}[s];[s][1]afir=gtype=none"
    ffmpeg("-i", heard, "-i", folder / "room.wav", "-filter_complex",
           chain + (f",highpass=f={take.highpass}" if take.highpass else ""), "-c:a", "pcm_f32le", leak)
    voice = 0.1 / levels[take.voice]
    song = 0.1 * 10 ** (LEAK / 20) / loudness(leak) if leaks else 0
    noise = 0.1 * 10 ** (NOISE / 20) * math.sqrt(3)
    drift = f"asetrate={CLOCK},aresample={CLOCK + take.drift}:resampler=soxr:precision=28,asetrate={RATE},"
    graph = (f"[0]aresample={RATE},pan=mono|c0=c0,volume={voice}:precision=double[v];[1]volume={song}:precision=double[l];"
             f"anoisesrc=a={noise}:r={RATE}:seed={rng.randrange(2 ** 31)}[n];"
             f"[v][l][n]amix=inputs=3:duration=longest:normalize=0,atrim=end={take.seconds},"
             f"{drift if take.drift else ''}aresample={take.rate}:resampler=soxr")
    file, wav = folder / f"take.{take.codec}", folder / "take.wav"
    ffmpeg("-stream_loop", -1, "-ss", rng.uniform(0, 60), "-t", take.seconds + 1, "-i", take.voice, "-i", leak,
           "-filter_complex", graph, "-ac", 1, "-b:a", "128k", file)
    if file != wav:
        ffmpeg("-i", file, wav)
    return wav


def find(mixer, song, voice, key=0):
    done = subprocess.run([mixer, "--find-sync", "--json", "--key", str(key), song, voice], capture_output=True)
    return json.loads(done.stdout) if done.returncode == 0 else None


def is_right(take, found):
    limit = RIGHT_WITH_KEY_MS if take.key else RIGHT_MS
    return (found is not None and abs(found["sync"] - take.offset / RATE) * 1000 <= limit
            and abs(found["drift_ppm"] - take.drift) <= RIGHT_PPM)


class Counts:
    """Of some of the takes."""

    def __init__(self):
        self.takes = self.right = self.timely = self.near = self.none = self.strangers = self.accepted = 0
        self.errors, self.drifts = [], []

    def add(self, take, found, stranger):
        self.takes += 1
        self.strangers += 1
        self.accepted += stranger is not None
        if found is None:
            self.none += 1
            return
        error = abs(found["sync"] - take.offset / RATE) * 1000
        self.right += is_right(take, found)
        self.timely += error <= (RIGHT_WITH_KEY_MS if take.key else RIGHT_MS)
        self.near += error <= NEAR_MS
        if error <= NEAR_MS:
            self.errors.append(error)
            self.drifts.append(abs(found["drift_ppm"] - take.drift))

    def told(self):
        middle = [statistics.median(values) if values else math.nan for values in (self.errors, self.drifts)]
        return (f"{self.takes:5d} {self.right:6d} {self.timely:8d} {self.near:8d} {self.none:5d} "
                f"{self.takes - self.near - self.none:6d} {middle[0]:7.2f} ms {middle[1]:6.2f} ppm | {self.accepted} of {self.strangers}")


def told(found, take):
    if not found:
        return "         none"
    return (f"{(found['sync'] - take.offset / RATE) * 1000:8.2f} ms {found['drift_ppm'] - take.drift:6.2f} ppm "
            f"{found['certainty']:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--takes", type=int, default=100)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--keyed", action="store_true", help="only takes in another key")
    parser.add_argument("--songs", type=Path, help="where the songs are, or are to stay")
    options = parser.parse_args()
    mixer = options.build.resolve() / "melvane-mix"
    with tempfile.TemporaryDirectory(prefix="melvane-alignment-") as name:
        folder = Path(name)
        songs, voices = list(make_songs(options.songs or folder)), list(make_voices(folder))
        levels = {voice: loudness(voice) for voice in voices}
        counts = {name: Counts() for name in ("no key", "engine 2", "engine 3")}
        print(" n  begins    drift key  room direct   cut   Hz    as  length |    error             certainty | stranger")
        for n in range(options.first, options.first + options.takes):
            rng = random.Random(n)
            take = draw(rng, songs, voices)
            heard, kind = take.song, "no key"
            if options.keyed or n % 4 == 3:
                engine = 2 + (n if options.keyed else n // 4) % 2
                take = take._replace(key=rng.choice(KEYS))
                heard, kind = in_key(take, engine, folder), f"engine {engine}"
            wav = record(take, heard, folder, levels, rng)
            found = find(mixer, take.song, wav, take.key)
            other = rng.choice([song for song in songs if song != take.song])
            if rng.random() < 0.5:  # a stranger is another song, or a voice without one
                other, wav = take.song, record(take, heard, folder, levels, rng, leaks=False)
            stranger = find(mixer, other, wav, take.key)
            counts[kind].add(take, found, stranger)
            print(f"{n:2d} {take.offset / RATE:7.2f} s {take.drift:4d} ppm {take.key:3d} {take.room:.1f} s {take.direct:3d} dB {take.highpass:4d} "
                  f"{take.rate:5d} {take.codec} {take.seconds:5.0f} s | {told(found, take)}{'' if is_right(take, found) else ' WRONG'}"
                  f" | {'ACCEPTED ' + str(stranger) if stranger else 'none'} | {take.song.stem}", flush=True)
        print(f"\n          takes  right  in time  <{NEAR_MS} ms  none  wrong     middle error     | strangers accepted")
        for kind, count in counts.items():
            if count.takes:
                print(f"{kind:9} {count.told()}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
