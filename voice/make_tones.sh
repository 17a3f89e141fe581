#!/usr/bin/env bash
# Builds the courtesy module's two default tones with sox, so "Audio" works on
# a new node before anyone records a tone of their own. The RF tone rises in
# two notes, the Internet tone falls in three, so a listener can tell at once
# which side the over came from. Usage: make_tones.sh OUTPUT_FOLDER
set -euo pipefail
source "$(dirname "$0")/sound_common.sh" "$1"
# One soft note: a sine with a touch of its octave, faded in and out so it
# starts and ends without a click.
note() {
  local file="$1" freq="$2" len="$3"
  local octave
  octave="$(awk -v f="$freq" 'BEGIN { printf "%.2f", f * 2 }')"
  sox -n -r "$rate" -c 2 -b 16 "$tmp/n.wav" synth "$len" sine "$freq" sine "$octave"
  sox -V1 "$tmp/n.wav" -c 1 "$file" remix 1v0.85,2v0.15 fade h 0.008 "$len" 0.03 gain -6
}

note "$tmp/r1.wav" 659.25 0.09
note "$tmp/r2.wav" 987.77 0.14
sox "$tmp/r1.wav" "$tmp/r2.wav" "$out/RF.wav"

note "$tmp/i1.wav" 1318.51 0.07
note "$tmp/i2.wav" 1046.50 0.07
note "$tmp/i3.wav" 783.99 0.12
sox "$tmp/i1.wav" "$tmp/i2.wav" "$tmp/i3.wav" "$out/IP.wav"
