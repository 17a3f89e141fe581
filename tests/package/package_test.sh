#!/usr/bin/env bash
# Makes the Debian package from this build tree, unpacks it into a fresh root
# and runs the installed program from there: it must start headless, find the
# voice and the courtesy tones installed with it, speak the time on the hour
# and play a tone after an over. Also checks that the package carries what an
# operator's system expects of it.
set -euo pipefail
build=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "package test: $*" >&2; exit 1; }

(cd "$build" && cpack -G DEB -B "$work/out" >/dev/null) || fail "cpack could not make the package"
deb=$(ls "$work"/out/marrowvane_*.deb 2>/dev/null | head -n 1)
[ -n "$deb" ] || fail "no .deb was made"

info=$(dpkg-deb -I "$deb")
for want in "Package: marrowvane" "Section: hamradio" "libqt6widgets6" "libsndfile1" \
            "libfluidsynth3" "libportaudio2" "libespeak-ng1" "qt6-qpa-plugins" "espeak-ng-data"; do
  grep -q -- "$want" <<<"$info" || fail "the control file lacks \"$want\""
done

files=$(dpkg-deb -c "$deb" | awk '{print $6}')
for want in ./usr/bin/marrowvane ./usr/libexec/marrowvane/marrowvane-desktop \
            ./usr/share/marrowvane/voice/TheTimeIs.wav \
            ./usr/share/marrowvane/tones/RF.wav ./usr/share/marrowvane/tones/IP.wav \
            ./usr/share/applications/marrowvane.desktop \
            ./usr/share/icons/hicolor/scalable/apps/marrowvane.svg \
            ./usr/share/icons/hicolor/256x256/apps/marrowvane.png \
            ./usr/share/icons/hicolor/16x16/apps/marrowvane.png \
            ./usr/share/icons/hicolor/64x64/apps/marrowvane.png \
            ./usr/share/man/man1/marrowvane.1.gz \
            ./usr/share/metainfo/org.marrowvane.Marrowvane.metainfo.xml \
            ./usr/share/doc/marrowvane/README.md ./usr/share/doc/marrowvane/copyright \
            ./usr/share/doc/marrowvane/changelog.gz; do
  grep -qx -- "$want" <<<"$files" || fail "the package lacks $want"
done

root=$work/root
dpkg-deb -x "$deb" "$root"
prog=$root/usr/bin/marrowvane
"$prog" --version | grep -q "^marrowvane" || fail "--version does not name the program"

cat > "$work/hour.scn" <<'SCN'
start 2026-11-23 13:59:58
14:00:08 set courtesy.OPTION2 True
14:00:09 rx on
14:00:10 rx off
14:00:12 end
SCN
QT_QPA_PLATFORM=offscreen "$prog" --headless --scenario "$work/hour.scn" --log "$work/run.jsonl" \
  --settings-dir "$work/settings" || fail "the installed program did not run the scenario"
voice="$root/usr/share/marrowvane/voice/"
grep -q "\"op\":\"run\",\"path\":\"${voice}TheTimeIs.wav\"" "$work/run.jsonl" \
  || fail "the installed program did not speak the time from its installed voice"
grep -q '"call":"SetPTT","args":\[true\]' "$work/run.jsonl" || fail "the announcement was not keyed"
grep -q "\"op\":\"run\",\"path\":\"$root/usr/share/marrowvane/tones/IP.wav\"" "$work/run.jsonl" \
  || fail "the installed program did not play its installed courtesy tone"
last=$(grep '"call":"SetPTT"' "$work/run.jsonl" | tail -n 1)
grep -q '\[false\]' <<<"$last" || fail "the run ended with the transmitter keyed"

if command -v lintian >/dev/null 2>&1; then
  lintian --fail-on error --suppress-tags-from-file /dev/null "$deb" >"$work/lintian.txt" 2>&1 \
    || { cat "$work/lintian.txt" >&2; fail "lintian reports errors"; }
fi
echo "package test: $(basename "$deb") installs and speaks the time"
