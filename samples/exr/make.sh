#!/usr/bin/env bash
# OpenEXR by ffmpeg, by the openexr tools (tiles, a preview, a wavelet compression) and by ImageMagick.
set -euo pipefail
cd "$(dirname "$0")"

frame() { ffmpeg -v error -y -f lavfi -i testsrc=size=40x30 -frames:v 1 -fflags +bitexact -flags +bitexact "$@"; }
frame -pix_fmt gbrpf32le -compression none uncompressed.exr
frame -pix_fmt gbrapf32le -compression zip16 alpha-zip.exr
exrmaketiled -t 16 16 -m uncompressed.exr tiled.exr
exrmakepreview -w 8 alpha-zip.exr preview.exr
exrstdattr -framesPerSecond 24 1 -owner 'the second unit' -expTime 0.02 -whiteLuminance 100 \
    alpha-zip.exr attributes.exr
