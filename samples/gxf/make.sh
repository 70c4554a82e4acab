#!/usr/bin/env bash
# GXF files by ffmpeg: MPEG-2 in 625 lines with an audio track, DV in 525 lines.
set -euo pipefail
cd "$(dirname "$0")"

exact=(-fflags +bitexact -flags +bitexact -map_metadata -1)
ffmpeg -v error -y -f lavfi -i testsrc=size=720x576:rate=25 -f lavfi -i sine=sample_rate=48000 -t 0.2 \
    -c:v mpeg2video -pix_fmt yuv420p -bf 2 -q:v 31 -c:a pcm_s16le -ac 1 "${exact[@]}" -f gxf mpeg2.gxf
ffmpeg -v error -y -f lavfi -i testsrc=size=720x480:rate=30000/1001 -frames:v 1 \
    -c:v dvvideo -pix_fmt yuv411p "${exact[@]}" -f gxf dv.gxf
