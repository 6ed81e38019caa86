#!/usr/bin/env bash
# What Wine costs a conversion: the 64-bit Windows DLL under wine64 against
# the Linux x86-64 library, on this machine, in one run. bench/dll_timing.cpp
# is built twice from one source (GCC 12 for Linux, mingw-w64's GCC 12 for
# Windows); each round runs both at every level (ZENK_CPU), the two
# alternating and their order swapped each round, and the table takes each
# one's best time over the rounds.
#   bench/wine-speed.sh [ROUNDS] [SECONDS_PER_EXPORT]     (defaults 5, 0.3)
# Prints a Markdown table, and the load of the machine before and after.
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-5}
seconds=${2:-0.3}
out=build/dll-timing
mkdir -p "$out"

cmake --preset linux-x64 >/dev/null
cmake --build --preset linux-x64 --target ZenkTranscoderLibrary -j 2 >/dev/null
cmake --preset windows-x64 >/dev/null
cmake --build --preset windows-x64 -j 2 >/dev/null
g++ -std=c++20 -O2 -Iinclude -o "$out/dll_timing" bench/dll_timing.cpp -ldl
x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -Iinclude -static -o "$out/dll_timing.exe" bench/dll_timing.cpp

linux_library=$(ls build/linux-x64/libZenkTranscoderLibrary.so.* | head -1)
# Backslashes: LoadLibraryEx searches the DLL's own folder only for a path
# written the Windows way.
windows_library=$(tr / '\\' <<<"Z:$PWD/build/windows-x64/ZenkTranscoderLibrary.dll")
export WINEPREFIX=$PWD/$out/wine-prefix WINEDEBUG=-all
scripts/wine64 wineboot --init >/dev/null 2>&1 || true

echo "load before: $(cut -d' ' -f1-3 /proc/loadavg) ($(nproc) processors)"
: > "$out/times"
for ((round = 1; round <= rounds; ++round)); do
  for level in sse2 avx2 avx512; do
    linux() { ZENK_CPU=$level "$out/dll_timing" "$linux_library" "$seconds" | sed 's/^/linux /'; }
    wine() { ZENK_CPU=$level scripts/wine64 "$out/dll_timing.exe" "$windows_library" "$seconds" | tr -d '\r' | sed 's/^/wine64 /'; }
    if ((round % 2)); then linux; wine; else wine; linux; fi >> "$out/times"
  done
done
echo "load after: $(cut -d' ' -f1-3 /proc/loadavg)"

awk '
  { t = $4 + 0
    if (!(($1, $2, $3) in best) || t < best[$1, $2, $3]) best[$1, $2, $3] = t
    if (!($2 in seen)) { seen[$2] = 1; pairs[++n] = $2 } }
  END {
    print "| export | level | Linux ms | wine64 ms | wine64 / Linux |"
    print "|---|---|---:|---:|---:|"
    split("sse2 avx2 avx512", levels, " ")
    for (i = 1; i <= n; ++i)
      for (l = 1; l <= 3; ++l) {
        p = pairs[i]; v = levels[l]
        printf "| %s | %s | %.3f | %.3f | %.2f |\n", p, v, best["linux", p, v], best["wine64", p, v],
               best["wine64", p, v] / best["linux", p, v]
      }
  }' "$out/times"
