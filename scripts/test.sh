#!/usr/bin/env bash
# Sets everything up, builds, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh
export QT_QPA_PLATFORM=offscreen
cd build
ctest --output-on-failure -j"$(nproc)" --timeout 600
cd ..
# The same tests again under AddressSanitizer and UndefinedBehaviorSanitizer,
# with each fuzz target's fixed slice.
bash scripts/test-sanitizers.sh
