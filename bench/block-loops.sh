#!/usr/bin/env bash
# What half the registers cost the 32-bit DLL, read from the code: for the
# colour kernels (aligned, ordinary stores) at each level, the instructions
# of the block loop in the 32-bit DLL against the 64-bit one, and how many
# of them touch the stack (spills and reloads: x86 has 8 vector registers in
# 32-bit code, 16 in 64-bit code, 32 with AVX-512). Speed cannot be measured
# for the 32-bit DLL here: its only route runs under an emulator.
#   bench/block-loops.sh [DLL32] [DLL64]
# (defaults: build/windows-x86/ and build/windows-x64/ZenkTranscoderLibrary.dll)
# The block loop is the innermost loop of the kernel with the most
# instructions (the head and tail loops convert one pixel pair at a time).
set -euo pipefail
cd "$(dirname "$0")/.."
dll32=${1:-build/windows-x86/ZenkTranscoderLibrary.dll}
dll64=${2:-build/windows-x64/ZenkTranscoderLibrary.dll}

# label | substrings the kernel's demangled name holds (level namespace
# dropped), separated by ; (the kernel templates' names: a renamed template
# needs its line changed here, and the script stops on a line that names no
# kernel, or more than one). YuvLayout 0 is UYVY, 3 planar; AlphaForm 0 is
# the constant alpha word, 3 none (BGR24).
kernels=(
  "UYVY16I_BGR32I|FrameKernel<yuv_to_rgb::Decoder<;(YuvLayout)0, (yuv_to_rgb::AlphaForm)0,"
  "UYVY16I_BGR24I|FrameKernel<yuv_to_rgb::Decoder<;(YuvLayout)0, (yuv_to_rgb::AlphaForm)3,"
  "Y8PUV8I_BGR32I|FrameKernel<yuv_to_rgb::Decoder<;(YuvLayout)3, (yuv_to_rgb::AlphaForm)0,"
  "BGR32I_UYVY16I|FrameKernel<rgb_to_yuv::Encoding<;Bgr32Pixels;(YuvLayout)0>, false, false>"
  "BGR24I_UYVY16I|FrameKernel<rgb_to_yuv::Encoding<;Bgr24Pixels;(YuvLayout)0>, false, false>"
  "BGR32I_Y8PUV8I|FrameKernel<rgb_to_yuv::Encoding<;Bgr32Pixels;PlanarLayout<;>, false, false>"
  "UYVY16I_UYVY16I 601 to 709|FrameKernel<yuv_to_yuv::MatrixChange<;(YuvLayout)0, (YuvLayout)0, (yuv_to_yuv::LumaRule)0>"
)

# Prints "instructions stack-operands" of the block loop of the one kernel
# of `level` in `dll` whose name holds every substring.
block_loop() {
  local dll=$1 objdump=$2 nm=$3 level=$4 substrings=$5 symbol
  symbol=$("$nm" "$dll" | awk '$2 ~ /^[Tt]$/ {print $3}' | sort -u |
           paste - <("$nm" "$dll" | awk '$2 ~ /^[Tt]$/ {print $3}' | sort -u | sed 's/^_\(_Z\)/\1/' | c++filt) |
           awk -F'\t' -v level="$level" -v want="$substrings" '
             { name = $2; prefix = "zenk::" level "::"
               if (index(name, "void " prefix "FrameKernel<") != 1) next
               gsub(prefix, "", name)
               if (index(name, "Access<true, false>") == 0) next
               n = split(want, part, ";"); for (i = 1; i <= n; ++i) if (index(name, part[i]) == 0) next
               print $1; ++found }
             END { if (found != 1) exit 1 }')
  "$objdump" -d --no-show-raw-insn --disassemble="$symbol" "$dll" | awk '
    function hex(s,   n, i) { n = 0; s = tolower(s); sub(/^ */, "", s); for (i = 1; i <= length(s); ++i) n = n * 16 + index("0123456789abcdef", substr(s, i, 1)) - 1; return n }
    /^ *[0-9a-f]+:\t/ {
      split($0, p, "\t"); ++n; at[n] = hex(p[1]); text[n] = p[2]
      if (text[n] ~ /^mov +%[er]sp,%[er]bp/) frame = 1
      if (text[n] ~ /^j/ && match(text[n], /[0-9a-f]+ </)) {
        target = hex(substr(text[n], RSTART, RLENGTH - 2))
        if (target < at[n]) { ++loops; from[loops] = target; to[loops] = at[n] }
      }
    }
    END {
      best = 0
      for (l = 1; l <= loops; ++l) {
        inner = 1
        for (m = 1; m <= loops; ++m)
          if (m != l && from[m] >= from[l] && to[m] <= to[l] && (from[m] != from[l] || to[m] != to[l])) inner = 0
        if (!inner) continue
        count = 0; loads = 0; stores = 0
        for (i = 1; i <= n; ++i) {
          if (at[i] < from[l] || at[i] > to[l]) continue
          ++count
          t = text[i]; sub(/ +#.*/, "", t)
          if (!(t ~ /\(%[er]sp/ || (frame && t ~ /\(%[er]bp/))) continue
          # AT&T order: a stack address as the last operand is a store.
          if (t ~ /\(%[er][sb]p[^)]*\)$/ && t ~ /,/) ++stores; else ++loads
        }
        if (count > best) { best = count; best_loads = loads; best_stores = stores }
      }
      print best, best_loads, best_stores
    }'
}

echo "| kernel | level | instructions, 32-bit | 64-bit | 32 / 64 | stack loads, 32-bit | 64-bit | stack stores, 32-bit | 64-bit |"
echo "|---|---|---:|---:|---:|---:|---:|---:|---:|"
for row in "${kernels[@]}"; do
  label=${row%%|*}
  substrings=${row#*|}
  for level in sse2 avx2 avx512; do
    counts32=$(block_loop "$dll32" i686-w64-mingw32-objdump i686-w64-mingw32-nm "$level" "$substrings") &&
      counts64=$(block_loop "$dll64" x86_64-w64-mingw32-objdump x86_64-w64-mingw32-nm "$level" "$substrings") ||
      { echo "block-loops.sh: no single $level kernel for $label" >&2; exit 1; }
    read -r n32 l32 s32 <<<"$counts32"
    read -r n64 l64 s64 <<<"$counts64"
    echo "| $label | $level | $n32 | $n64 | $(awk -v a="$n32" -v b="$n64" 'BEGIN { printf "%.2f", a / b }') |" \
         "$l32 | $l64 | $s32 | $s64 |"
  done
done
