#!/usr/bin/env python3
"""Fails when a source isn't laid out as .clang-format says; `clang-format -i FILE` mends it."""

import subprocess
import sys
from pathlib import Path

root = Path(__file__).resolve().parent.parent
sources = [path.as_posix() for room in root.iterdir() if room.is_dir() and room.name[0] != "." and room.name != "build"
           for path in room.rglob("*") if path.suffix in (".h", ".cpp")]
print(f"{len(sources)} sources")
sys.exit(subprocess.run(["clang-format", "--dry-run", "--Werror", *sources]).returncode if sources else 1)
