#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# Runs a command with Wine's server up, so that not every program starts one. A crash ends its program at once instead of
# asking the user. Usage: with_wine.sh COMMAND..., WINEPREFIX set
set -euo pipefail
mkdir -p "$WINEPREFIX"
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
server=$(dirname "$(readlink -f "$wine")")/wineserver64
[ -x "$server" ] || server=/usr/lib/wine/wineserver64
# Neither .NET nor a browser is asked for when the folder is new.
export WINEDLLOVERRIDES="mscoree,mshtml="
# Refuses where one is still up from a moment ago, which serves as well.
"$server" -p60 || true
"$wine" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null
exec "$@"
