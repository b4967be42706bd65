#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# pictures.sh BREZAN: takes the manual's pictures anew. The menu is a window of its own and needs a display of 1482 x 1820 at
# least; where there is none: xvfb-run -a -s "-screen 0 2560x2048x24" docs/manual/pictures.sh BREZAN.
set -euo pipefail
brezan=$(realpath "$1")
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home # no stored defaults of the user's
cd "$(dirname "${BASH_SOURCE[0]}")/pictures"

"$brezan" screenshot window.png --scale 2 --play 1.3
"$brezan" screenshot tremolo.png --scale 2 --set Lever=Tremolo --control 1=127 --control 64=127 --play 4.03
"$brezan" screenshot cabinet.png --scale 2 --about
"$brezan" screenshot "$home/menu.png" --screen --margin 680 --scale 2 --preset 'Old Rotary' --click 269,561
/usr/bin/python3 - "$home/menu.png" menu.png <<'P'
import sys
from PIL import Image
screen = Image.open(sys.argv[1])
if screen.size != (1482, 1820):
    sys.exit("pictures.sh: the display is too small for the window and its menu")
screen.crop((2 * 203, 2 * 495, 2 * 713, 2 * 645)).save(sys.argv[2])
P
