#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# check_all.sh ROOT SECONDS: every check without a limit of time, with SECONDS for each fuzzer.
set -euo pipefail
cd "$1"
. scripts/steps.sh
step "tests, g++" 0 env QLX_ALL_RATES=1 ./dev test
step "tests, clang" 0 ./dev test --compiler clang
step "tests, address and undefined behaviour" 0 ./dev sanitize --kind asan
step "tests, threads" 0 ./dev sanitize --kind tsan
step "memcheck" 0 ./dev sanitize --kind memcheck
step "fuzzers, $2 s each" 0 ./dev fuzz "$2"
step "lint" 0 ./dev lint
step "coverage" 0 ./dev coverage
step_summary
