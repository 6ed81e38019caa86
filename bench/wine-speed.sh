#!/usr/bin/env bash
# What Wine costs a conversion: a Windows DLL under Wine against the Linux
# library of the same width, on this machine, in one run.
# bench/dll_timing.cpp is built twice from one source (GCC 12 for Linux,
# mingw-w64's GCC 12 for Windows); each round runs both at every level
# (ZENK_CPU), the two alternating and their order swapped each round, and
# the table takes each one's best time over the rounds.
#   bench/wine-speed.sh [ROUNDS] [SECONDS_PER_EXPORT] [x64|x86]
# (defaults 5, 0.3, x64). x86 times the 32-bit DLL under scripts/wine32 and
# the 32-bit Linux library: only where the kernel starts 32-bit programs
# (under QEMU the times would say nothing), with the i386 root built
# (scripts/wine32-root.sh) or the machine's own wine32.
# Prints a Markdown table, and the load of the machine before and after.
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-5}
seconds=${2:-0.3}
width=${3:-x64}
out=build/dll-timing-$width
mkdir -p "$out"

if [ "$width" = x86 ]; then
  linux_preset=linux-x86 windows_preset=windows-x86 mingw=i686-w64-mingw32-g++-posix m=-m32 wine=scripts/wine32
else
  linux_preset=linux-x64 windows_preset=windows-x64 mingw=x86_64-w64-mingw32-g++-posix m= wine=scripts/wine64
fi
cmake --preset $linux_preset >/dev/null
cmake --build --preset $linux_preset --target ZenkTranscoderLibrary -j 2 >/dev/null
cmake --preset $windows_preset >/dev/null
cmake --build --preset $windows_preset -j 2 >/dev/null
g++ $m -std=c++20 -O2 -Iinclude -o "$out/dll_timing" bench/dll_timing.cpp -ldl
$mingw -std=c++20 -O2 -Iinclude -static -o "$out/dll_timing.exe" bench/dll_timing.cpp

linux_library=$(ls build/$linux_preset/libZenkTranscoderLibrary.so.* | head -1)
# Backslashes: LoadLibraryEx searches the DLL's own folder only for a path
# written the Windows way.
windows_library=$(tr / '\\' <<<"Z:$PWD/build/$windows_preset/ZenkTranscoderLibrary.dll")
export WINEPREFIX=$PWD/$out/wine-prefix WINEDEBUG=-all
[ "$width" = x86 ] || $wine wineboot --init >/dev/null 2>&1 || true

echo "load before: $(cut -d' ' -f1-3 /proc/loadavg) ($(nproc) processors)"
: > "$out/times"
for ((round = 1; round <= rounds; ++round)); do
  for level in sse2 avx2 avx512; do
    linux() { ZENK_CPU=$level "$out/dll_timing" "$linux_library" "$seconds" | sed 's/^/linux /'; }
    wine() { ZENK_CPU=$level $wine "$out/dll_timing.exe" "$windows_library" "$seconds" | tr -d '\r' | sed 's/^/wine /'; }
    if ((round % 2)); then linux; wine; else wine; linux; fi >> "$out/times"
  done
done
echo "load after: $(cut -d' ' -f1-3 /proc/loadavg)"

awk '
  { t = $4 + 0
    if (!(($1, $2, $3) in best) || t < best[$1, $2, $3]) best[$1, $2, $3] = t
    if (!($2 in seen)) { seen[$2] = 1; pairs[++n] = $2 } }
  END {
    print "| export | level | Linux ms | Wine ms | Wine / Linux |"
    print "|---|---|---:|---:|---:|"
    split("sse2 avx2 avx512", levels, " ")
    for (i = 1; i <= n; ++i)
      for (l = 1; l <= 3; ++l) {
        p = pairs[i]; v = levels[l]
        printf "| %s | %s | %.3f | %.3f | %.2f |\n", p, v, best["linux", p, v], best["wine", p, v],
               best["wine", p, v] / best["linux", p, v]
      }
  }' "$out/times"
