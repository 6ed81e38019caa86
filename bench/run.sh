#!/usr/bin/env bash
# Builds the benchmark suite and runs it in bounded time (a few minutes on
# two cores), then writes the run's ratio tables into docs/performance.md.
#   bench/run.sh [build-dir] [extra Google Benchmark flags...]
# With extra flags (a --benchmark_filter, say) the run only prints: the
# report always holds the whole suite.
# BENCH_MIN_TIME (seconds per repetition, default 0.05) and BENCH_REPETITIONS
# (default 5) trade time for steadier figures.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
shift || true

# A fresh build directory builds only what the suite needs; an existing one
# keeps its own options.
if [ -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" -DZENK_BUILD_BENCH=ON >/dev/null
else
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZENK_BUILD_TESTS=OFF -DZENK_BUILD_TOOLS=OFF \
    -DZENK_BUILD_BENCH=ON >/dev/null
fi
# GST_BENCH=1: zenkconvert against videoconvert in GStreamer pipelines
# instead (about a minute and a half); it prints its table.
if [ "${GST_BENCH:-0}" = 1 ]; then
  cmake --build "$build" --target zenk_gst_bench -j "${BENCH_BUILD_JOBS:-2}"
  exec "$build/bench/zenk_gst_bench" "$@"
fi

cmake --build "$build" --target zenk_bench -j "${BENCH_BUILD_JOBS:-2}"
if [ ! -x "$build/bench/zenk_bench" ]; then
  echo "zenk_bench was not built: install Google Benchmark (Debian: libbenchmark-dev)," \
       "and libyuv-dev and libswscale-dev for the peers" >&2
  exit 1
fi

# One thread. The repetitions run in random order over the whole run, and the
# report takes each benchmark's best, so a burst of other work on a shared
# machine spoils one repetition rather than every repetition of a benchmark.
"$build/bench/zenk_bench" \
  --benchmark_min_time="${BENCH_MIN_TIME:-0.05}" \
  --benchmark_repetitions="${BENCH_REPETITIONS:-5}" \
  --benchmark_enable_random_interleaving=true \
  $([ $# -eq 0 ] && echo --report=docs/performance.md) "$@"
