#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# install.sh ROOT [--prefix DIR] [--uninstall]: puts the plug-in into ~/.vst or DIR, the manual into the user's data folder
# and the manual's place into the settings, or takes back what it put there. A list in the data folder remembers the files
# with their sums and the folders made for them, so that nothing else is ever replaced or removed.
set -euo pipefail

fail() {
  echo "install: $*" >&2
  exit 1
}

root=$1
shift
folder=
uninstall=no
while [ $# -gt 0 ]; do
  case "$1" in
    --prefix)
      [ $# -ge 2 ] || fail "--prefix needs a folder"
      folder=$2
      shift ;;
    --prefix=*) folder=${1#--prefix=} ;;
    --uninstall) uninstall=yes ;;
    *) fail "unknown option '$1'; known are --prefix DIR and --uninstall" ;;
  esac
  shift
done
home=${HOME:-}
[ -n "$folder" ] || folder=${home:?install: HOME is not set, name a folder with --prefix}/.vst
folder=$(realpath -m -- "$folder")
data=${XDG_DATA_HOME:-}
case "$data" in /*) ;; *) data=${home:?install: HOME is not set}/.local/share ;; esac
data=$(realpath -m -- "$data/qlx-brezan")
config=${XDG_CONFIG_HOME:-}
case "$config" in /*) ;; *) config=${home:?install: HOME is not set}/.config ;; esac
case "$folder$data" in *$'\n'*) fail "a folder's name must not have a new line in it" ;; esac

built=$root/build/release
brezan=$built/brezan
manual=$data/manual.pdf
sources=("$built/QLXBrezan.so" "$built/manual/manual.pdf" "$built/manual/manual.html")
targets=("$folder/QLXBrezan.so" "$manual" "$data/manual.html")
modes=(755 644 644)
[ -x "$brezan" ] || fail "$brezan is not built"

# Lines of the list: "file <sha256> <path>" and "folder <path>"; a file in the middle of being replaced has two.
list=$data/installed
installed() { if [ -f "$list" ]; then cat "$list"; fi; }
sum_of() { sha256sum <"$1" | cut -d' ' -f1; }
is_listed() { installed | grep -qxF -- "$1"; }
is_ours() { [ -f "$1" ] && is_listed "file $(sum_of "$1") $1"; }
# The list without the file at $1.
without() { P=$1 awk '{ p = $0; sub(/^file [0-9a-f]+ /, "", p) } $1 != "file" || p != ENVIRON["P"]'; }

# Folders that making $1 would make, the outermost first.
missing_folders() {
  [ -d "$1" ] && return
  missing_folders "$(dirname -- "$1")"
  printf '%s\n' "$1"
}

store_list() { cat >"$list.new" && mv -f -- "$list.new" "$list"; }

# Until the last step has worked everything can be undone: new files lie beside their targets, copies of old ones too.
made=()
placed=()
list_changed=no
place_set=no
undo() {
  local target i
  if [ "$place_set" = yes ]; then "$brezan" manual --forget "$manual" || true; fi
  for target in "${placed[@]}"; do
    if [ -e "$target.old" ]; then mv -f -- "$target.old" "$target"; else rm -f -- "$target"; fi
  done
  if [ "$list_changed" = yes ]; then
    if [ -e "$list.old" ]; then mv -f -- "$list.old" "$list"; else rm -f -- "$list"; fi
  fi
  for target in "${targets[@]}" "$list"; do rm -f -- "$target.new" "$target.old" 2>/dev/null || true; done
  for ((i = ${#made[@]} - 1; i >= 0; --i)); do rmdir -- "${made[i]}" 2>/dev/null || true; done
}

install_files() {
  local i target place line new
  for i in "${!sources[@]}"; do
    [ -f "${sources[i]}" ] || fail "${sources[i]} is not built"
    target=${targets[i]}
    if [ -e "$target" ] || [ -L "$target" ]; then
      is_ours "$target" || fail "$target is there already and is not what was installed; move it away first"
    fi
  done

  trap undo EXIT
  trap 'exit 130' INT TERM
  for place in "$folder" "$data"; do
    while read -r line; do
      mkdir -- "$line" 2>/dev/null || fail "cannot make the folder $line"
      made+=("$line")
    done < <(missing_folders "$place")
    if ! [ -w "$place" ]; then fail "cannot write into $place"; fi
  done
  while read -r line; do made+=("$line"); done < <(missing_folders "$config/Meridane/QLXBRZ1")
  if [ -f "$list" ]; then cp -- "$list" "$list.old"; fi
  for i in "${!sources[@]}"; do
    install -m "${modes[i]}" -- "${sources[i]}" "${targets[i]}.new" 2>/dev/null ||
      fail "cannot write into $(dirname -- "${targets[i]}")"
  done
  new=$(
    for i in "${!sources[@]}"; do echo "file $(sum_of "${sources[i]}") ${targets[i]}"; done
    for line in "${made[@]}"; do echo "folder $line"; done
  )
  list_changed=yes
  { installed; echo "$new"; } | store_list || fail "cannot write into $data"
  for target in "${targets[@]}"; do
    if [ -e "$target" ]; then cp -p -- "$target" "$target.old"; fi
    placed+=("$target")
    # A host that has the old file loaded keeps it: the new one takes its name only.
    mv -f -- "$target.new" "$target"
  done
  place=$("$brezan" manual)
  if [ -f "$place" ] && [ "$place" != "$manual" ]; then
    echo "kept the manual's place in the settings: $place"
  elif [ "$place" != "$manual" ]; then
    place_set=yes
    "$brezan" manual --set "$manual" || fail "nothing was installed"
  fi
  {
    line=$(installed)
    for target in "${targets[@]}"; do line=$(without "$target" <<<"$line"); done
    printf '%s\n' "$line" "$new" | awk 'NF && !seen[$0]++'
  } | store_list
  trap - EXIT INT TERM
  for target in "${targets[@]}"; do
    rm -f -- "$target.old"
    echo "installed $target"
  done
  rm -f -- "$list.old"
  cat <<T
Giada and ZyTrax find the plug-in when $folder is among their VST folders.
Ardour looks into system folders only: add $folder under Preferences > Plugins > VST > search path,
or install with --prefix into a folder that stands there.
T
}

kept=no
remove_file() {
  if ! [ -e "$1" ]; then
    echo "already gone: $1"
  elif is_ours "$1"; then
    rm -f -- "$1" || fail "cannot remove $1"
    echo "removed $1"
  else
    echo "install: kept $1: it has been changed since" >&2
    kept=yes
  fi
}

# Those listed folders in $1 that are empty now, the innermost first.
remove_folders() {
  local place
  sed -n 's/^folder //p' | sort -r | while read -r place; do
    case "$place" in "$1"*) rmdir -- "$place" 2>/dev/null || true ;; esac
  done
}

# The list without folders that are gone.
standing() {
  local line
  while read -r line; do
    case "$line" in "folder "*) [ -d "${line#folder }" ] || continue ;; esac
    printf '%s\n' "$line"
  done
}

uninstall_files() {
  local rest target
  rest=$(installed | without "$folder/QLXBrezan.so")
  [ "$(installed)" != "$rest" ] || fail "nothing was installed into $folder"
  if grep -q '^file .*/QLXBrezan\.so$' <<<"$rest"; then # another one, which has the manual too
    remove_file "$folder/QLXBrezan.so"
    installed | remove_folders "$folder"
    echo "$rest" | standing | store_list
  else
    "$brezan" manual --forget "$manual" || fail "nothing was removed"
    for target in "${targets[@]}"; do remove_file "$target"; done
    rest=$(installed)
    rm -f -- "$list"
    remove_folders / <<<"$rest"
  fi
  [ "$kept" = no ]
}

if [ "$uninstall" = yes ]; then uninstall_files; else install_files; fi
