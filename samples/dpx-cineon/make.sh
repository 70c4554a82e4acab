#!/usr/bin/env bash
# Cineon frames by GraphicsMagick, one with the film header filled.
set -euo pipefail
cd "$(dirname "$0")"

trap 'rm -f source.ppm' EXIT
ffmpeg -v error -y -f lavfi -i testsrc=size=32x24 -frames:v 1 -fflags +bitexact -flags +bitexact source.ppm
gm convert source.ppm plain.cin
gm convert source.ppm -define dpx:source.device.name='a scanner' \
    -define dpx:mp.film.manufacturer.id=02 -define dpx:mp.film.type=24 -define dpx:mp.perfs.offset=12 \
    -define dpx:mp.prefix=123456 -define dpx:mp.count=7890 -define dpx:mp.format=Academy \
    -define dpx:mp.frame.position=17 -define dpx:mp.frame.rate=24 -define dpx:mp.frame.id=hero \
    -define dpx:mp.slate.info='scene 3' film.cin

# The time of writing, in the date and time fields of the file header.
for frame in *.cin; do
    printf '2026:01:02\0\00012:00:00UT\0\0' | dd of="$frame" bs=1 seek=132 conv=notrunc status=none
done
