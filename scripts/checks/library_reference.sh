#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Compares what the plug-in, built with g++, asks of a system with library_reference.txt: needed libraries, bytes in memory.
# Usage: library_reference.sh QLXBrezan.so [--write]; --write makes the reference anew.
set -euo pipefail
reference=$(dirname "${BASH_SOURCE[0]}")/library_reference.txt
tolerance=5 # per cent of the bytes
found=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/needs \1/p' | LC_ALL=C sort)
bytes=$(size "$1" | awk 'NR == 2 { print $4 }')
if [ "${2:-}" = --write ]; then
  printf '%s\nbytes %s\n' "$found" "$bytes" >"$reference"
  exit
fi
status=0
diff -u --label "$reference" --label "$1" <(grep -v '^bytes ' "$reference") <(printf '%s\n' "$found") || status=1
expected=$(sed -n 's/^bytes //p' "$reference")
if ((bytes * 100 < expected * (100 - tolerance) || bytes * 100 > expected * (100 + tolerance))); then
  echo "$bytes bytes in memory, $expected are expected"
  status=1
fi
[ "$status" -eq 0 ] || echo "If that is meant: scripts/checks/library_reference.sh $1 --write"
exit "$status"
