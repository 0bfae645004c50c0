#!/bin/sh
# Renders the icons of the program and of its jobs at their usual sizes. Needs rsvg-convert (package librsvg2-bin).
set -eu
cd "$(dirname "$0")"
mkdir -p job
for side in 16 22 24 32 48 64 96 128 256 512; do
    rsvg-convert --width "$side" --height "$side" --output "$side.png" melvane.svg
    rsvg-convert --width "$side" --height "$side" --output "job/$side.png" job.svg
done
