#!/usr/bin/env bash
# WAVE with and without the Broadcast Wave extension, RF64 and AVI by ffmpeg, AIFF and AIFF-C by sox and ffmpeg.
set -euo pipefail
cd "$(dirname "$0")"

tone() { ffmpeg -v error -y -f lavfi -i "sine=440:r=48000:d=0.01" -ac 2 -fflags +bitexact -flags +bitexact "$@"; }
tone -c:a pcm_s16le stereo16.wav
tone -c:a pcm_s24le stereo24.wav
tone -c:a pcm_s16le -write_bext 1 -metadata description='harbour, take 1' -metadata originator=recorder \
    -metadata originator_reference=R7 -metadata origination_date=2026-01-02 -metadata origination_time=03:04:05 \
    -metadata time_reference=172800000 broadcast.wav
tone -c:a pcm_s16le -rf64 always large.wav
tone -c:a pcm_s24be stereo24.aiff
tone -c:a pcm_s16le sowt.aifc
sox -D -r 48000 -n -c 1 -b 16 mono16.aiff synth 0.01 sine 440
ffmpeg -v error -y -f lavfi -i testsrc=size=32x24:rate=25 -f lavfi -i sine=440:r=48000 -t 0.08 -c:v mjpeg -c:a pcm_s16le \
    -fflags +bitexact -flags +bitexact picture.avi
