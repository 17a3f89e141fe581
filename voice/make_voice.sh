#!/usr/bin/env bash
# Builds the talking clock's default voice: every word file the clock asks
# for, spoken by espeak-ng in US English, plus two bells and a short silence
# made with sox. Usage: make_voice.sh OUTPUT_FOLDER
set -euo pipefail
source "$(dirname "$0")/sound_common.sh" "$1"
speak() { say "$out/$1.wav" "$2"; }

numbers=(zero one two three four five six seven eight nine ten eleven twelve thirteen fourteen
         fifteen sixteen seventeen eighteen nineteen)
tens=("" "" twenty thirty forty fifty)
for n in $(seq 0 59); do
  if [ "$n" -lt 20 ]; then word="${numbers[$n]}"
  elif [ $((n % 10)) -eq 0 ]; then word="${tens[$((n / 10))]}"
  else word="${tens[$((n / 10))]} ${numbers[$((n % 10))]}"
  fi
  speak "$(printf '%02d' "$n")" "$word"
done

speak TheTimeIs "The time is"
speak Hour "hours"
speak Minutes "minutes"
speak AM "A M"
speak PM "P M"
speak GoodMorning "Good morning"
speak GoodAfternoon "Good afternoon"
speak GoodEvening "Good evening"

# Bells: struck tones that die away. The first falls a third, the second
# rises through three notes.
bell() {
  local file="$1" freq="$2" len="$3"
  local overtone
  overtone="$(awk -v f="$freq" 'BEGIN { printf "%.2f", f * 2.01 }')"
  sox -n -r "$rate" -c 2 -b 16 "$tmp/bell.wav" synth "$len" sine "$freq" sine "$overtone"
  sox -V1 "$tmp/bell.wav" -c 1 "$file" remix 1v0.8,2v0.2 fade q 0.005 "$len" "$len" gain -3
}
bell "$tmp/d1.wav" 659.25 0.45
bell "$tmp/d2.wav" 523.25 0.65
sox "$tmp/d1.wav" "$tmp/d2.wav" "$tmp/dd.wav"
trim_edges "$tmp/dd.wav" "$out/DingDong.wav"
bell "$tmp/e1.wav" 523.25 0.35
bell "$tmp/e2.wav" 659.25 0.35
bell "$tmp/e3.wav" 783.99 0.6
sox "$tmp/e1.wav" "$tmp/e2.wav" "$tmp/e3.wav" "$tmp/dd2.wav"
trim_edges "$tmp/dd2.wav" "$out/DingDong2.wav"

sox -n -r "$rate" -c 1 -b 16 "$out/Blank.wav" trim 0 0.25
