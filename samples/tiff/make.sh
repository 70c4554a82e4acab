#!/usr/bin/env bash
# TIFF in both byte orders and several compressions by ImageMagick, pages by libtiff's tiffcp, a pyramid in
# sub-directories by libvips, EXIF by exiftool.
set -euo pipefail
cd "$(dirname "$0")"

ffmpeg -v error -y -f lavfi -i testsrc=size=32x24 -frames:v 1 -pix_fmt rgb24 source.ppm
trap 'rm -f source.ppm page.tif large.ppm' EXIT
export SOURCE_DATE_EPOCH=0
tiff() { /usr/bin/convert source.ppm +set date:create +set date:modify "$@"; }
tiff -endian LSB -compress none little.tif
tiff -define tiff:endian=msb -compress lzw big-lzw.tif
tiff -define tiff:endian=msb -depth 16 -compress zip -define tiff:rows-per-strip=8 big-16bit.tif
tiff -monochrome -compress group4 -define tiff:fill-order=msb fax.tif
tiff -compress rle page.tif
tiffcp little.tif page.tif pages.tif
ffmpeg -v error -y -f lavfi -i testsrc=size=160x120 -frames:v 1 -pix_fmt rgb24 large.ppm
vips tiffsave large.ppm pyramid.tif --tile --tile-width 64 --tile-height 64 --pyramid --subifd --compression jpeg
tiff -endian LSB -compress none exif.tif
exiftool -q -overwrite_original -Make=Kel -Model='Scan 1' -ExposureTime=1/50 -FNumber=2.8 -ISO=200 \
    -DateTimeOriginal='2026:01:02 03:04:05' -GPSLatitude=48.1 -GPSLatitudeRef=N exif.tif
