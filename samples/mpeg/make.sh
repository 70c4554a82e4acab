#!/usr/bin/env bash
# MPEG-1 and MPEG-2 program streams, elementary streams and a transport stream by ffmpeg, cut to a few KB.
set -euo pipefail
cd "$(dirname "$0")"

stream() {
    ffmpeg -v error -y -f lavfi -i testsrc=size=64x48:rate=25 -f lavfi -i sine=440:r=48000 -t 0.4 \
        -fflags +bitexact -flags +bitexact "$@"
}
stream -c:v mpeg2video -c:a mp2 -f vob program.vob
stream -c:v mpeg1video -c:a mp2 -f mpeg program1.mpg
stream -an -c:v mpeg2video -b:v 200k -t 0.12 video.m2v
stream -an -c:v mpeg1video -b:v 200k -bf 2 -t 0.2 -f mpeg1video video1.m1v
stream -c:v mpeg2video -c:a mp2 -f mpegts transport.ts
cut() { head -c "$2" "$1" >cut.tmp && mv cut.tmp "$1"; }
cut program.vob 16384
cut transport.ts $((188 * 60))
