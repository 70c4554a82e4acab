#!/usr/bin/env bash
# Simple image formats by ffmpeg, ImageMagick and netpbm.
set -euo pipefail
cd "$(dirname "$0")"

frame() { ffmpeg -v error -y -f lavfi -i testsrc=size=40x30 -frames:v 1 -fflags +bitexact -flags +bitexact "$@"; }
trap 'rm -f source.ppm' EXIT
frame source.ppm

frame -pix_fmt bgr24 rgb24.bmp
frame -pix_fmt pal8 palette.bmp
convert source.ppm BMP2:core.bmp
# Rows from the top: the height, 30 at offset 22, is negative.
frame -pix_fmt bgr24 -vf vflip -f image2 top-down.bmp
printf '\xe2\xff\xff\xff' | dd of=top-down.bmp bs=1 seek=22 conv=notrunc status=none

frame -pix_fmt bgr24 -rle 0 raw.tga
frame -pix_fmt bgr24 -rle 1 rle.tga
convert source.ppm -colorspace Gray -compress None grey.tga
convert source.ppm -type Palette -compress RLE palette.tga

frame -pix_fmt rgb24 -rle 0 raw.sgi
frame -pix_fmt rgb48be -rle 1 rle16.sgi
pnmtosgi -rle -imagename 'forty by thirty' source.ppm >named.sgi

pnmtoplainpnm -quiet source.ppm >plain.ppm
ppmtopgm -quiet source.ppm >raw.pgm
pnmtoplainpnm -quiet raw.pgm >plain.pgm
pgmtopbm -quiet -threshold raw.pgm >raw.pbm
pnmtoplainpnm -quiet raw.pbm >plain.pbm
cp source.ppm raw.ppm

frame -pix_fmt rgb24 ffmpeg.png
# Ancillary chunks: text, gamma, chromaticities, background, resolution per metre and of unknown unit.
convert source.ppm -define png:exclude-chunks=date,time -density 118x118 -units PixelsPerCentimeter -interlace PNG \
    -background red -set Title 'Forty by thirty' -set comment 'ancillary chunks' -depth 8 \
    -define png:color-type=3 ancillary.png
convert source.ppm -define png:exclude-chunks=all -define png:include-chunks=pHYs -density 4x3 -units Undefined aspect.png
