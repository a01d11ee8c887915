#!/bin/sh
# Renders the icon sources into the PNG files that the build takes. Needs rsvg-convert (librsvg2-bin). Run it
# after a change of an SVG file and commit both.
set -eu
cd "$(dirname "$0")/../src/resources/icons"

for source in [0-9]*.svg; do
    id=${source%.svg}
    rsvg-convert -w 24 -h 24 -o "$id.png" "$source"
    rsvg-convert -w 48 -h 48 -o "$id@2x.png" "$source"
done
for size in 16 32 48 64 128 256; do
    rsvg-convert -w "$size" -h "$size" -o "application-$size.png" application.svg
done
# The icon of the programs of Windows; needs icotool (icoutils).
icotool -c -o application.ico application-16.png application-32.png application-48.png application-64.png \
    --raw=application-256.png
