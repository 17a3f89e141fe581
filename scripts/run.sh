#!/usr/bin/env bash
# Sets everything up, builds, and starts the suite on the simulated host with
# its console. Extra arguments go to marrowvane (e.g. --settings-dir DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "run: no display here; starting the suite on a virtual screen (xvfb-run)."
  exec xvfb-run -a ./build/src/app/marrowvane "$@"
fi
exec ./build/src/app/marrowvane "$@"
