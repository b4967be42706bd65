#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# demo.sh ROOT: renders the organ phrase through the plug-in, slow - fast - slow - stop - slow, tells what is in it and
# draws it.
set -euo pipefail
root=$1
brezan=$root/build/release/brezan
out=$root/build/demo
mkdir -p "$out"
cd "$out"

moves=(--midi pedal.mid --automate brake.txt)
settings=(--set CPUmode=Brilliant)
"$brezan" organ organ-dry.wav --midi pedal.mid --automation brake.txt >/dev/null
"$brezan" render organ-dry.wav organ.wav "${moves[@]}" "${settings[@]}" \
  --rate 44100 --format pcm24 --tail 1 --settle 4 >/dev/null
"$brezan" report organ-dry.wav organ.wav "${moves[@]}" "${settings[@]}"
"$brezan" picture organ.wav organ.png "${moves[@]}" --title 'QLX Brezan: organ phrase through the cabinet' >/dev/null
cat <<T

Listen:   $out/organ.wav
Compare:  $out/organ-dry.wav   (the organ alone)
Look:     $out/organ.png
T
