"""What the speed benchmarks share: made-up music, programs that take turns, and a table of what they took."""

import math
import os
import random
import select
import statistics
import subprocess
import time
import wave
from array import array
from pathlib import Path

RATE = 44100
PRESET = ["--alt-preset", "standard"]
LOOK_INTERVAL = 20  # ms
# One second of a 1 Hz tone with overtones: every nth sample of it, over and over, is a tone of n Hz.
TONE = [sum(math.sin(2 * math.pi * k * i / RATE) / k for k in range(1, 13)) for i in range(RATE)]
ROOTS = (110, 131, 147, 165, 175, 196)


def tone(hertz):
    return (TONE * hertz)[::hertz]


def bar(rng, notes, hiss):
    """A second of stereo: a chord that dies away over hiss in two strokes, as loud as it comes."""
    root = rng.choice(ROOTS) * rng.choice((1, 2))
    chord = [tone(round(root * ratio)) for ratio in (1, 1.26, 1.5, 2)[:notes]]
    level = rng.uniform(0.1, 1) * 5000
    strokes = [math.exp(-6 * (i % (RATE // 2)) / RATE) for i in range(RATE)]
    sides = []
    for _ in range(2):
        noise = (rng.uniform(-hiss, hiss) for _ in range(RATE))
        sides.append([round(level * (sum(tones) * 0.5 + n) * stroke)
                      for tones, n, stroke in zip(zip(*chord), noise, strokes)])
    return array("h", (max(-32768, min(32767, s)) for frame in zip(*sides) for s in frame)).tobytes()


def music(seed, minutes, notes, hiss):
    """The seconds of a piece of that length, drawn from a few different bars."""
    rng = random.Random(seed)
    bars = [bar(rng, notes, hiss) for _ in range(16)]
    for _ in range(minutes * 60):
        yield rng.choice(bars)


def write_wav(path, seconds):
    with wave.open(str(path), "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        for second in seconds:
            file.writeframesraw(second)
    return path


def own_peak(pid):
    """The most memory that the process itself has had so far, in MB; 0 when it has ended."""
    for line in Path(f"/proc/{pid}/status").read_text(encoding="ascii").splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) / 1024
    return 0


def measure(command):
    """Wall time and CPU time, the latter with the children, in seconds, and the peak memory of the process alone."""
    began = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL)
    ended = select.poll()
    descriptor = os.pidfd_open(process.pid)
    ended.register(descriptor, select.POLLIN)
    memory = 0
    while not ended.poll(LOOK_INTERVAL):
        memory = max(memory, own_peak(process.pid))
    wall = time.perf_counter() - began
    os.close(descriptor)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        raise SystemExit(f"failed: {' '.join(map(str, command))}")
    return wall, usage.ru_utime + usage.ru_stime, memory


def take_turns(commands, rounds, slow=(), slow_rounds=0):
    """What each command took in each of its rounds, so that a load on the machine meets all of them."""
    results = {name: [] for name in commands}
    for turn in range(rounds):
        for name, command in commands.items():
            if name not in slow or turn < slow_rounds:
                results[name].append(measure(command))
    return results


def spread(values, width):
    text = f"{statistics.median(values):.2f} ({min(values):.2f}..{max(values):.2f})"
    return text.ljust(width)


def print_table(results, base, limits, memory_limit):
    """Medians, also in relation to those of another program: `limits` has (that program, the most in wall time) for
    some of the names; all others are related to `base`."""
    print(f"{'':18}{'wall, s':22}{'relation':28}{'CPU, s':22}{'relation':10}memory, MB (limit {memory_limit})")
    for name, runs in results.items():
        other, limit = limits.get(name, (base, None))
        wall, cpu, memory = zip(*runs)
        other_wall, other_cpu, _ = (statistics.median(column) for column in zip(*results[other]))
        relation = f"{statistics.median(wall) / other_wall:.2f}" + (f" of {other} ({limit})" if limit else "")
        print(f"{name:18}{spread(wall, 22)}{relation:28}{spread(cpu, 22)}{statistics.median(cpu) / other_cpu:<10.2f}"
              f"{max(memory):.1f}")
