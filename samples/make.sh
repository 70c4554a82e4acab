#!/usr/bin/env bash
# Makes the sample files anew, family by family; each family's make.sh says how. Needs Debian's ffmpeg,
# graphicsmagick, imagemagick, sox, netpbm, libopenjp2-tools, libtiff-tools, libvips-tools, libjpeg-turbo-progs, exiftool and
# openexr. The dumps beside the samples are made by dump.sh.
set -euo pipefail
cd "$(dirname "$0")"
for script in */make.sh; do bash "$script"; done
