#!/usr/bin/env bash
# DPX frames by ffmpeg and by GraphicsMagick and ImageMagick, which fill the film and television headers.
set -euo pipefail
cd "$(dirname "$0")"

frame() { ffmpeg -v error -y -f lavfi -i testsrc=size=32x24 -frames:v 1 -fflags +bitexact -flags +bitexact "$@"; }
frame -pix_fmt rgb24 rgb8-little.dpx
frame -pix_fmt gbrp10be rgb10-big.dpx
frame -pix_fmt gbrp10le rgb10-little.dpx
frame -pix_fmt rgb48be rgb16-big.dpx
frame -pix_fmt rgb48le rgb16-little.dpx

source=source.ppm
trap 'rm -f source.ppm' EXIT
frame "$source"
gm convert "$source" -depth 8 -endian MSB rgb8-big.dpx
gm convert "$source" -depth 10 -endian LSB \
    -define dpx:file.project.name=Harbour -define dpx:file.copyright='free to use' \
    -define dpx:mp.film.manufacturer.id=02 -define dpx:mp.film.type=24 -define dpx:mp.perfs.offset=12 \
    -define dpx:mp.prefix=123456 -define dpx:mp.count=7890 -define dpx:mp.format=Academy \
    -define dpx:mp.frame.position=17 -define dpx:mp.frame.rate=24 -define dpx:mp.slate.info='scene 3, take 1' \
    -define dpx:tv.time.code=01:02:03:04 -define dpx:tv.user.bits=00:00:00:15 \
    -define dpx:tv.frame.rate=24 -define dpx:tv.gamma=2.2 film10-little.dpx
gm convert "$source" -depth 10 -endian MSB -define dpx:mp.film.manufacturer.id=03 -define dpx:mp.film.type=53 \
    -define dpx:mp.prefix=654321 -define dpx:mp.count=0042 -define dpx:mp.perfs.offset=00 film10-big.dpx
