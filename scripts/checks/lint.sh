#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Formatting, shell scripts and clang-tidy. Usage: lint.sh ROOT BUILD [MINUTES [PATTERN]]; BUILD is a configured build
# folder of clang. Exit code: that of the first check that failed, 3 if only the time was not enough.
set -euo pipefail
root=$1 build=$2
checks=$(dirname "${BASH_SOURCE[0]}")
cd "$root"
status=0

"$checks/format.sh" "$root" || status=1
if command -v shellcheck >/dev/null; then
  mapfile -t scripts < <(find . \( -path ./build -o -path ./.git \) -prune -o -name '*.sh' -print)
  shellcheck dev .ci/run "${scripts[@]}" || status=1
  [ "$status" -ne 0 ] || echo "shellcheck: clean"
else
  echo "shellcheck: not installed, scripts are not checked"
fi
tidy=0
python3 "$checks/tidy.py" "$root" "$build" ${3:+--limit "$3"} ${4:+--files "$4"} || tidy=$?
[ "$status" -ne 0 ] || status=$tidy
exit "$status"
