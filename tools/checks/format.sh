#!/usr/bin/env bash
# Every C++ file of the project is formatted by .clang-format. Usage: format.sh ROOT
set -euo pipefail
cd "$1"
find engine sdk platform gui presets midi plugin editor resources tools tests bench \
  \( -name '*.h' -o -name '*.cpp' \) -print0 2>/dev/null | xargs -0 clang-format --dry-run --Werror
echo "format: clean"
