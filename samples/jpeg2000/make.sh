#!/usr/bin/env bash
# JP2 files and codestreams by openjpeg: tiles, progressions, SOP and EPH, tile-part lengths, lossy coding.
set -euo pipefail
cd "$(dirname "$0")"

ffmpeg -v error -y -f lavfi -i testsrc=size=64x48 -frames:v 1 -pix_fmt rgb24 source.ppm
trap 'rm -f source.ppm' EXIT
jpeg2000() { opj_compress -i source.ppm -n 3 -C kel "$@" >/dev/null; }
jpeg2000 -o plain.jp2
jpeg2000 -o tiles.j2k -t 32,32 -SOP -EPH -p RLCP -r 20,10
jpeg2000 -o lossy.j2k -I -p CPRL -c '[32,32],[16,16]' -b 32,32 -M 48 -r 10
jpeg2000 -o lengths.j2k -t 32,24 -TLM -PLT -TP R -p RPCL
# The codestream as the last box, with the length 0 of one that goes on to the end of the file.
cp plain.jp2 open-end.jp2
at=$(grep -abo jp2c open-end.jp2 | head -n 1 | cut -d: -f1)
printf '\0\0\0\0' | dd of=open-end.jp2 bs=1 seek=$((at - 4)) conv=notrunc status=none
