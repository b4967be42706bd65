#!/usr/bin/env bash
# clang-tidy over the product's own sources with the repository's settings. Usage: tidy.sh ROOT BUILD [FILE-PATTERN]
# A file whose text, and that of every header below ROOT, is unchanged since it was last found clean is not read again.
set -euo pipefail
root=$1 build=$2 pattern=${3:-.}
cd "$root"
stamps=$build/tidy
mkdir -p "$stamps"
# clang does not know this flag of gcc's.
sed 's/ -fno-gnu-unique//' "$build/compile_commands.json" >"$stamps/compile_commands.json"
headers=$(find engine sdk platform gui presets midi plugin editor resources tools -name '*.h' -print0 | sort -z | xargs -0 cat .clang-tidy | sha256sum | cut -c1-16)
check() {
  local file=$1 stamp
  stamp=$stamps/$(sha256sum "$file" | cut -c1-16)-$headers
  [ -e "$stamp" ] && return 0
  if clang-tidy -p "$stamps" --quiet "$file" 2>"$stamp.err"; then
    touch "$stamp"
  else
    grep -vE 'warnings? generated|Suppressed|Use -header-filter' "$stamp.err" >&2 || true
    return 1
  fi
  rm -f "$stamp.err"
}
export -f check
export stamps headers
find engine sdk platform gui presets midi plugin editor resources tools -name '*.cpp' | grep -E "$pattern" | sort |
  xargs -P "$(nproc)" -I{} bash -c 'check {}'
echo "tidy: clean"
