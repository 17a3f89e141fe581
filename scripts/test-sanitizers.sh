#!/usr/bin/env bash
# Builds the suite with AddressSanitizer and UndefinedBehaviorSanitizer into
# ./build-asan with clang, and runs the whole test suite under them, the fuzz
# targets' fixed runs included. Any report fails the run. Leak reports from
# the libraries under us (Qt's plugin loader, fontconfig, FluidSynth's sound
# font) are listed in tests/sanitizers/lsan.supp; our own code has no entry
# there.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache); fi
# fuzzer-no-link gives the libraries the coverage the fuzz targets steer by;
# the unit tests do not notice it.
# -O1 as the sanitizers' authors advise: several times faster than -O0, with
# every report and stack trace intact.
flags="-O1 -g -fsanitize=address,undefined,fuzzer-no-link -fno-omit-frame-pointer -fno-sanitize-recover=undefined"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DMV_BUILD_BENCH=OFF -DMV_BUILD_FUZZ=ON "${launcher[@]}" \
  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_C_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
cmake --build build-asan -j"$(nproc)"
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="abort_on_error=1:detect_stack_use_after_return=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
# Everything runs many times slower here: the day-long tests (the operator
# monkey's day, the busy node's day) run three hours of it, which still
# walks every path the day does.
export MV_LONG_RUN_HOURS="${MV_LONG_RUN_HOURS:-3}"
export LSAN_OPTIONS="suppressions=$PWD/tests/sanitizers/lsan.supp:print_suppressions=0"
cd build-asan
# The package test makes a .deb of a sanitized build: meaningless here.
ctest --output-on-failure -j"$(nproc)" --timeout 900 -E '^PackageTest\.'
