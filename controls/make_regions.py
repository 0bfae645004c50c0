#!/usr/bin/env python3
"""Writes the outlines of the windows as region resources: regions/101.rgn to 104.rgn.

A resource is an RGNDATA structure, little-endian: header size, type, number of rectangles, size of the rectangles in
bytes, bounding rectangle, rectangles (left, top, right, bottom; the last two exclusive), from top to bottom.
"""

import struct
from pathlib import Path

HEADER_SIZE = 32
RECTANGLES = 1  # The only type there is.

# Rows as (left, right) by the width of the window: the four at the top, of which the last is three pixels high, and
# the seven at the bottom, of one pixel each. Between them the window has its whole width.
ROWS = {
    460: ([(4, 455), (2, 457), (1, 458), (0, 459)],
          [(1, 459), (2, 458), (3, 457), (5, 455), (10, 449), (11, 448), (12, 446)]),
    274: ([(4, 269), (2, 271), (1, 272), (0, 273)],
          [(1, 273), (2, 272), (3, 271), (5, 269), (10, 264), (11, 263), (12, 262)]),
}
SIZES = {101: (460, 196), 102: (460, 210), 103: (274, 146), 104: (274, 174)}
BAND_TOP = 6


def rectangles(width, height):
    upper, lower = ROWS[width]
    for top, (left, right) in enumerate(upper):
        yield left, top, right, BAND_TOP if top == len(upper) - 1 else top + 1
    band_bottom = height - len(lower)
    yield 0, BAND_TOP, width, band_bottom
    for top, (left, right) in enumerate(lower, band_bottom):
        yield left, top, right, top + 1


def resource(width, height):
    data = b"".join(struct.pack("<4i", *rectangle) for rectangle in rectangles(width, height))
    header = struct.pack("<4I", HEADER_SIZE, RECTANGLES, len(data) // 16, len(data))
    return header + struct.pack("<4i", 0, 0, width, height) + data


def main():
    folder = Path(__file__).resolve().parent / "regions"
    for number, size in SIZES.items():
        (folder / f"{number}.rgn").write_bytes(resource(*size))


if __name__ == "__main__":
    main()
