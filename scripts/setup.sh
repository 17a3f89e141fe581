#!/usr/bin/env bash
# Installs the Debian 12 packages Marrowvane needs to build, test and run,
# and any further packages named as arguments (scripts/test-windows.sh names
# the Windows build's). Safe to run again: apt-get skips what is installed.
set -euo pipefail

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

PACKAGES=(
  build-essential cmake pkg-config git
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libsndfile1-dev libfluidsynth-dev timgm6mb-soundfont
  libespeak-ng-dev espeak-ng-data espeak-ng
  portaudio19-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  xvfb xauth sox
  lintian
  clang-14 libclang-rt-14-dev
  "$@"
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
else
  echo "setup: all packages present"
fi
