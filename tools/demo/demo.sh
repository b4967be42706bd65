#!/usr/bin/env bash
# demo.sh ROOT: renders the organ phrase through the plug-in, slow - fast - slow - stop - slow, and draws it.
set -euo pipefail
root=$1
bin=$root/build/release
out=$root/build/demo
mkdir -p "$out"

"$bin/brezan" organ "$out/organ-dry.wav" --midi "$out/pedal.mid" --automation "$out/brake.txt" >/dev/null
"$bin/brezan" render "$out/organ-dry.wav" "$out/organ.wav" --midi "$out/pedal.mid" --automate "$out/brake.txt" \
  --rate 44100 --format pcm24 --tail 1 --settle 4 --set CPUmode=Brilliant
"$bin/brezan" picture "$out/organ.wav" "$out/organ.png" --midi "$out/pedal.mid" --automate "$out/brake.txt" \
  --title 'QLX Brezan: organ phrase through the cabinet'
cat <<T

Listen:   $out/organ.wav
Compare:  $out/organ-dry.wav   (the organ alone)
Look:     $out/organ.png
T
