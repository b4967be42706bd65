#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Every C++ file of the project is formatted by .clang-format. Usage: format.sh ROOT [-i]; -i formats them.
set -euo pipefail
cd "$1"
mode=(--dry-run --Werror)
[ "${2:-}" != -i ] || mode=(-i)
find . \( -path ./build -o -path ./.git \) -prune -o \( -name '*.h' -o -name '*.cpp' \) -print0 |
  xargs -0 -P "$(nproc)" -n 40 clang-format "${mode[@]}"
echo "format: ${2:+made }clean"
