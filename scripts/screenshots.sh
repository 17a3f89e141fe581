#!/usr/bin/env bash
# Renders every window of the desktop suite offscreen into docs/screenshots/:
# the hub (one picture per tab), each module window this build has, and the
# host console, and the whole screen of a 1366 x 768 laptop as the suite opens
# on it. Uses fresh settings, so the pictures show the design defaults.
#
# usage: scripts/screenshots.sh [build-dir]   (default: build-gui)
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=${1:-$ROOT/build-gui}
OUT=$ROOT/docs/screenshots

cmake -S "$ROOT" -B "$BUILD" >/dev/null
cmake --build "$BUILD" --target marrowvane-screenshots -j2
mkdir -p "$OUT"
QT_QPA_PLATFORM=offscreen "$BUILD/src/gui/marrowvane-screenshots" "$OUT"
QT_QPA_PLATFORM=offscreen "$BUILD/src/gui/marrowvane-screenshots" --desktop "$OUT"
