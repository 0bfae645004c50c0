#!/bin/sh
# Renders the symbols of the style sheet, plain and for doubled pixels. Needs rsvg-convert (package librsvg2-bin).
set -eu
cd "$(dirname "$0")"
for symbol in check dot down tick; do
    rsvg-convert --output "$symbol.png" "$symbol.svg"
    rsvg-convert --zoom 2 --output "$symbol@2x.png" "$symbol.svg"
done
