#!/usr/bin/env bash
# bench.sh ROOT [options of Google Benchmark]: processor time of the plug-in and its editor, medians of repeated runs.
set -euo pipefail
build=$1/build/release
options=(--benchmark_repetitions=3 --benchmark_report_aggregates_only=true --benchmark_counters_tabular=true "${@:2}")
# "per frame" and "per second" are processor time for one frame and for one second of sound.
"$build/brezan_benchmark" --plugin="$build/QLXBrezan.so" "${options[@]}" | awk '!/_(mean|stddev|cv) /'
"$build/editor_benchmark" "${options[@]}" | awk '!/_(mean|stddev|cv) /'
