# SPDX-License-Identifier: ISC
# shellcheck shell=bash
# Sourced by what runs several commands one after the other: step for each, then step_summary, which tells how each went.
# A step that fails does not keep the others from running.
step_results=()
step_faults=()
step_status=0
step_log=$(mktemp)
trap 'rm -f "$step_log"' EXIT

# step NAME SECONDS COMMAND...: no limit if SECONDS is 0. What the command printed is in $step_log until the next step.
# A command that was stopped for the time, or that ended with 3 because its own limit was reached, is no error unless it
# had reported one. One that has nothing to work with says "SKIPPED: " and why, and ends with 0.
step() {
  local name=$1 limit=$2 code=0 begin=$SECONDS result
  shift 2
  echo "== $name"
  if [ "$limit" -gt 0 ]; then set -- timeout -k 20 "$limit" "$@"; fi
  "$@" 2>&1 | tee "$step_log" || code=$?
  if [ "$code" -eq 0 ]; then
    result=passed
    if grep -q '^SKIPPED: ' "$step_log"; then result="SKIPPED for lack of tools"; fi
  elif [ "$code" -eq 3 ] || { [ "$limit" -gt 0 ] && [ $((SECONDS - begin)) -ge "$limit" ]; }; then
    result="CUT for lack of time"
    if grep -qE '\*\*\*(Failed|Exception|Timeout)|FINDING' "$step_log"; then
      result="FAILED, and cut for lack of time"
      step_status=1
    fi
  else
    result=FAILED
    step_status=1
  fi
  [[ $result != FAILED* ]] || step_fault "$name"
  step_end "$name" "$result" $((SECONDS - begin))
}

# skip NAME
skip() { step_end "$1" "SKIPPED for lack of time" 0; }

step_end() {
  [ "$2" = passed ] || echo "!! $1: $2"
  step_results+=("$(printf '%-46s %3d min %2d s  %s' "$1" $(($3 / 60)) $(($3 % 60)) "$2")")
}

# What tells most of why a step failed: the lines that name a fault, else the last ones. In the summary, too, as whoever
# reads a long log begins at its end.
step_fault() {
  local lines
  lines=$(grep -E '(error|warning):|\*\*\*(Failed|Exception|Timeout)|FINDING|FAILED|SUMMARY: |^In .* line ' "$step_log" | head -n 20) ||
    lines=$(tail -n 20 "$step_log")
  step_faults+=("!! $1" "$lines")
}

# Fails if a step has.
step_summary() {
  if [ ${#step_faults[@]} -gt 0 ]; then printf '%s\n' "== what failed" "${step_faults[@]}"; fi
  echo "== summary"
  printf '%s\n' "${step_results[@]}"
  return "$step_status"
}
