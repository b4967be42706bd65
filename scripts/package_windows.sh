#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# package_windows.sh ROOT BUILD MANUALS LIBRARIES: BUILD/package/qlx-brezan-VERSION-windows-x64.zip of a finished build for Windows
# and the manuals of another one, stripped, with the licences of its libraries (windows_libraries.sh) and the lines of its texts ended as Windows ends them.
set -euo pipefail
root=$(realpath "$1") built=$(realpath "$2") manuals=$(realpath "$3") libraries=$(realpath "$4")
version=$(sed -n 's/^project(QLXBrezan VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
name=qlx-brezan-$version-windows-x64
rm -rf "$built/package"
documents=$built/package/$name/doc/qlx-brezan
mkdir -p "$documents/LICENSES"
for binary in QLXBrezan.dll brezan.exe; do
  x86_64-w64-mingw32-strip -o "$built/package/$name/$binary" "$built/$binary"
done
cp "$manuals/manual.pdf" "$manuals/manual.html" "$documents"
cd "$root"
for text in LICENSE THIRD-PARTY.md CHANGELOG.md LICENSES/*; do
  sed 's/$/\r/' "$root/$text" >"$documents/$text"
done
for licence in "$root"/resources/fonts/LiberationSans.LICENSE "$libraries"/licences/*.txt; do
  sed 's/$/\r/' "$licence" >"$documents/LICENSES/$(basename "$licence")"
done
sed 's/$/\r/' "$root/packaging/windows/README.txt" >"$built/package/$name/README.txt"
(cd "$built/package" && zip -qrX "$name.zip" "$name")
rm -rf "${built:?}/package/$name"
ls -l "$built/package"
