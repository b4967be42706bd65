#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# package.sh ROOT BUILD: the Debian package of a finished build and, where ROOT is a checkout, the archive of its committed
# sources, both in BUILD/package; fails on what lintian, appstreamcli and desktop-file-validate call an error.
set -euo pipefail
cd "$1"
built=$2
umask 022
out=$built/package
rm -rf "$out"
# All times in the package are those of the release.
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
version=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
cpack --config "$built/CPackConfig.cmake" >"$built/cpack.log" || { cat "$built/cpack.log" >&2; exit 1; }
rm -rf "$out/_CPack_Packages"
package=$(find "$out" -name '*.deb')

# CPack lets the package call ldconfig because libraries lie below /usr/lib; these are in no folder that the loader reads.
opened=$(mktemp -d)
trap 'rm -rf "$opened"' EXIT
dpkg-deb -R "$package" "$opened/package"
rm -f "$opened"/package/DEBIAN/{postinst,postrm}
dpkg-deb --root-owner-group -Zxz -b "$opened/package" "$package" >/dev/null

desktop-file-validate packaging/*.desktop
appstreamcli validate --no-net "$built"/packaging/*.metainfo.xml
lintian --fail-on error "$package"
if [ -e .git ]; then
  git archive --prefix="qlx-brezan-$version/" -o "$out/qlx-brezan-$version.tar.gz" HEAD
else
  echo "No checkout here: no source archive is made."
fi
ls -l "$out"
