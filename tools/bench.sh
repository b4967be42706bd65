#!/usr/bin/env bash
# bench.sh ROOT [options of Google Benchmark]: processor time of the plug-in, medians of repeated runs.
set -euo pipefail
root=$1
shift
# "per frame" and "per second" are processor time for one frame and for one second of sound.
"$root/build/release/brezan_benchmark" --plugin="$root/build/release/QLXBrezan.so" --benchmark_repetitions=3 \
  --benchmark_report_aggregates_only=true --benchmark_counters_tabular=true "$@" | grep -vE '_(mean|stddev|cv) '
