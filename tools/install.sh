#!/usr/bin/env bash
# install.sh ROOT [--prefix DIR] [--uninstall]: puts the plug-in into ~/.vst or DIR, or takes back what it put there.
# A manifest in that folder remembers the files, so that nothing else is ever replaced or removed.
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
[ -n "$folder" ] || folder=${HOME:?install: HOME is not set, name a folder with --prefix}/.vst
manifest=$folder/.qlx-brezan.manifest
files=("$root/build/release/QLXBrezan.so")

# Lines of the manifest: "<sha256>  <file name>" and "made folder".
recorded() { [ -f "$manifest" ] && sed -n "s/^\([0-9a-f]*\)  $1\$/\1/p" "$manifest"; }
checksum() { sha256sum <"$1" | cut -d' ' -f1; }

install_files() {
  local made=no file name temporary
  [ -d "$folder" ] || made=yes
  mkdir -p "$folder" || fail "cannot make $folder"
  if [ -f "$manifest" ] && grep -qx 'made folder' "$manifest"; then made=yes; fi
  for file in "${files[@]}"; do
    name=$(basename "$file")
    [ -f "$file" ] || fail "$file is not built"
    if [ -e "$folder/$name" ] && [ -z "$(recorded "$name")" ]; then
      fail "$folder/$name is there already and was not installed from here; move it away first"
    fi
  done
  : >"$manifest.new" || fail "cannot write into $folder"
  for file in "${files[@]}"; do
    name=$(basename "$file")
    temporary=$(mktemp "$folder/.$name.XXXXXX") || fail "cannot write into $folder"
    trap 'rm -f "$temporary"' EXIT
    install -m 755 "$file" "$temporary"
    # A host that has the old file loaded keeps it: the new one takes its name only.
    mv -f "$temporary" "$folder/$name"
    trap - EXIT
    echo "$(checksum "$file")  $name" >>"$manifest.new"
    echo "installed $folder/$name"
  done
  [ "$made" = no ] || echo 'made folder' >>"$manifest.new"
  mv -f "$manifest.new" "$manifest"
}

uninstall_files() {
  [ -f "$manifest" ] || fail "nothing was installed into $folder"
  local sum name kept=no
  while read -r sum name; do
    case "$sum" in made) continue ;; esac
    if [ ! -e "$folder/$name" ]; then
      echo "already gone: $folder/$name"
    elif [ "$(checksum "$folder/$name")" = "$sum" ]; then
      rm -f "$folder/$name"
      echo "removed $folder/$name"
    else
      echo "install: kept $folder/$name: it has been changed since" >&2
      kept=yes
    fi
  done <"$manifest"
  local made=no
  if grep -qx 'made folder' "$manifest"; then made=yes; fi
  rm -f "$manifest"
  if [ "$made" = yes ]; then rmdir "$folder" 2>/dev/null || true; fi
  [ "$kept" = no ]
}

if [ "$uninstall" = yes ]; then uninstall_files; else install_files; fi
