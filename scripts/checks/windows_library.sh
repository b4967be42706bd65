#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# A DLL needs nothing but what every Windows has, may lie anywhere in 64 bits of memory, never executes data and tells its
# version. Usage: windows_library.sh FILE.dll VERSION
set -euo pipefail
headers=$(objdump -p "$1")
foreign=$(awk '/DLL Name:/ { print tolower($3) }' <<<"$headers" |
  grep -vxE '(advapi32|comdlg32|gdi32|kernel32|msvcrt|ole32|shell32|user32)\.dll' || true)
[ -z "$foreign" ] || { echo "$1 needs ${foreign//$'\n'/, }"; exit 1; }
for mark in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
  grep -q "$mark" <<<"$headers" || { echo "$1 has no mark $mark"; exit 1; }
done
# UTF-16 text, here without its zero bytes.
tr -d '\0' <"$1" | grep -aF "ProductVersion$2" >/dev/null || { echo "$1 doesn't tell that it is version $2"; exit 1; }
echo "Windows library: system libraries only, memory protection, version $2"
