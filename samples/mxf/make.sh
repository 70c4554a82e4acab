#!/usr/bin/env bash
# OP1a with MPEG-2, JPEG 2000, DV and D-10 and OP-Atom with DNxHD, by ffmpeg: a few frames. Where the format
# knows large pictures only, the file is cut.
set -euo pipefail
cd "$(dirname "$0")"

clip() { ffmpeg -v error -y -f lavfi -i "testsrc=size=$1:rate=25" -f lavfi -i sine=440:r=48000 -t "$2" -fflags +bitexact -flags +bitexact -map_metadata -1 "${@:3}"; }
clip 128x96 0.12 -c:v mpeg2video -b:v 300k -c:a pcm_s16le op1a-mpeg2.mxf
clip 64x48 0.12 -an -c:v jpeg2000 -pix_fmt yuv422p op1a-jpeg2000.mxf
clip 720x576 0.04 -an -c:v dvvideo -pix_fmt yuv420p -s 720x576 -aspect 4:3 dv.mxf
ffmpeg -v error -y -f lavfi -i color=gray:size=1280x720:rate=25 -t 0.04 -c:v dnxhd -b:v 60M -pix_fmt yuv422p \
    -fflags +bitexact -flags +bitexact -f mxf_opatom op-atom-dnxhd.mxf
ffmpeg -v error -y -f lavfi -i color=gray:size=720x576:rate=25 -f lavfi -i sine=440:r=48000 -t 0.08 -c:v mpeg2video -r 25 \
    -pix_fmt yuv422p -b:v 30000k -minrate 30000k -maxrate 30000k -bufsize 1200000 -rc_init_occupancy 1200000 -intra_vlc 1 \
    -non_linear_quant 1 -dc 10 -qmin 1 -qmax 12 -g 0 -rc_max_vbv_use 1 -ps 1 -flags +low_delay+ildct+bitexact -top 1 \
    -c:a pcm_s16le -ac 2 -fflags +bitexact -f mxf_d10 d10.mxf

cut() { head -c "$2" "$1" >cut.tmp && mv cut.tmp "$1"; }
cut op-atom-dnxhd.mxf 24000
cut d10.mxf 24000
