#!/usr/bin/env bash
# Idle cost of the desktop suite: starts marrowvane under Xvfb with fresh
# settings (hub and host console shown, every other module window hidden,
# nothing happening), lets it settle, then reads its CPU time from
# /proc/PID/stat over a wall-clock window and prints it as % of one core.
#
# usage: bench/gui/idle_cpu.sh [path/to/marrowvane] [seconds]   (default 60 s)
set -euo pipefail

BIN=${1:-build-gui/src/app/marrowvane}
SECONDS_TO_MEASURE=${2:-60}
SETTLE=5

if [ -z "${MV_IDLE_CPU_INNER:-}" ]; then
  command -v xvfb-run >/dev/null || { echo "idle_cpu: xvfb-run is needed (package xvfb)" >&2; exit 1; }
  [ -x "$BIN" ] || { echo "idle_cpu: no executable at $BIN" >&2; exit 1; }
  exec env MV_IDLE_CPU_INNER=1 xvfb-run -a "$0" "$(realpath "$BIN")" "$SECONDS_TO_MEASURE"
fi

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
"$BIN" --settings-dir "$WORK/settings" >"$WORK/out.txt" 2>&1 &
PID=$!
trap 'kill "$PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT

cpu_ticks() {
  # Fields 14 and 15 of /proc/PID/stat: user and system time in clock ticks.
  # The command name (field 2) may hold spaces, so count from after its ')'.
  local rest
  rest=$(sed 's/^.*) //' "/proc/$PID/stat")
  awk '{ print $12 + $13 }' <<<"$rest"
}

sleep "$SETTLE"
kill -0 "$PID" 2>/dev/null || { echo "idle_cpu: marrowvane exited early" >&2; cat "$WORK/out.txt" >&2; exit 1; }
HZ=$(getconf CLK_TCK)
t0=$(date +%s.%N)
c0=$(cpu_ticks)
sleep "$SECONDS_TO_MEASURE"
c1=$(cpu_ticks)
t1=$(date +%s.%N)
kill -0 "$PID" 2>/dev/null || { echo "idle_cpu: marrowvane exited during the measurement" >&2; exit 1; }

awk -v c0="$c0" -v c1="$c1" -v hz="$HZ" -v t0="$t0" -v t1="$t1" 'BEGIN {
  cpu = (c1 - c0) / hz; wall = t1 - t0; pct = 100 * cpu / wall;
  printf "idle GUI: %.2f s CPU over %.1f s wall = %.2f%% of one core (target < 2%%)\n", cpu, wall, pct;
  exit (pct < 2.0 ? 0 : 1)
}'
