#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Instructions that not every x86-64 has may stand in the engine's kernels alone, which are chosen while the plug-in runs.
# Usage: instruction_sets.sh FILE, a shared object or a DLL that has its symbols
set -euo pipefail
code=$(objdump -d --no-show-raw-insn "$1")
newer=$(printf '%s\n' "$code" |
  awk '/>:$/ { function_ = $2 } /%[yz]mm[0-9]|\tv[a-z0-9]+ / { print function_ }' | sort -u)
outside=$(grep -v -e 'qlx6engine7kernels12_GLOBAL__N_' -e 'qlx6engine7kernels10four_lanes' <<<"$newer" || true)
if [ -n "$outside" ]; then
  echo "functions outside the kernels that need a newer processor:"
  c++filt <<<"$outside"
  exit 1
fi
# The check itself works only if it sees the kernels.
grep -q hornRays <<<"$newer" || { echo "no kernel for newer processors found in $1"; exit 1; }
# Opmask and 512-bit registers: with AVX-512 alone; whoever has eight lanes has a horn that uses them.
grep -qE '%zmm[0-9]' <<<"$code" || { echo "no kernel with eight lanes found in $1"; exit 1; }
# On Windows the stack is aligned to 16 bytes only: a wider move must not ask for more.
if [[ $1 == *.dll ]]; then
  aligned=$(grep -E $'\tv(movap[sd]|movdqa|movnt[a-z]*) .*%[yz]mm' <<<"$code" || true)
  [ -z "$aligned" ] || { echo "aligned moves of more than 16 bytes:"; head -5 <<<"$aligned"; exit 1; }
fi
echo "instruction sets: newer ones in $(wc -l <<<"$newer") kernel functions only"
