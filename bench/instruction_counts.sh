#!/usr/bin/env bash
# Instruction counts of every kernel at 1920x1080, at each level valgrind
# runs (SSE2 and AVX2), from callgrind: deterministic, whatever else the
# machine is doing. Prints "<export>:<kernel>:<level> <instructions>" a line.
#   bench/instruction_counts.sh [build-dir] > counts.txt
# Two builds compare line by line (bench/compare_counts.py old.txt new.txt).
set -euo pipefail
build=${1:-build/linux-x64}
program=$build/tests/zenk_kernel_counts
[ -x "$program" ] || { echo "build $program first" >&2; exit 1; }
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
ZENK_TEST_SEED=${ZENK_TEST_SEED:-1} valgrind --tool=callgrind --instr-atstart=no --collect-atstart=no --dump-instr=no \
  --callgrind-out-file="$out/counts.%p" "$program" >/dev/null 2>"$out/log" || { cat "$out/log" >&2; exit 1; }
# Each dump names its kernel in its trigger line and gives its total.
for f in "$out"/counts.*.*; do
  awk '/^desc: Trigger: Client Request: / {name = $5} /^totals: / {print name, $2}' "$f"
done | sort
