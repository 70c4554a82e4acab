#!/usr/bin/env bash
# A few hundred bytes of a real file for the hex dump and the string search: a PNG with a comment, by ffmpeg.
set -euo pipefail
cd "$(dirname "$0")"
ffmpeg -v error -y -f lavfi -i testsrc=size=32x24 -frames:v 1 -fflags +bitexact -flags +bitexact image.png
