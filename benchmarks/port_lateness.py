#!/usr/bin/env python3
"""How late messages come from a MIDI port against the card's sound: port_lateness.py BUILD_DIRECTORY"""

import re
import subprocess
import sys
from pathlib import Path

SONG = "MidiPorts.PlayASongWhenTheCardDoes"


def main():
    test = subprocess.run([Path(sys.argv[1], "midi_ports_test").resolve(), f"--gtest_filter={SONG}"],
                          capture_output=True, text=True)
    found = re.search(r"late_ms (\S+) (\S+) (\S+)", test.stdout)
    if not found:
        sys.exit(test.stdout + test.stderr)
    early, median, late = map(float, found.groups())
    print(f"10 % {early:.2f} ms   median {median:.2f} ms   90 % {late:.2f} ms")
    if early < -5 or abs(median) > 2 or late > 5:
        sys.exit("beyond the limits")


if __name__ == "__main__":
    main()
