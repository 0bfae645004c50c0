#!/usr/bin/env python3
"""What the window costs while little happens: idle_cost.py BUILD_DIRECTORY [SECONDS]

Starts the program under Xvfb with a PulseAudio null sink and prints how long the first window took, what an open main
window costs at rest, what drawing costs in a run (the thread of the windows, with the window on the screen and
without), and for how long the window stands still while a song of ten minutes is dropped on it. The limits are printed
beside the figures; nothing fails on them."""

import re
import subprocess
import sys
import time
from pathlib import Path

import live_cost

LONG_SONG = "*ALongSongIsReadBesideTheWindow"


def window_thread_seconds(pid):
    fields = Path(f"/proc/{pid}/task/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / live_cost.TICKS


def window_thread(pid, seconds):
    before, start = window_thread_seconds(pid), time.monotonic()
    time.sleep(seconds)
    return (window_thread_seconds(pid) - before) / (time.monotonic() - start) * 100


def longest_gap(build):
    test = subprocess.run([build / "program_test", f"--gtest_filter={LONG_SONG}"], capture_output=True, text=True)
    found = re.search(r"longest_gap_ms (\d+)", test.stdout)
    return found.group(1) if found and test.returncode == 0 else "?"


def measure(build, folder, seconds):
    sources = live_cost.make_sources(folder, seconds)
    live_cost.start_program(build)[0].kill()  # so that everything is in memory
    program, _, shown = live_cost.start_program(build)
    idle = live_cost.share_of_core(program.pid, 5)
    print(f"first window         {shown:6.2f} s   (limit 0.4)")
    print(f"main window at rest  {idle:6.2f} % of one core (limit 0.0)")
    print(f"memory at rest       {live_cost.memory(program.pid):6.1f} MB (limit 70)")
    program.kill()

    program, window, _ = live_cost.start_program(build, *sources)
    live_cost.start_mix(window)
    drawn = window_thread(program.pid, seconds)
    live_cost.xdotool("windowunmap", window)
    undrawn = window_thread(program.pid, seconds)
    size = max((file.stat().st_size for file in folder.glob("song2.mp3")), default=0)
    print(f"windows in a run     {drawn:6.2f} % of one core, not on the screen {undrawn:.2f} % (difference: limit 2)")
    print(f"the run's file       {size} bytes so far")
    program.kill()
    print(f"standstill           {longest_gap(build):>6} ms at most while a song of ten minutes is read")


if __name__ == "__main__":
    live_cost.main(measure)
