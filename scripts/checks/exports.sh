#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# A library shows its entries and nothing else. Usage: exports.sh FILE NAME..., a shared object or a DLL
set -euo pipefail
file=$1
shift
case "$file" in
  *.dll) seen=$(objdump -p "$file" | awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } NF == 0 { on = 0 } on { print $NF }') ;;
  *) seen=$(nm -D --defined-only "$file" | awk '{ print $NF }') ;;
esac
seen=$(sort <<<"$seen" | xargs)
wanted=$(printf '%s\n' "$@" | sort | xargs)
[ "$seen" = "$wanted" ] || { echo "$file exports '$seen', wanted is '$wanted'"; exit 1; }
echo "exports: $seen"
