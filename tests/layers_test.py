#!/usr/bin/env python3
"""Fails when an include breaks the layering of the folders.

A file includes from its own folder or from one above it; what stands behind the platform's interfaces is chosen in the
main files alone; and only windows and their controls know Qt. With an argument: checks that folder instead.
"""

import re
import sys
from fnmatch import fnmatch
from pathlib import Path

ROWS = ["base", "platform", "state", "alignment", "tags", "loudness", "controls", "settings", "audio", "effects", "midi", "mixing", "job",
        "rehearsal", "player", "app", "tools"]
ISLANDS = ["engine", "music", "desktop"]
SHARED = ["base", "platform"]  # All that an island sees beside itself.
HEADERS_ONLY = ["base", "platform", "state"]
UNBOUND = ["tests", "benchmarks"]  # May include from everywhere.
CHOOSERS = ["app/main.cpp", "tools/*main*.cpp"]  # May include from the islands.
QT_USERS = ["controls/*", "app/frm*", "app/MixerStart*", "app/main.cpp", "app/program.cpp",
            "effects/frm*", "midi/frm*", "player/frm*", "rehearsal/frm*", "job/job_text.cpp",
            "settings/mnuHelp*", "settings/window_zoom*", "desktop/*", "tools/reporter.cpp", "tests/*", "benchmarks/*"]

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:"([^"]+)"|<(Q[^>]*)>)')


def matches(file, patterns):
    return any(fnmatch(file, pattern) for pattern in patterns)


def folder(file):
    return file.split("/")[0]


def include_fault(file, included):
    """Why `file` may not include `included`, both named from the root; None when it may."""
    own, other = folder(file), folder(included)
    if own == other or own in UNBOUND:
        return None
    if own in ISLANDS:
        return None if other in SHARED else "sees only " + " and ".join(SHARED)
    if other in ISLANDS:
        return None if matches(file, CHOOSERS) else "implementations are chosen in the main files"
    if other not in ROWS:
        return "no folder of the program (includes are written from the root)"
    return "a layer below its own" if ROWS.index(other) > ROWS.index(own) else None


def line_fault(file, line):
    found = INCLUDE.match(line)
    if not found:
        return None
    included, qt = found.groups()
    if qt:
        return None if matches(file, QT_USERS) else "knows no Qt"
    return None if included.endswith(".moc") else include_fault(file, included)


def file_faults(root, file):
    if file.endswith(".cpp") and folder(file) in HEADERS_ONLY:
        yield f"{file}: {folder(file)}/ has headers only"
    for number, line in enumerate((root / file).read_text(encoding="utf-8").splitlines(), 1):
        if fault := line_fault(file, line):
            yield f"{file}:{number}: {line.strip()}: {fault}"


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    files = sorted(path.relative_to(root).as_posix()
                   for top in ROWS + ISLANDS + UNBOUND for path in (root / top).rglob("*") if path.suffix in (".h", ".cpp"))
    faults = [fault for file in files for fault in file_faults(root, file)] if files else [f"no sources in {root}"]
    print("\n".join(faults) if faults else f"{len(files)} files keep the layers")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
