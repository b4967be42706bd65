#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""Ratios of the median processor times in a Google Benchmark JSON file of brezan_benchmark: how many times lighter the
plug-in is than the plain model, and what moving costs beside standing. Usage: bench_ratios.py FILE. A ratio whose
cases did not run is left out."""
import json
import pathlib
import sys

WHO = ("any x86-64", "this processor")
STEADY = "steady fast"


def medians(path):
    runs = json.loads(path.read_text(encoding="utf-8"))["benchmarks"]
    return {tuple(run["run_name"].split("/")): run["cpu_time"]
            for run in runs if run.get("aggregate_name") == "median"}


def print_table(title, rows):
    if not rows:
        return
    print(f"\n{title}\n{'':44}" + "".join(f"{who:>16}" for who in WHO))
    for name, ratios in rows:
        print(f"{name:44}" + "".join(f"{ratio:16.2f}" if ratio else f"{'-':>16}" for ratio in ratios))


def main():
    times = medians(pathlib.Path(sys.argv[1]))
    cases = sorted({key[1:] for key in times if key[0] in WHO})

    def ratios(case, over):
        return [times[over(who)] / times[(who, *case)] if over(who) in times and (who, *case) in times else None
                for who in WHO]

    lighter = [(" ".join(case), ratios(case, lambda who: ("plain model", *case)))
               for case in cases if ("plain model", *case) in times]
    print_table("Times lighter than the plain model", lighter)
    moving = []
    for rate, mode, use in cases:
        if use != STEADY:
            steady = ratios((rate, mode, use), lambda who: (who, rate, mode, STEADY))
            if any(steady):
                moving.append((f"{rate} {mode} {use}", [1 / r if r else None for r in steady]))
    print_table("Processor time in parts of steady fast", moving)


if __name__ == "__main__":
    main()
