#!/usr/bin/env bash
# Makes the demo's films from ffmpeg's test sources. The films are committed; this is how they came.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/media"

film() { ffmpeg -v error -y "$@"; }
film -f lavfi -i testsrc2=s=320x180:r=15:d=12 -f lavfi -i sine=f=440:d=12 \
  -c:v mpeg4 -b:v 150k -c:a mp3 -b:a 48k counting.avi
film -f lavfi -i mandelbrot=s=320x180:r=12 -t 10 -c:v mpeg4 -b:v 180k zoom.avi
film -f lavfi -i testsrc=s=320x180:r=15:d=15 -f lavfi -i sine=f=330:d=15 \
  -c:v libx264 -preset veryslow -crf 30 -c:a aac -b:a 32k clock.mkv
film -f lavfi -i 'life=s=320x180:mold=10:r=12:ratio=0.1:death_color=#C83232:life_color=#00ff00' -t 8 \
  -c:v libx264 -preset veryslow -crf 32 'game of life.mkv'
film -f lavfi -i cellauto=s=320x180:r=12:rule=110 -t 12 \
  -c:v libx264 -preset veryslow -crf 26 -pix_fmt yuv420p automaton.mkv
