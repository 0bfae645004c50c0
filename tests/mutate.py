#!/usr/bin/env python3
"""Changes one token of the product at random, builds, and tells whether a test notices: as often as asked.

Works in a copy below build/, with the sources as they are committed. What a test should notice and didn't is printed as
file, line, before and after. Drawing is left out: what a picture looks like is looked at.

    tests/mutate.py [--count N] [--seed N] [ROOM...]
"""

import argparse
import random
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COPY = ROOT / "build" / "mutants"
BUILD = COPY / "build" / "release"
ROOMS = ["app", "audio", "desktop", "effects", "engine", "job", "midi", "music", "player", "settings", "state", "tools"]
DRAWING = re.compile(r"/(frm(?!Main\b|Play|_windows)\w*|MixerStart|mnuHelp\w*|taskbar\w*|own_texts|language_tables|instrument_names)\.")
TOKENS = [  # pattern, what stands there instead
    (r"(?<=[\w)\]] )<(?= [\w(])", "<="), (r"(?<=[\w)\]] )>(?= [\w(])", ">="), (r" <= ", " < "), (r" >= ", " > "),
    (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
    (r"(?<=[\w)]) \+ (?=[\w(])", " - "), (r"(?<=[\w)]) - (?=[\w(])", " + "),
    (r"(?<=[\w)]) \* (?=[\w(])", " / "), (r"(?<=[\w)]) / (?=[\w(])", " * "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"std::min\b", "std::max"), (r"std::max\b", "std::min"),
    (r"(?<![\w.\"'<])[1-9]\d*(?![\w.'\">])", lambda m: str(int(m.group()) + 1)),
    (r"(?<![\w.\"'])\d+\.\d+(?=F?\b)", lambda m: f"{float(m.group()) * 2 or 1.0}"),
]
SLOW = {"tool_test", "midi_tool_test", "program_test", "clocks_test", "midi_ports_test"}
NO_CODE = re.compile(r"^\s*(//|#|template|using|namespace|static_assert)")


def run(*command, seconds=1200):
    try:
        return subprocess.run(command, cwd=COPY, capture_output=True, text=True, timeout=seconds).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def places(rooms):
    """Every token that can be changed: file, line number, start, end, replacement."""
    for room in rooms:
        for path in sorted((COPY / room).rglob("*.cpp")):
            name = path.relative_to(COPY).as_posix()
            if DRAWING.search("/" + name):
                continue
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines()):
                code = line.split(" // ")[0]
                if NO_CODE.match(code):
                    continue
                for pattern, other in TOKENS:
                    for m in re.finditer(pattern, code):
                        yield path, number, m.start(), m.end(), other(m) if callable(other) else other


def changed(line, start, end, other):
    return line[:start] + other + line[end:]


def programs():
    """What the tests run, and when each was made."""
    return {path.name: path.stat().st_mtime_ns for path in BUILD.iterdir()
            if path.is_file() and (path.suffix == ".so" or path.stat().st_mode & 0o111)}


def noticed(before):
    """Whether a test fails, of those that run something made anew since `before`."""
    touched = {name for name, time in programs().items() if before.get(name) != time}
    names = {name for name in touched if name.endswith("_test")}
    if touched - names:
        names |= {"tool_test", "midi_tool_test", "program_test"}
    return fails(names - SLOW) or fails(names & SLOW)


def fails(names):
    return bool(names) and not run("ctest", "--preset", "release", "--parallel", "2", "--stop-on-failure",
                                   "-R", rf"^({'|'.join(sorted(names))})(\.|_2x|$)")


def failed():
    """Names of the tests that failed in the last run."""
    return " ".join((BUILD / "Testing/Temporary/LastTestsFailed.log").read_text(encoding="utf-8").split())


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--count", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("rooms", nargs="*", default=ROOMS)
    options = parser.parse_args()
    if not COPY.exists():
        subprocess.run(["git", "worktree", "add", "--detach", COPY, "HEAD"], cwd=ROOT, check=True)
    head = subprocess.check_output(["git", "rev-parse", "HEAD"], cwd=ROOT, text=True).strip()
    run("git", "checkout", "--force", "--detach", head)
    if not (run("cmake", "--preset", "release") and run("cmake", "--build", "--preset", "release")):
        sys.exit("the copy doesn't build")
    if fails({"\\w+"}):
        sys.exit(f"unchanged sources fail: {failed()}")
    chosen = list(places(options.rooms))
    random.Random(options.seed).shuffle(chosen)
    found = tried = 0
    for path, number, start, end, other in chosen:
        if tried == options.count:
            break
        text = path.read_text(encoding="utf-8")
        lines = text.split("\n")
        old, lines[number] = lines[number], changed(lines[number], start, end, other)
        before = programs()
        path.write_text("\n".join(lines), encoding="utf-8")
        if run("cmake", "--build", "--preset", "release"):
            tried += 1
            caught = noticed(before)
            found += caught
            print(f"{'noticed by ' + failed() if caught else 'UNNOTICED'}: {path.relative_to(COPY)}:{number + 1}\n"
                  f"    - {old.strip()}\n    + {lines[number].strip()}", flush=True)
        path.write_text(text, encoding="utf-8")
        run("cmake", "--build", "--preset", "release")
    print(f"{found} of {tried} noticed ({len(chosen)} places)")


if __name__ == "__main__":
    main()
