#!/usr/bin/env bash
# Idle cost of a node left alone: runs the headless suite (a real-time scenario
# with nothing in it), the desktop suite (under Xvfb, hub and host console
# shown) and the desktop suite with every window loaded and shown (--show all),
# each with fresh settings, lets each settle, then reads over a wall-clock
# window, from /proc: CPU time as % of one core, wakeups a second (context
# switches of all its threads, voluntary and not) and peak resident memory,
# and what the resident memory is made of, by kind of mapping. Beside the
# desktop it sets what Qt alone costs with windows of the same sizes
# (bench/gui/bare_qt_windows, empty and full of the suite's kinds of control).
#
# usage: bench/idle_cost.sh [path/to/marrowvane] [seconds]   (default 60 s each)
#        MV_BARE_QT=path/to/bare_qt_windows when it is not in the build tree
#        beside marrowvane (build/bench/gui/).
# Goals: headless <= 0.08 % and <= 15 MB; desktop < 0.5 % and < 40 MB;
# desktop with every window shown < 2 %.
# The talking clock announces on the quarter hour by default: a window that
# holds one measures an announcement, not an idle node. Start just after one
# (a whole run takes about 7 minutes). A fresh suite connects to its default
# conference a minute after it starts and the ident window announces it, the
# first speech of the run: each suite settles 70 s, past that, so its CPU and
# wakeups are those of the node idling afterwards and its peak memory holds
# the speech voice as a default node's does.
set -euo pipefail

BIN=${1:-build/src/app/marrowvane}
SECONDS_TO_MEASURE=${2:-60}
SUITE_SETTLE=70
SETTLE=5
[ -x "$BIN" ] || { echo "idle_cost: no executable at $BIN" >&2; exit 1; }
BIN=$(realpath "$BIN")

WORK=$(mktemp -d)
PID=
cleanup() {
  if [ -n "$PID" ]; then kill "$PID" 2>/dev/null || true; wait "$PID" 2>/dev/null || true; fi
  rm -rf "$WORK"
}
trap cleanup EXIT

# CPU ticks (user + system) of the whole process: fields 14 and 15 of its stat
# line, counted from after the command name, which may hold blanks.
cpu_ticks() { sed 's/^.*) //' "/proc/$1/stat" | awk '{ print $12 + $13 }'; }

# Context switches of each thread, one "TID COUNT" line per thread: each one
# is a wakeup of that thread.
switches() {
  local t
  for t in /proc/"$1"/task/*; do
    awk -v tid="${t##*/}" '/^(voluntary|nonvoluntary)_ctxt_switches:/ { n += $2 } END { print tid, n + 0 }' \
      "$t/status" 2>/dev/null || true
  done
}

# Wakeups between two samples: a thread's growth, or all of a thread started
# in between. Qt ends idle pool threads after 30 s; what they did before the
# second sample is lost, so the figure can only fall short.
wakeups_between() {
  awk 'NR == FNR { before[$1] = $2; next } { n += $2 - ($1 in before ? before[$1] : 0) } END { print n + 0 }' "$1" "$2"
}

peak_kb() { awk '/^VmHWM:/ { print $2 }' "/proc/$1/status"; }

# The resident memory of a process by kind of mapping, from its smaps: the
# windows' images it shares with the X server, its heap, thread stacks and
# other anonymous memory, the program's own file, Qt's libraries and plug-ins,
# all other libraries, and other mapped files (fonts, locale, caches).
by_mapping() {
  awk -v exe="$(readlink "/proc/$1/exe")" '
    /^[0-9a-f]+-[0-9a-f]+ / {
      perms = $2; name = ""
      for (i = 6; i <= NF; ++i) name = name (i > 6 ? " " : "") $i
      if (perms ~ /s$/ && name ~ /xorg|SYSV/) kind = "x"
      else if (name == "" || name ~ /^\[(heap|stack|anon)/) kind = "anon"
      else if (name == exe) kind = "program"
      else if (name ~ /libQt6|\/qt6\/plugins\//) kind = "qt"
      else if (name ~ /\.so/) kind = "libs"
      else kind = "files"
      next
    }
    /^Rss:/ { kb[kind] += $2; total += $2 }
    END {
      printf "          by mapping (%.1f MB resident): ", total / 1024
      if (kb["x"] > 0) printf "window images shared with X %.1f, ", kb["x"] / 1024
      printf "heap and stacks %.1f, the program %.1f, Qt %.1f, other libraries %.1f, other files %.1f MB\n",
             kb["anon"] / 1024, kb["program"] / 1024, kb["qt"] / 1024, kb["libs"] / 1024, kb["files"] / 1024
    }' "/proc/$1/smaps"
}

# measure NAME: samples $PID over the window and prints one line of figures.
measure() {
  local name=$1 c0 c1 t0 t1 hz
  sleep "$SUITE_SETTLE"
  kill -0 "$PID" 2>/dev/null || {
    echo "idle_cost: $name exited early; its output and the end of its log:" >&2
    cat "$WORK/out.txt" >&2
    tail -n 5 "$WORK/$name.jsonl" >&2 2>/dev/null || true
    exit 1
  }
  hz=$(getconf CLK_TCK)
  t0=$(date +%s.%N); c0=$(cpu_ticks "$PID"); switches "$PID" >"$WORK/switches0"
  sleep "$SECONDS_TO_MEASURE"
  t1=$(date +%s.%N); c1=$(cpu_ticks "$PID"); switches "$PID" >"$WORK/switches1"
  kill -0 "$PID" 2>/dev/null || { echo "idle_cost: $name exited during the measurement" >&2; exit 1; }
  awk -v n="$name" -v c0="$c0" -v c1="$c1" -v w="$(wakeups_between "$WORK/switches0" "$WORK/switches1")" -v hz="$hz" -v t0="$t0" -v t1="$t1" \
      -v kb="$(peak_kb "$PID")" 'BEGIN {
    wall = t1 - t0
    printf "%-9s CPU %.3f%% of one core   wakeups %.1f/s   peak RSS %.1f MB   (%.0f s)\n",
           n, 100 * (c1 - c0) / hz / wall, w / wall, kb / 1024, wall
  }'
  by_mapping "$PID"
  [ -z "${BEFORE_END:-}" ] || "$BEFORE_END"
  kill -TERM "$PID"; wait "$PID" 2>/dev/null || true; PID=
}

# The sizes of the desktop's top-level windows ("1253x852 867x879"), read
# from its X server while it runs; empty without xwininfo (package x11-utils).
WINDOW_SIZES=
desktop_window_sizes() {
  command -v xwininfo >/dev/null || return 0
  WINDOW_SIZES=$(env DISPLAY="$(tr '\0' '\n' <"/proc/$PID/environ" | sed -n 's/^DISPLAY=//p')" \
      XAUTHORITY="$(tr '\0' '\n' <"/proc/$PID/environ" | sed -n 's/^XAUTHORITY=//p')" \
      xwininfo -root -children 2>/dev/null |
    awk '/\("marrowvane/ { for (i = 1; i <= NF; ++i) if ($i ~ /^[0-9]+x[0-9]+\+/) { split($i, g, "+"); print g[1] } }' |
    awk -F x '$1 > 50 && $2 > 50' | paste -sd ' ')
}

# bare_qt WHAT [--controls]: Qt alone showing windows of the desktop's sizes,
# its peak resident memory and what that is made of.
bare_qt() {
  local what=$1 pid= xpid
  shift
  xvfb-run -a -s "-screen 0 1280x1024x24" "$BARE" $WINDOW_SIZES "$@" >"$WORK/bare.txt" 2>&1 &
  xpid=$!
  for _ in $(seq 50); do
    pid=$(pgrep -P "$xpid" -x bare_qt_windows || true)
    [ -n "$pid" ] && break
    sleep 0.1
  done
  [ -n "$pid" ] || { echo "idle_cost: bare_qt_windows did not start" >&2; cat "$WORK/bare.txt" >&2; exit 1; }
  sleep "$SETTLE"
  awk -v w="$what" -v kb="$(peak_kb "$pid")" 'BEGIN { printf "qt alone  %s: peak RSS %.1f MB\n", w, kb / 1024 }'
  by_mapping "$pid"
  kill -TERM "$pid"; wait "$xpid" 2>/dev/null || true
}

# Headless: a real-time run that only waits for its end.
cat >"$WORK/idle.scn" <<EOF
start 2026-01-01 00:00:00
+$((SECONDS_TO_MEASURE + SUITE_SETTLE + 60))s end
EOF
"$BIN" --headless --realtime --scenario "$WORK/idle.scn" --settings-dir "$WORK/headless" \
  --log "$WORK/headless.jsonl" >"$WORK/out.txt" 2>&1 &
PID=$!
measure headless
echo "          log: $(wc -c <"$WORK/headless.jsonl") bytes"

# desktop NAME [OPTION]...: the desktop suite under a virtual X server, so it
# paints as it would on a screen, measured as NAME.
desktop() {
  local name=$1 xpid
  shift
  xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$BIN" --settings-dir "$WORK/$name" --log "$WORK/$name.jsonl" "$@" >"$WORK/out.txt" 2>&1 &
  xpid=$!
  # xvfb-run starts the server, then the suite as its child (marrowvane, which
  # becomes marrowvane-desktop in the same process): measure the suite, found
  # by its process name (a subshell of xvfb-run's own briefly carries the
  # suite's path in its command line).
  for _ in $(seq 50); do
    PID=$(pgrep -P "$xpid" '^marrowvane' || true)
    [ -n "$PID" ] && break
    sleep 0.1
  done
  [ -n "$PID" ] || { echo "idle_cost: the desktop suite did not start" >&2; exit 1; }
  measure "$name"
  wait "$xpid" 2>/dev/null || true
}

# Qt alone with windows of the sizes the plain desktop showed.
qt_alone() {
  BARE=${MV_BARE_QT:-$(dirname "$BIN")/../../bench/gui/bare_qt_windows}
  if [ -z "$WINDOW_SIZES" ]; then
    echo "qt alone  skipped: xwininfo is needed to read the desktop's window sizes (package x11-utils)"
  elif [ ! -x "$BARE" ]; then
    echo "qt alone  skipped: no bare_qt_windows at $BARE (set MV_BARE_QT)"
  else
    bare_qt "empty windows of the desktop's sizes ($WINDOW_SIZES)"
    bare_qt "the same windows full of the suite's kinds of control" --controls
  fi
}

if command -v xvfb-run >/dev/null; then
  BEFORE_END=desktop_window_sizes desktop desktop
  qt_alone
  desktop every-win --show all
else
  echo "desktop   skipped: xvfb-run is needed (package xvfb)"
fi
