#!/usr/bin/env python3
"""Lets each fuzz target attack its door for a time, as many at once as there are processors. Tells which of the
program's own files it reached, and what share of their lines. Fails when one finds something, with the file that shows it.

    tests/fuzz/run.py [--seconds N] [--at-once N] [DOOR...]

What was learnt is kept below build/fuzz/doors and used again.
"""

import argparse
import json
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
BUILD = ROOT / "build" / "fuzz"
CORPUS = HERE / "corpus"
DOORS = sorted(folder.name for folder in CORPUS.iterdir())
# An input that takes this long, or this much memory, hangs or floods the program. Fresh memory costs the most time.
LIMITS = ["-max_len=16384", "-timeout=20", "-rss_limit_mb=1024"]
ENVIRONMENT = {"ASAN_OPTIONS": "quarantine_size_mb=16",
               "LSAN_OPTIONS": f"suppressions={HERE / 'lsan.supp'}:print_suppressions=0",
               "TMPDIR": "/dev/shm"}  # settings are made safe on the disk again and again


def run(door, log, profile, *options):
    """The fuzzer's exit status."""
    found = BUILD / "doors" / door / "learnt"
    found.mkdir(parents=True, exist_ok=True)
    environment = os.environ | ENVIRONMENT | {"LLVM_PROFILE_FILE": str(profile)}
    command = [BUILD / f"{door}_fuzz", *LIMITS, *options, f"-artifact_prefix={found.parent}/", found, CORPUS / door]
    with open(found.parent / log, "w", encoding="utf-8") as file:
        return subprocess.run(command, env=environment, stdout=file, stderr=subprocess.STDOUT, check=False).returncode


def covered(door):
    """What everything that was learnt runs of our own files: {file: (lines that ran, all lines)}."""
    folder = BUILD / "doors" / door
    run(door, "coverage.log", folder / "raw", "-runs=0")
    subprocess.run(["llvm-profdata", "merge", "-sparse", folder / "raw", "-o", folder / "profile"], check=True)
    report = subprocess.run(["llvm-cov", "export", "-summary-only", BUILD / f"{door}_fuzz",
                             f"-instr-profile={folder / 'profile'}"], stdout=subprocess.PIPE, check=True).stdout
    lines = {}
    for file in json.loads(report)["data"][0]["files"]:
        path, count = Path(file["filename"]).resolve(), file["summary"]["lines"]
        room = path.relative_to(ROOT).parts[0] if path.is_relative_to(ROOT) else None
        if room not in (None, "build", "tests") and count["covered"]:
            lines[path.relative_to(ROOT)] = count["covered"], count["count"]
    return lines


def attack(door, seconds):
    status = run(door, "attack.log", os.devnull, f"-max_total_time={seconds}")
    log = (BUILD / "doors" / door / "attack.log").read_text(encoding="utf-8", errors="replace").splitlines()
    if status != 0:
        files = [line.split()[-1] for line in log if "Test unit written to" in line]
        return False, f"{door}: FOUND {' '.join(files) or 'something'}, see {BUILD}/doors/{door}/attack.log"
    files = covered(door)
    ran, lines = (sum(count[i] for count in files.values()) for i in (0, 1))
    listed = "".join(f"\n    {100 * part // whole:3} % of {path}" for path, (part, whole) in sorted(files.items()))
    return True, f"{door}: nothing found; {log[-1]}; {100 * ran // lines} % of {lines} lines:{listed}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--at-once", type=int, default=os.cpu_count())
    parser.add_argument("doors", nargs="*", metavar="DOOR", help=", ".join(DOORS))
    arguments = parser.parse_args()
    with ThreadPoolExecutor(arguments.at_once) as pool:
        results = pool.map(lambda door: attack(door, arguments.seconds), arguments.doors or DOORS)
        good = True
        for passed, text in results:
            print(text, flush=True)
            good = good and passed
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
