#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Valgrind's memcheck reads a short render and the editor, opened, drawn and closed. Usage: memcheck.sh BUILD; BUILD is a
# built folder. Fails on a wrong access, a value that was never set and memory that is lost. Nothing is suppressed.
set -euo pipefail
build=$(readlink -f "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work XDG_DATA_HOME=$work
leaks="definite,possible"
memcheck=(valgrind --quiet --leak-check=full --show-leak-kinds="$leaks" --errors-for-leak-kinds="$leaks" --error-exitcode=9)
brezan=("$build/brezan")
status=0
check() { # NAME COMMAND...
  if "${@:2}"; then echo "memcheck: $1: no error"; else echo "memcheck: $1: FINDING"; status=1; fi
}
"${brezan[@]}" organ "$work/organ.wav" >/dev/null
python3 - "$work/organ.wav" "$work/short.wav" <<'P'
import sys, wave
with wave.open(sys.argv[1], "rb") as whole, wave.open(sys.argv[2], "wb") as short:
    short.setparams(whole.getparams())
    short.writeframes(whole.readframes(2 * whole.getframerate()))
P
check "two seconds rendered" "${memcheck[@]}" "${brezan[@]}" render "$work/short.wav" "$work/out.wav" --set Lever=Tremolo
check "the editor played and closed" xvfb-run -a "${memcheck[@]}" "${brezan[@]}" edit --seconds 5
for scale in 1 1.5 2; do
  check "the editor drawn at $scale" xvfb-run -a "${memcheck[@]}" "${brezan[@]}" screenshot "$work/editor.png" --scale "$scale"
done
check "the controls described" xvfb-run -a "${memcheck[@]}" "${brezan[@]}" edit --describe >"$work/describe"
tail -n 1 "$work/describe"
exit "$status"
