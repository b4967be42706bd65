#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# live_xruns.sh BUILD [SECONDS] [FRAMES]: plays `brezan live` for SECONDS (1800) in blocks of FRAMES (256) under a JACK server
# without a sound card, beside a server that runs alone and one with a client that only copies, at the same time, and
# counts what came too late under each. A server alone waits for nobody, so that it is late the least often. Ends with 1
# when the player's was late more often than the copying client's by more than two standard deviations of such counts.
# Needs the package jackd2.
set -euo pipefail
[ $# -ge 1 ] || { echo "usage: live_xruns.sh BUILD [SECONDS] [FRAMES]" >&2; exit 2; }
build=$(readlink -f "$1")
seconds=${2:-1800} frames=${3:-256}
work=$(mktemp -d)
started=()
finish() {
  local i
  # The player before its server; each takes its entries off JACK's lists.
  for ((i = ${#started[@]} - 1; i >= 0; --i)); do
    kill "${started[i]}" 2>/dev/null || true
    wait "${started[i]}" 2>/dev/null || true
  done
  started=()
}
trap 'finish; rm -rf "$work"' EXIT
export JACK_NO_AUDIO_RESERVATION=1 XDG_CONFIG_HOME=$work
server() { # NAME
  jackd -n "$1-$$" -d dummy -r 48000 -p "$frames" >"$work/$1" 2>&1 &
  started+=("$!")
  sleep 2
  kill -0 "$!" 2>/dev/null || { cat "$work/$1" >&2; exit 1; }
}
count() { grep -c "$2" "$work/$1" || true; } # of lines of the server's
server alone
server copied
server played
JACK_DEFAULT_SERVER=copied-$$ jack_thru >/dev/null 2>&1 &
started+=("$!")
JACK_DEFAULT_SERVER=played-$$ "$build/brezan" live --plugin "$build/QLXBrezan.so" --no-window --connect >"$work/player" 2>&1 &
started+=("$!")
sleep "$seconds"
kill -0 "$!" 2>/dev/null || { cat "$work/player" >&2; exit 1; }
finish
grep '^playing\|^played' "$work/player"
grep -h 'real-time' "$work/alone" | head -n 1 || true
alone=$(count alone XRun) copied=$(count copied XRun) played=$(count played XRun)
states() { # NAME: of the server's client
  echo "not begun in time $(count "$1" 'XRun.*Triggered'), not finished $(count "$1" 'XRun.*Running')"
}
echo "xruns in $seconds s: the server alone $alone, with a client that copies $copied ($(states copied))," \
  "with the player $played ($(states played))"
difference=$((played - copied))
[ "$difference" -le 0 ] || [ $((difference * difference)) -le $((4 * (played + copied))) ]
