# Shared by the build-time sound makers (sourced with the output folder as
# its argument): the output and scratch folders, the sample rate of made
# sounds, and the two steps every spoken file takes.
out="$1"
mkdir -p "$out"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
rate=22050
# Cut where the sound begins and ends: recorded words then follow one another
# with no silence of their own, and a beacon keys the transmitter for its
# sound, not for silence at either end.
trim_edges() {
  sox -V1 "$1" -r "$rate" -c 1 -b 16 "$2" silence 1 0.001 0.5% reverse silence 1 0.001 0.5% reverse
}
# say OUTPUT TEXT: TEXT spoken in US English, trimmed.
say() {
  espeak-ng -v en-us -s 150 -w "$tmp/raw.wav" "$2"
  trim_edges "$tmp/raw.wav" "$1"
}
