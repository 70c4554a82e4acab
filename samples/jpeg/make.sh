#!/usr/bin/env bash
# JPEG by libjpeg-turbo (baseline, progressive), EXIF by exiftool.
set -euo pipefail
cd "$(dirname "$0")"

ffmpeg -v error -y -f lavfi -i testsrc=size=32x24 -frames:v 1 -pix_fmt rgb24 source.ppm
trap 'rm -f source.ppm' EXIT
cjpeg -quality 60 -outfile baseline.jpg source.ppm
cjpeg -quality 60 -progressive -restart 1 -outfile progressive.jpg source.ppm
cp baseline.jpg exif.jpg
exiftool -q -overwrite_original -Make=Kel -Model='Scan 1' -ExposureTime=1/50 -FNumber=2.8 \
    -DateTimeOriginal='2026:01:02 03:04:05' -Comment='a frame' exif.jpg
