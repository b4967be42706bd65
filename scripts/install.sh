#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# install.sh STAGED [--prefix DIR] [--uninstall]: puts what `cmake --install --prefix STAGED` has left in STAGED (lib/vst,
# lib/lv2, bin, share) where it belongs: under DIR or, for one user, into ~/.vst, ~/.lv2, ~/.local/bin and the user's data
# folder; or takes back what it put there. A list in the data folder remembers the files with their sums and the folders made for them, so that
# nothing else is ever replaced or removed.
set -euo pipefail

fail() {
  echo "install: $*" >&2
  exit 1
}

staged=$1
shift
prefix=
uninstall=no
while [ $# -gt 0 ]; do
  case "$1" in
    --prefix)
      prefix=${2:-}
      [ -n "$prefix" ] || fail "--prefix needs a folder"
      shift ;;
    --prefix=?*) prefix=${1#--prefix=} ;;
    --uninstall) uninstall=yes ;;
    *) fail "unknown option '$1'; known are --prefix DIR and --uninstall" ;;
  esac
  shift
done
if [ -n "$prefix" ]; then
  prefix=$(realpath -m -- "$prefix")
  plugins=${prefix%/}/lib/vst bundles=${prefix%/}/lib/lv2 programs=${prefix%/}/bin data=${prefix%/}/share
else
  home=${HOME:?install: HOME is not set, name a folder with --prefix}
  data=${XDG_DATA_HOME:-}
  case "$data" in /*) ;; *) data=$home/.local/share ;; esac
  plugins=$(realpath -m -- "$home/.vst") bundles=$(realpath -m -- "$home/.lv2")
  programs=$(realpath -m -- "$home/.local/bin") data=$(realpath -m -- "$data")
fi
case "$plugins$data" in *$'\n'*) fail "a folder's name must not have a new line in it" ;; esac

# Lines of the list: "file <sha256> <path>" and "folder <path>"; a file in the middle of being replaced has two.
list=$data/qlx-brezan/installed
installed() { if [ -f "$list" ]; then cat "$list"; fi; }
sum_of() { sha256sum <"$1" | cut -d' ' -f1; }
is_listed() { installed | grep -qxF -- "$1"; }
is_ours() { [ -f "$1" ] && is_listed "file $(sum_of "$1") $1"; }
listed_files() { installed | sed -n 's/^file [0-9a-f]* //p' | sort -u; }

# Folders that making $1 would make, the outermost first.
missing_folders() {
  [ -d "$1" ] && return
  missing_folders "$(dirname -- "$1")"
  printf '%s\n' "$1"
}

store_list() { cat >"$list.new" && mv -f -- "$list.new" "$list"; }

# Removes those listed folders that are empty now, the innermost first.
remove_folders() {
  local place
  sed -n 's/^folder //p' | sort -r | while read -r place; do rmdir -- "$place" 2>/dev/null || true; done
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

# Until the last step has worked everything can be undone: new files lie beside their targets, copies of old ones too.
sources=()
targets=()
made=()
placed=()
list_changed=no
undo() {
  local target i
  for target in "${placed[@]}"; do
    if [ -e "$target.old" ]; then mv -f -- "$target.old" "$target"; else rm -f -- "$target"; fi
  done
  if [ "$list_changed" = yes ]; then
    if [ -e "$list.old" ]; then mv -f -- "$list.old" "$list"; else rm -f -- "$list"; fi
  fi
  for target in "${targets[@]}" "$list"; do rm -f -- "$target.new" "$target.old" 2>/dev/null || true; done
  for ((i = ${#made[@]} - 1; i >= 0; --i)); do rmdir -- "${made[i]}" 2>/dev/null || true; done
}

# Where each staged file belongs.
find_targets() {
  local source name
  while IFS= read -r -d '' source; do
    name=${source#"$staged"/}
    case "$name" in
      lib/vst/*) targets+=("$plugins/${name#lib/vst/}") ;;
      lib/lv2/*) targets+=("$bundles/${name#lib/lv2/}") ;;
      bin/*) targets+=("$programs/${name#bin/}") ;;
      share/*) targets+=("$data/${name#share/}") ;;
      *) fail "no place for $name" ;;
    esac
    sources+=("$source")
  done < <(find "$staged" -type f -print0 | sort -z)
  for name in lib/vst/QLXBrezan.so bin/brezan; do [ -f "$staged/$name" ] || fail "$staged/$name is not built"; done
}

make_folder() {
  local line
  while read -r line; do
    mkdir -- "$line" 2>/dev/null || fail "cannot make the folder $line"
    made+=("$line")
  done < <(missing_folders "$1")
  if ! [ -w "$1" ]; then fail "cannot write into $1"; fi
}

install_files() {
  local i target line new current said=
  find_targets
  for target in "${targets[@]}"; do
    if [ -e "$target" ] || [ -L "$target" ]; then
      is_ours "$target" || fail "$target is there already and is not what was installed; move it away first"
    fi
  done

  trap undo EXIT
  trap 'exit 130' INT TERM
  for target in "${targets[@]}" "$list"; do make_folder "$(dirname -- "$target")"; done
  rm -f -- "$list.old"
  if [ -f "$list" ]; then cp -- "$list" "$list.old"; fi
  for i in "${!sources[@]}"; do
    target=${targets[i]}
    cp -- "${sources[i]}" "$target.new" 2>/dev/null || fail "cannot write into $(dirname -- "$target")"
    case "$target" in
      *.so | "$programs"/*) chmod 755 -- "$target.new" ;;
      *) chmod 644 -- "$target.new" ;;
    esac
    # A desktop does not always search the folder of the user's programs.
    if [[ $target == *.desktop && $programs =~ ^[A-Za-z0-9/._+-]+$ ]]; then
      sed -i "s|^\(Try\)\?Exec=brezan|\1Exec=$programs/brezan|" "$target.new"
    fi
  done
  new=$(
    for target in "${targets[@]}"; do echo "file $(sum_of "$target.new") $target"; done
    for line in "${made[@]}"; do echo "folder $line"; done
  )
  list_changed=yes
  { installed; echo "$new"; } | store_list || fail "cannot write into $(dirname -- "$list")"
  for target in "${targets[@]}"; do
    rm -f -- "$target.old"
    if [ -e "$target" ]; then cp -p -- "$target" "$target.old"; fi
    placed+=("$target")
    # A host that has the old file loaded keeps it: the new one takes its name only.
    mv -f -- "$target.new" "$target"
  done
  # Nothing is written to the terminal, which may be gone, before all is done.
  trap - EXIT INT TERM
  for target in "${targets[@]}"; do rm -f -- "$target.old"; done
  current=$(printf '%s\n' "${targets[@]}")
  # Files of an earlier version that this one does not have.
  while read -r target; do
    if grep -qxF -- "$target" <<<"$current"; then continue; fi
    case "$target" in
      "$plugins"/* | "$bundles"/* | "$programs"/* | "$data"/*) said+=$(remove_file "$target")$'\n' ;;
      *) new+=$'\n'$(installed | grep -F -- " $target") ;;
    esac
    "$programs/brezan" manual --forget "$target" >/dev/null 2>&1 || true
  done < <(listed_files)
  line=$(installed | grep '^folder ' || true)
  printf '%s\n%s\n' "$line" "$new" | awk 'NF && !seen[$0]++' | store_list
  rm -f -- "$list.old"
  printf 'installed %s\n' "${targets[@]}"
  printf '%s' "$said"
  tell_hosts
}

tell_hosts() {
  echo
  case "$prefix" in
    /usr | /usr/local) ;;
    *)
      echo "Ardour searches system folders only for VST: add $plugins under Window > Plugin Manager > Linux VST2 Path, or to LXVST_PATH."
      [ -z "$prefix" ] || echo "Audacity, Qtractor and MusE search it when VST_PATH names it." ;;
  esac
  echo "Giada and ZyTrax search the folder that is set in their settings: $plugins"
  case ":$PATH:" in *":$programs:"*) ;; *) echo "brezan is not found by its name until PATH holds $programs." ;; esac
}

uninstall_files() {
  local target rest
  rest=$(installed)
  [ -n "$rest" ] || fail "nothing was installed into $plugins"
  while read -r target; do remove_file "$target"; done < <(listed_files)
  rm -f -- "$list"
  remove_folders <<<"$rest"
  [ "$kept" = no ]
}

if [ "$uninstall" = yes ]; then uninstall_files; else install_files; fi
