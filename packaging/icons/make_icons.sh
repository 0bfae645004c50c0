#!/bin/sh
# Renders the program's icon at its usual sizes. Needs rsvg-convert (package librsvg2-bin).
set -eu
cd "$(dirname "$0")"
for side in 16 24 32 48 64 128 256; do
    rsvg-convert --width "$side" --height "$side" --output "$side.png" melvane.svg
done
