#!/usr/bin/env bash
# Configures and builds Marrowvane into ./build (Release with debug info).
set -euo pipefail
cd "$(dirname "$0")/.."
# A developer machine with ccache rebuilds much faster; a fresh one builds without.
launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache); fi
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build build -j"$(nproc)"
