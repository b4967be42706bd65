#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# A shared object shows its entries and nothing else. Usage: exports.sh FILE.so NAME...
set -euo pipefail
file=$1
shift
seen=$(nm -D --defined-only "$file" | awk '{ print $NF }' | sort | xargs)
wanted=$(printf '%s\n' "$@" | sort | xargs)
[ "$seen" = "$wanted" ] || { echo "$file exports '$seen', wanted is '$wanted'"; exit 1; }
echo "exports: $seen"
