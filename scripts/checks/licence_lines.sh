#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Every source file names its licence in its first two lines. Usage: licence_lines.sh ROOT. Reads git's list of files, or
# where the tree is not a checkout (a source archive) all files outside build/.
set -euo pipefail
cd "$1"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then files=$(git ls-files); else files=$(find . -path ./build -prune -o -type f -print); fi
sources=$(grep -E '(\.(cpp|h|S|py|sh|cmake|map|in)|CMakeLists\.txt|/run|^dev|/dev)$' <<<"$files")
[ "$(wc -l <<<"$sources")" -gt 300 ] || { echo "licence lines: only $(wc -l <<<"$sources") source files found"; exit 1; }
bare=$(while read -r f; do head -n 2 "$f" | grep -q 'SPDX-License-Identifier: ISC' || echo "$f"; done <<<"$sources")
[ -z "$bare" ] || { echo "Without a licence line:"; echo "$bare"; exit 1; }
echo "licence lines: $(wc -l <<<"$sources") files"
