#!/usr/bin/env bash
# Builds the Windows program with Debian's MinGW-w64, and proves it under
# Wine: registers the host stand-in in a fresh Wine prefix, runs the Windows
# unit tests, then runs the examples and the host-link scenarios through
# marrowvane.exe bound to the stand-in through COM, and compares each run's
# host calls and host events with the Linux program's run of the same
# scenario: the same calls with the same arguments, in the same order, at the
# same virtual times.
#
# Needs the Linux build (./build, as scripts/test.sh leaves it): it supplies
# the sounds made at build time, and the reference runs. Builds into ./build-windows.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
started=$(date +%s)
step() { echo "test-windows: $* ($(( $(date +%s) - started )) s)"; }

# MinGW-w64, widl (and the IDL files it imports from Wine's headers), Wine.
bash scripts/setup.sh g++-mingw-w64-x86-64-posix mingw-w64-tools libwine-dev wine wine64

# The Linux program: the reference runs and the default voice.
bash scripts/build.sh
linux="$root/build/src/app/marrowvane"

step "building for Windows"
launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache); fi
toolchain=()
if [ ! -f build-windows/CMakeCache.txt ]; then toolchain=(-DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake); fi
cmake -S . -B build-windows "${toolchain[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
cmake --build build-windows -j"$(nproc)" --target marrowvane windows_tests marrowvane-host-standin settings_differential
# The Windows program finds its voice, courtesy tones and sample beacons
# where an install puts them, beside its folder.
mkdir -p build-windows/share/marrowvane
for sounds in voice tones samples; do
  ln -sfn "$root/build/share/marrowvane/$sounds" "build-windows/share/marrowvane/$sounds"
done
windows="$root/build-windows/src/app/marrowvane.exe"

work=$(mktemp -d)
export WINEPREFIX="$work/prefix"
export WINEDEBUG=-all
# No .NET or browser engine: Wine would otherwise offer to download them.
export WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY
cleanup() {
  wineserver -k 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

step "making a fresh Wine prefix"
wine wineboot -i >/dev/null 2>&1
wineserver -w
step "registering the host stand-in"
wine regsvr32 /s "$(winepath -w build-windows/bin/marrowvane-host-standin.dll)"

step "running the Windows unit tests"
wine build-windows/bin/windows_tests.exe --gtest_brief=1

step "comparing the settings store with Windows' profile functions"
differential="$root/build/tests/windows/settings_differential/settings_differential"
"$differential" write "$work/settings-cases"
wine build-windows/bin/settings_differential.exe read "$work/settings-cases" "$work/settings-windows.txt"
"$differential" compare "$work/settings-cases" "$work/settings-windows.txt"

# What both runs must share: host calls and host events (queries and repeated
# commands included). Media and speech lines name files and voices that
# differ between the systems.
shared() { grep -E '^\{"t":"[^"]*","kind":"(host|event)"' "$1" || true; }

failed=0
for scenario in examples/*.scn tests/windows/scenarios/*.scn; do
  name=$(basename "$scenario" .scn)
  mkdir -p "$work/$name"
  "$linux" --headless --log-queries --scenario "$scenario" --log "$work/$name/linux.jsonl" \
    --settings-dir "$work/$name/linux-settings"
  wine "$windows" --headless --log-queries --host com --scenario "$scenario" --log "$work/$name/windows.jsonl" \
    --settings-dir "$work/$name/windows-settings"
  shared "$work/$name/linux.jsonl" >"$work/$name/linux.shared"
  shared "$work/$name/windows.jsonl" >"$work/$name/windows.shared"
  calls=$(wc -l <"$work/$name/linux.shared")
  last_ptt=$(grep '"call":"SetPTT"' "$work/$name/windows.jsonl" | tail -n 1 || true)
  if grep -q '"kind":"speech"' "$work/$name/linux.jsonl"; then
    # The Windows build has no speech voice yet: its utterances fail (an
    # error line, nothing keyed), so its timeline parts from the Linux one at
    # the first. It must still end cleanly with the transmitter released.
    if ! tail -n 1 "$work/$name/windows.jsonl" | grep -q '"kind":"end"' || ! grep -q '\[false\]' <<<"$last_ptt"; then
      echo "test-windows: $scenario: the Windows run without a voice did not end cleanly, unkeyed" >&2
      tail -n 5 "$work/$name/windows.jsonl" >&2
      failed=1
    else
      step "$scenario: speaks, so not compared (no voice on Windows yet); ended unkeyed"
    fi
  elif [ "$calls" -eq 0 ]; then
    echo "test-windows: $scenario: the Linux run made no host call at all" >&2
    failed=1
  elif ! diff -u "$work/$name/linux.shared" "$work/$name/windows.shared" >"$work/$name/diff"; then
    echo "test-windows: $scenario: the Windows run differs from the Linux run:" >&2
    head -n 40 "$work/$name/diff" >&2
    failed=1
  elif ! tail -n 1 "$work/$name/windows.jsonl" | grep -q '"kind":"end"'; then
    echo "test-windows: $scenario: the Windows run did not end cleanly" >&2
    tail -n 5 "$work/$name/windows.jsonl" >&2
    failed=1
  else
    step "$scenario: $calls host calls and events alike"
  fi
done

if [ "$failed" -ne 0 ]; then
  echo "test-windows: FAILED" >&2
  exit 1
fi
step "all passed"
