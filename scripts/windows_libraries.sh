#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Builds the static libraries that brezan.exe is linked with, for Windows x64, from Debian's sources in these versions.
# apt checks the lists' signatures. The system's own package lists stay as they are. Usage: windows_libraries.sh ROOT FOLDER;
# they are then in FOLDER/prefix. Does nothing when they were built by this same script before.
set -euo pipefail
root=$(realpath "$1")
mkdir -p "$2"
folder=$(realpath "$2")
prefix=$folder/prefix
mark=$folder/built-by
script=$(realpath "${BASH_SOURCE[0]}")
toolchain=$root/cmake/toolchains/mingw-w64-x86-64.cmake
made_by=$(cat "$script" "$toolchain" | sha256sum)
[ "$(cat "$mark" 2>/dev/null)" != "$made_by" ] || exit 0

fail() { echo "windows_libraries: $1; see $folder/log" >&2; exit 1; }

lists=$folder/apt
rm -rf "$prefix" "$lists" "$folder/log"
mkdir -p "$lists/lists/partial" "$lists/cache/archives/partial"
# Debian's mirrors that this system takes packages from have the sources, too.
keys=/usr/share/keyrings/debian-archive-keyring.gpg
# shellcheck disable=SC2016
apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' \
  'Component: main' | sort -u | sed "s,^,deb-src [signed-by=$keys] ," >"$lists/debian.list"
[ -s "$lists/debian.list" ] || fail "apt knows no mirror of Debian's (apt-get update)"
apt() {
  apt-get -q -o Dir::Etc::sourcelist="$lists/debian.list" -o Dir::Etc::sourceparts=/dev/null \
    -o Dir::State::lists="$lists/lists" -o Dir::Cache="$lists/cache" -o APT::Sandbox::User="$(id -un)" "$@" >>"$folder/log" 2>&1
}
apt update || fail "no list of Debian's sources"

by_cmake() {
  cmake -S . -B build -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DQLX_WINDOWS_LIBRARIES="$prefix" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@" &&
    cmake --build build &&
    cmake --install build
}

by_cmake_as_published() { by_cmake "$@"; }

by_configure() {
  ./configure --host=x86_64-w64-mingw32 CC=x86_64-w64-mingw32-gcc-posix CFLAGS=-O2 --prefix="$prefix" \
    --disable-shared "$@" &&
    make -j "$(nproc)" &&
    make install
}

# library PACKAGE VERSION SUM HOW OPTION...: fetches and builds one, with what was built before it in reach. SUM is the
# SHA-256 of its .dsc, which holds those of the other files; Debian's changes are in it. cmake_as_published: of the
# archive as published, without Debian's changes.
library() {
  local package=$1 version=$2 sum=$3 how=$4 file only=()
  shift 4
  echo "Building $package $version for Windows"
  rm -rf "${folder:?}/$package"
  mkdir "$folder/$package"
  cd "$folder/$package"
  [ "$how" != cmake_as_published ] || only=(--tar-only)
  apt --only-source --download-only "${only[@]}" source "$package=$version" || fail "cannot fetch $package $version"
  if [ ${#only[@]} -gt 0 ]; then file=(./*.orig.tar.*); else file=(./*.dsc); fi
  echo "$sum ${file[0]}" | sha256sum --check --quiet >>"$folder/log" 2>&1 || fail "$package is not what it was"
  if [ ${#only[@]} -gt 0 ]; then
    tar xf "${file[0]}"
  else
    dpkg-source -x "${file[0]}" >>"$folder/log" 2>&1 || fail "cannot unpack $package"
  fi
  cd ./*/
  mkdir -p "$prefix/licences"
  find . -maxdepth 1 \( -name 'COPYING*' -o -name 'LICENSE*' \) -exec cat {} + >"$prefix/licences/$package.txt"
  [ -s "$prefix/licences/$package.txt" ] || fail "no licence in $package"
  "by_$how" "$@" >>"$folder/log" 2>&1 || fail "cannot build $package"
  cd "$folder"
  rm -rf "${folder:?}/$package"
}

library libogg 1.3.5-3 dd0bac7c6961f95290250f82940aba93582edc3924372afc8fd310af5db995a0 cmake
library libvorbis 1.3.7-1 b25d27beb9162607c95cf58aa2b764d110bd1a1568d3926a96c523320b49171f cmake
library flac 1.4.2+ds-2 2f855e77c68e3e9818b47553bb4f33918fb558fe9cf58b30a089a99f811d3beb cmake -DBUILD_CXXLIBS=OFF \
  -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOCS=OFF -DINSTALL_MANPAGES=OFF -DWITH_STACK_PROTECTOR=OFF \
  -DWITH_FORTIFY_SOURCE=OFF
# Its archive lacks a file that CMake wants.
library opus 1.3.1-3 c373ac82a1afb824819618c12e279ee47b6ac2fa18083b9ef2bb9e8e9e588419 configure --disable-doc \
  --disable-extra-programs --disable-stack-protector
# FLAC's headers take its functions for a DLL's unless told.
library libsndfile 1.2.0-1+deb12u1 74686b038b925f4b238d0a37e36671e5b924fe1678083037494923140403fa8e cmake \
  -DCMAKE_C_FLAGS=-DFLAC__NO_DLL -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DENABLE_MPEG=OFF -DENABLE_CPACK=OFF
library libsamplerate 0.2.2-3 364aee9f8033c795cecbb3cbc1659f795487f535d3523bc4ec6f3790ba66c74f cmake -DLIBSAMPLERATE_EXAMPLES=OFF
# Some mirrors lack the file of Debian's changes to this one, which are to its packaging.
library libebur128 1.2.6-1 baa7fc293a3d4651e244d8022ad03ab797ca3c2ad8442c43199afe8059faa613 cmake_as_published
echo "$made_by" >"$mark"
