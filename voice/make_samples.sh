#!/usr/bin/env bash
# Builds the sample beacon files the DTMF player offers out of the box:
#   Chime.wav    a rising three-note chime (sox), about 1.3 s
#   Beacon.wav   the chime, then "This is a Marrowvane beacon." (espeak-ng)
#   Welcome.wav  a short spoken welcome to the node (espeak-ng)
# Usage: make_samples.sh OUTPUT_FOLDER
set -euo pipefail
source "$(dirname "$0")/sound_common.sh" "$1"
note() {
  local file="$1" freq="$2" len="$3"
  sox -n -r "$rate" -c 1 -b 16 "$file" synth "$len" sine "$freq" fade q 0.01 "$len" 0.25 gain -4
}

note "$tmp/n1.wav" 523.25 0.35
note "$tmp/n2.wav" 659.25 0.35
note "$tmp/n3.wav" 783.99 0.6
sox "$tmp/n1.wav" "$tmp/n2.wav" "$tmp/n3.wav" "$tmp/chime.wav"
trim_edges "$tmp/chime.wav" "$out/Chime.wav"

say "$tmp/beacon_words.wav" "This is a Marrowvane beacon."
sox -n -r "$rate" -c 1 -b 16 "$tmp/gap.wav" trim 0 0.2
sox "$out/Chime.wav" "$tmp/gap.wav" "$tmp/beacon_words.wav" "$out/Beacon.wav"

say "$out/Welcome.wav" "Welcome to the node. Send a D T M F code to hear a beacon."
