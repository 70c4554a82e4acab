#!/usr/bin/env bash
# QuickTime movies by ffmpeg: one for each kind of track, and one in fragments.
set -euo pipefail
cd "$(dirname "$0")"

exact=(-fflags +bitexact -flags +bitexact -map_metadata -1)
picture() { printf 'testsrc=size=%s:rate=25:duration=%s' "$1" "$2"; }
tone() { printf 'sine=frequency=440:sample_rate=%s:duration=%s' "$1" "$2"; }
movie() { ffmpeg -v error -y "$@"; }

movie -f lavfi -i "$(picture 64x48 0.08)" -c:v prores_ks -profile:v hq -pix_fmt yuv422p10le \
    -color_primaries bt709 -color_trc bt709 -colorspace bt709 -timecode 01:02:03:04 "${exact[@]}" prores-timecode.mov
movie -f lavfi -i "$(picture 64x48 0.4)" -f lavfi -i "$(tone 48000 0.4)" -c:v libx264 -threads 1 -bf 2 \
    -c:a aac -ac 2 "${exact[@]}" h264-aac.mov
movie -f lavfi -i "$(picture 16x8 0.08)" -f lavfi -i "$(tone 8000 0.08)" -c:v rawvideo -pix_fmt uyvy422 \
    -c:a pcm_f32be -aspect 4:3 -movflags +faststart "${exact[@]}" uyvy-float.mov
movie -f lavfi -i "$(picture 32x24 0.12)" -f lavfi -i "$(tone 22050 0.12)" -c:v mjpeg -pix_fmt yuvj422p \
    -c:a pcm_s16le -metadata title='Harbour, take 3' "${exact[@]}" -f mov mjpeg.qt
movie -f lavfi -i "$(picture 32x24 0.2)" -c:v mpeg4 -g 2 -movflags +frag_keyframe+empty_moov "${exact[@]}" \
    fragments.mov
