#!/usr/bin/env bash
# Proves from a Windows DLL's own code that its AVX2 and AVX-512 kernels are
# reached only through the level tables the exports read after the
# processor check, so that a processor without those instructions never
# runs one. No machine here can run the 32-bit DLL's AVX-512 kernels (no
# emulator has AVX-512), so for them this is the check that stands.
#   scripts/check-level-dispatch.sh DLL OBJDUMP [NM]
# (OBJDUMP and NM of the DLL's mingw-w64 binutils; NM defaults to OBJDUMP
# with nm for objdump.) Needs the DLL's symbol table (not stripped).
#
# Rules, over every function and every pointer of the image:
#  1. An instruction beyond SSE2 (VEX or EVEX encoded, ymm/zmm or mask
#     registers) appears only in functions of the namespaces zenk::avx2 and
#     zenk::avx512, and an AVX-512 one only in zenk::avx512.
#  2. A function of those namespaces is entered (called, jumped to, or its
#     address taken, in code or in data) only from its own level: its own
#     level's functions, or its own level's data (the level's kernel sets).
#  3. Data of a wider level (a kernel set) is referred to only from its own
#     level, or from a level array: an object of three pointers, to the
#     SSE2, the AVX2 and the AVX-512 object of the same name, in that order.
#  4. Every function that reads a level array also calls
#     zenk::ActiveIsaLevel(), the level chosen at load from the processor
#     and its operating system.
# It fails when it finds nothing to check at some level: a rename that hid
# the kernels from it must not pass as a clean bill.
set -euo pipefail
dll=$1
objdump=$2
nm=${3:-${objdump%objdump}nm}

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
"$nm" -n "$dll" > "$tmp/symbols"
"$objdump" -d --no-show-raw-insn "$dll" > "$tmp/code"
"$objdump" -p "$dll" > "$tmp/headers"
"$objdump" -s "$dll" > "$tmp/contents"
# Pointers are 8 bytes in a 64-bit image, whose relocations are DIR64.
ptr_width=4
grep -q 'DIR64$' "$tmp/headers" && ptr_width=8

awk -v ptr_width="$ptr_width" '
# Addresses are integers above 2^32 in a 64-bit image: keys must keep every digit.
BEGIN { CONVFMT = "%.0f"; OFMT = "%.0f" }
function hex(s,   n, i, c) {
  n = 0; s = tolower(s); sub(/^ *(0x)?/, "", s)
  for (i = 1; i <= length(s); ++i) { c = index("0123456789abcdef", substr(s, i, 1)); if (c == 0) break; n = n * 16 + c - 1 }
  return n
}
# The level of a symbol from its mangled name (a leading underscore on
# 32-bit targets; N may carry const and reference qualifiers): 0 sse2, 1 avx2, 2 avx512, -1 outside the level namespaces.
function level(name) {
  sub(/^_+/, "", name)
  if (name ~ /^ZZ?N[rVKRO]*4zenk4sse2/) return 0
  if (name ~ /^ZZ?N[rVKRO]*4zenk4avx2/) return 1
  if (name ~ /^ZZ?N[rVKRO]*4zenk6avx512/) return 2
  return -1
}
# The symbol holding address a (binary search over the starts).
function owner(a,   lo, hi, mid) {
  lo = 1; hi = nsym
  if (nsym == 0 || a < start[1]) return 0
  while (lo < hi) { mid = int((lo + hi + 1) / 2); if (start[mid] <= a) lo = mid; else hi = mid - 1 }
  return lo
}
function hexstr(n,   s) { s = ""; do { s = substr("0123456789abcdef", n % 16 + 1, 1) s; n = int(n / 16) } while (n > 0); return "0x" s }
function fail(msg) { print "level dispatch: " msg; ++failures }
function refer(from, to, how,   t, f) {
  t = entry[to]; if (t == "") return
  f = owner(from)
  ++nrefs; ref_from[nrefs] = f; ref_to[nrefs] = t; ref_at[nrefs] = from; ref_how[nrefs] = how
}

FILENAME == ARGV[1] {  # nm -n: address, type, name
  if (NF < 3 || $3 ~ /^\./) next
  a = hex($1)
  if (nsym > 0 && start[nsym] == a) { if (lvl[nsym] < 0 && level($3) >= 0) { name[nsym] = $3; lvl[nsym] = level($3) } next }
  ++nsym; start[nsym] = a; name[nsym] = $3; lvl[nsym] = level($3); code[nsym] = ($2 ~ /^[Tt]$/)
  entry[a] = nsym
  if ($3 ~ /^_*ZN4zenk14ActiveIsaLevelEv$/) active = nsym
  next
}
FILENAME == ARGV[2] {  # objdump -d: instructions, and branch and rip-relative targets
  if ($0 ~ /^[0-9a-f]+ <.*>:$/) next
  if ($0 !~ /^ *[0-9a-f]+:\t/) next
  split($0, part, "\t"); at = hex(part[1]); insn = part[2]
  f = owner(at)
  if (insn ~ /^v/ || insn ~ /%[yz]mm|%k[0-7]/) wide[f] = 1
  if (insn ~ /%zmm|%k[0-7]|%[xy]mm(1[6-9]|2[0-9]|3[01])/) evex[f] = 1
  if (match(insn, /[0-9a-f]+ <[^>]*>/)) {
    split(substr(insn, RSTART, RLENGTH), tok, " ")
    refer(at, hex(tok[1]), "code")
  }
  next
}
FILENAME == ARGV[3] {  # objdump -p: image base and base relocations
  if ($1 == "ImageBase") base = hex($2)
  if ($1 == "reloc" && $NF ~ /^(HIGHLOW|DIR64)$/) {
    s = $0; sub(/.*\[/, "", s); sub(/\].*/, "", s)
    site = base + hex(s); width = ($NF == "DIR64") ? 8 : 4
    for (i = 0; i < width; ++i) want[site + i] = 1
    ++nsites; sites[nsites] = site; site_width[nsites] = width
  }
  next
}
FILENAME == ARGV[4] {  # objdump -s: the bytes at the relocation sites
  if ($0 !~ /^ [0-9a-f]+ /) next
  a = hex($1)
  for (w = 2; w <= 5 && $w ~ /^[0-9a-f]+$/; ++w)
    for (i = 0; i < length($w) / 2; ++i) {
      b = a + (w - 2) * 4 + i
      if (b in want) byte[b] = hex(substr($w, 2 * i + 1, 2))
    }
  next
}
END {
  for (k = 1; k <= nsites; ++k) {
    v = 0
    for (i = site_width[k] - 1; i >= 0; --i) v = v * 256 + byte[sites[k] + i]
    refer(sites[k], v, "pointer")
    slot_of[owner(sites[k]), sites[k]] = v
  }
  for (f = 1; f <= nsym; ++f) {
    if (!code[f]) continue
    if (wide[f]) ++wide_count[lvl[f] < 0 ? "outside" : lvl[f]]
    if (wide[f] && lvl[f] < 1) fail("rule 1: " name[f] " runs instructions beyond SSE2 outside the AVX2 and AVX-512 namespaces")
    if (evex[f] && lvl[f] == 1) fail("rule 1: " name[f] " runs AVX-512 instructions in the AVX2 namespace")
  }
  # Level arrays: three pointers at consecutive slots to the same name at each level.
  for (k = 1; k <= nrefs; ++k) {
    o = ref_from[k]; t = ref_to[k]
    if (code[o] || lvl[o] >= 0 || lvl[t] < 0 || o in is_array || o in not_array) continue
    p = pointer_width(o)
    n0 = slot_of[o, start[o]]; n1 = slot_of[o, start[o] + p]; n2 = slot_of[o, start[o] + 2 * p]
    a0 = entry[n0]; a1 = entry[n1]; a2 = entry[n2]
    if (a0 != "" && a1 != "" && a2 != "" && lvl[a0] == 0 && lvl[a1] == 1 && lvl[a2] == 2 &&
        same_name(name[a0], name[a1]) && same_name(name[a0], name[a2]) && !((o, start[o] + 3 * p) in slot_of))
      is_array[o] = 1
    else
      not_array[o] = 1
  }
  for (k = 1; k <= nrefs; ++k) {
    o = ref_from[k]; t = ref_to[k]
    if (lvl[t] >= 1 && lvl[o] != lvl[t] && !(o in is_array && !code[t]))
      fail((code[t] ? "rule 2: " : "rule 3: ") name[t] " is reached from " (o ? name[o] : "an unnamed place") \
           " (" ref_how[k] " at " hexstr(ref_at[k]) ")" ", outside its level")
    if (t in is_array && code[o]) { reads[o] = 1; ++array_reads }
    if (t == active && code[o]) checks[o] = 1
    if (lvl[t] >= 1 && code[t] && lvl[o] == lvl[t] && !code[o]) ++table_entries[lvl[t]]
  }
  for (o in reads) { ++readers; if (!(o in checks)) fail("rule 4: " name[o] " reads a level array without calling zenk::ActiveIsaLevel()") }
  arrays = 0; for (o in is_array) ++arrays
  if (active == "") fail("zenk::ActiveIsaLevel() not found in the symbol table")
  for (l = 1; l <= 2; ++l) if (!wide_count[l] || !table_entries[l])
    fail("nothing to check at level " (l == 1 ? "avx2" : "avx512") ": no wide functions or no kernel-set entries found")
  if (!arrays || !readers) fail("no level array, or nothing that reads one, found")
  printf "level dispatch: %d AVX2 and %d AVX-512 functions with wider instructions, %d and %d kernel-set entries;", \
    wide_count[1], wide_count[2], table_entries[1], table_entries[2]
  printf " %d level arrays, read by %d functions; %d references checked\n", arrays, readers, nrefs
  if (failures) { print "level dispatch: " failures " violations"; exit 1 }
}
function pointer_width(o) { return ptr_width }
function same_name(a, b) { sub(/^_*ZZ?N[rVKRO]*4zenk(4sse2|4avx2|6avx512)/, "", a); sub(/^_*ZZ?N[rVKRO]*4zenk(4sse2|4avx2|6avx512)/, "", b); return a == b }
' "$tmp/symbols" "$tmp/code" "$tmp/headers" "$tmp/contents"
