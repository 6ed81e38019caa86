#!/usr/bin/env bash
# The same request gives the same bytes on x86-64 and on 64-bit Arm: the
# x86-64 zenk-convert and the Arm one (under qemu-aarch64) convert the test
# cards through every format pair both libraries list, with the options that
# change each pair, and every output's SHA-256 must match.
#   scripts/check-cross-arch.sh [X64_BUILD] [ARM64_BUILD]
#     defaults: build/linux-x64 and build/linux-arm64, both built with zenk-convert
# ZENK_ARM64_SYSROOT (default /usr/aarch64-linux-gnu) is the runtime root for qemu;
# on an Arm machine set ZENK_ARM64_RUN= to run the Arm tool directly.
set -euo pipefail
cd "$(dirname "$0")/.."

x64_build=${1:-build/linux-x64}
arm_build=${2:-build/linux-arm64}
sysroot=${ZENK_ARM64_SYSROOT:-/usr/aarch64-linux-gnu}
# The C library from the same root as the loader (see the toolchain file).
read -r -a arm_run <<<"${ZENK_ARM64_RUN-qemu-aarch64 -L $sysroot -E LD_LIBRARY_PATH=$sysroot/lib}"
x64_tool=("$x64_build/tools/zenk-convert")
# A run that hangs under the emulator fails the check instead of stalling CI.
arm_tool=(timeout 120 "${arm_run[@]}" "$arm_build/tools/zenk-convert")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/in" "$work/x64" "$work/arm64"

# The pairs and the options that change them, as each library lists them
# (the header line names the library file, so it is left out).
pairs_of() { "$@" --list | sed -n 's/^ *\([A-Z0-9]*\) *-> *\([A-Z0-9]*\) *\(.*\)$/\1 \2 \3/p'; }
x64_pairs=$(pairs_of "${x64_tool[@]}")
arm_pairs=$(pairs_of "${arm_tool[@]}")
if [ "$x64_pairs" != "$arm_pairs" ]; then
  echo "the two libraries list different pairs or options:" >&2
  diff <(echo "$x64_pairs") <(echo "$arm_pairs") >&2 || true
  exit 1
fi
[ -n "$x64_pairs" ] || { echo "no pairs listed" >&2; exit 1; }

# Aligned lines (16 pixels, and BGR24 pitches of 48 bytes) take the aligned
# kernels; 134 pixels leave head and tail pixels to the any-alignment ones;
# the line-pair modes need heights of 8 lines and widths of 8 pixels.
aligned=192x16
odd=134x6
pairs_size=136x24
cards=(bars100 bars75 ramp keyed-bars)

# Every source picture is made once, by the x86-64 tool from a test card,
# and both tools read that same file.
sources=$(awk '{print $1}' <<<"$x64_pairs" | sort -u)
for card in "${cards[@]}"; do
  for size in "$aligned" "$odd" "$pairs_size"; do
    for from in $sources; do
      case $from in BGR32I | A8C) continue ;; esac
      "${x64_tool[@]}" --test-card "$card" --size "$size" --to "$from" "$work/in/$card-$size.$from"
    done
  done
done

cases=0
# convert LABEL CARD SIZE FROM TO [OPTIONS...]: one request, on both architectures.
convert() {
  local label=$1 card=$2 size=$3 from=$4 to=$5
  shift 5
  local input=()
  case $from in
    BGR32I) input=(--test-card "$card") ;;
    A8C) input=(--from A8C) ;;
    *) input=(--from "$from" "$work/in/$card-$size.$from") ;;
  esac
  local args=("${input[@]}" --size "$size" --to "$to" "$@")
  "${x64_tool[@]}" "${args[@]}" "$work/x64/$label" ||
    { echo "x86-64: zenk-convert ${args[*]} failed" >&2; exit 1; }
  "${arm_tool[@]}" "${args[@]}" "$work/arm64/$label" ||
    echo "exit status $?" >"$work/arm64/$label"
  cases=$((cases + 1))
}

while read -r from to options; do
  pair=$from-$to
  # Each option only where the tool lists it for the pair.
  matrix=() range=() alpha=()
  if [[ $options == *matrices* ]]; then matrix=(--src-matrix 601 --dst-matrix 709 --clamp-luma)
  elif [[ $options == *matrix* ]]; then matrix=(--matrix 601); fi
  [[ $options == *range* ]] && range=(--full-range --clamp-luma)
  [[ $options == *alpha* ]] && alpha=(--alpha 77)
  threads=()
  [[ $options == *threads* ]] && threads=(--threads 2)

  for card in "${cards[@]}"; do
    for size in "$aligned" "$odd"; do
      convert "$pair.$card.$size" "$card" "$size" "$from" "$to"
    done
  done
  for size in "$aligned" "$odd"; do
    convert "$pair.streaming.$size" keyed-bars "$size" "$from" "$to" --streaming "${matrix[@]}" "${threads[@]}"
  done
  convert "$pair.full-range.$odd" keyed-bars "$odd" "$from" "$to" "${range[@]}" "${alpha[@]}" "${matrix[@]}"
  # Full range with the studio chroma sets, as host option 128 = 0 asks.
  ZENK_HOST_OPTION_128=0 convert "$pair.studio-chroma.$aligned" bars75 "$aligned" "$from" "$to" "${range[@]}"

  modes=()
  [[ $options == *proxy* ]] && modes+=(1 2)
  [[ $options == *double* ]] && modes+=(3)
  if [ ${#modes[@]} -gt 0 ]; then
    for mode in "${modes[@]}"; do
      for scan in 1 2; do
        convert "$pair.scan$scan.mode$mode" keyed-bars "$pairs_size" "$from" "$to" --scan-mode "$scan" --vertical-mode "$mode"
        convert "$pair.scan$scan.mode$mode.fields" keyed-bars "$pairs_size" "$from" "$to" --scan-mode "$scan" --vertical-mode "$mode" --field-pair
      done
    done
  fi
done <<<"$x64_pairs"

sums() { (cd "$1" && sha256sum -- * | awk '{print $2, $1}' | sort); }
join -a 1 -a 2 -e missing -o 0,1.2,2.2 <(sums "$work/x64") <(sums "$work/arm64") |
  awk '$2 != $3 {print "  " $1 ": x86-64 " $2 ", arm64 " $3}' >"$work/differences"
npairs=$(wc -l <<<"$x64_pairs")
if [ -s "$work/differences" ]; then
  echo "outputs that differ between the architectures (a failed Arm run shows as the hash of its exit status):" >&2
  cat "$work/differences" >&2
  echo "cross-architecture checksums: $(wc -l <"$work/differences") of $cases outputs differ" >&2
  exit 1
fi
echo "cross-architecture checksums: all $cases outputs of $npairs pairs identical on x86-64 and 64-bit Arm"
