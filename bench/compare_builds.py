#!/usr/bin/env python3
"""Reads a Google Benchmark JSON file of a run with ZENK_BENCH_BASELINE
(bench/run.sh ... --benchmark_out=FILE --benchmark_out_format=json) and
compares every benchmark of our exports with its base_ twin: the ratio
base time / our time of the best repetition (above 1: this build is
faster), their geometric mean, the count under 0.97 and over 1.03, and the
pairs furthest from 1."""
import json
import math
import sys
from collections import defaultdict

runs = defaultdict(list)
for b in json.load(open(sys.argv[1]))["benchmarks"]:
    if b.get("run_type") == "aggregate" or b.get("error_occurred"):
        continue
    runs[b["run_name"]].append(b["cpu_time"])
ratios = {}
for name, times in runs.items():
    case, impl, size = name.split("/")
    if not impl.startswith("base_"):
        continue
    ours = "/".join([case, "zenk_" + impl[len("base_"):], size])
    if ours in runs:
        ratios[ours] = min(times) / min(runs[ours])
values = sorted(ratios.values())
mean = math.exp(sum(math.log(v) for v in values) / len(values))
print(f"{len(values)} pairs; geometric mean {mean:.3f}; under 0.97: {sum(v < 0.97 for v in values)}; "
      f"under 0.95: {sum(v < 0.95 for v in values)}; over 1.03: {sum(v > 1.03 for v in values)}")
for name, r in sorted(ratios.items(), key=lambda kv: kv[1])[: int(sys.argv[2]) if len(sys.argv) > 2 else 8]:
    print(f"  {r:.3f}  {name}")
