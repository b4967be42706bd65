#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Runs a test program under Wine. Wine's own processes stay behind, at work for the next program, and would keep a pipe of
# ctest's open; so they get a file instead, whose text is handed on at the end. Usage: under_wine.sh WINE PROGRAM...
set -uo pipefail
text=$(mktemp)
trap 'rm -f "$text"' EXIT
status=0
"$@" </dev/null >"$text" 2>&1 || status=$?
cat "$text"
exit "$status"
