#!/usr/bin/env bash
# Renders the committed PNG files of resources/images and packaging/icons from the SVG drawings beside them.
# Wants the Debian package librsvg2-bin; run it after changing a drawing.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

for drawing in "$root"/resources/images/*.svg; do
    rsvg-convert --width 36 --height 36 --output "${drawing%.svg}.png" "$drawing"
    rsvg-convert --width 72 --height 72 --output "${drawing%.svg}@2x.png" "$drawing"
done
for size in 16 32 48 64 128 256; do
    rsvg-convert --width "$size" --height "$size" --output "$root/packaging/icons/merix-$size.png" \
        "$root/packaging/icons/merix.svg"
done
