#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# bench.sh BUILD [options of Google Benchmark]: processor time of the plug-in and its editor, medians of repeated runs, and
# how many times lighter the plug-in is than the plain model. A few minutes.
set -euo pipefail
build=$1
scripts=$(dirname "${BASH_SOURCE[0]}")
times=$(mktemp)
trap 'rm -f "$times"' EXIT
# The repetitions of all cases are mixed, so that a machine that becomes slower meanwhile falsifies no ratio.
options=(--benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
  --benchmark_report_aggregates_only=true "${@:2}")
medians() { awk '/_median / { print | "sort"; next } !/_(mean|stddev|cv) / { print; fflush() }'; }
# "per frame" and "per second" are processor time for one frame and for one second of sound.
"$build/brezan_benchmark" --plugin="$build/QLXBrezan.so" \
  --benchmark_out="$times" --benchmark_out_format=json "${options[@]}" | medians
[ ! -s "$times" ] || python3 "$scripts/bench_ratios.py" "$times"
echo
"$build/editor_benchmark" "${options[@]}" | medians
