#!/usr/bin/env bash
# Makes 32-bit x86 Linux programs runnable on this machine, for the 32-bit
# test suites. Most x86-64 kernels run them natively; a kernel built without
# 32-bit support (some virtual machines) refuses them with "Exec format
# error". There the programs go through QEMU's user-mode emulator
# (Debian's qemu-user), registered with the kernel's binfmt_misc so that
# ctest, dlopen'ed libraries and child processes need nothing else: the
# kernels' results are the same bytes, only slower. Prints which way it is.
set -euo pipefail

probe_dir=$(mktemp -d)
trap 'rm -rf "$probe_dir"' EXIT
printf 'int main(void) { return 0; }\n' > "$probe_dir/probe.c"
gcc -m32 -o "$probe_dir/probe" "$probe_dir/probe.c"

if "$probe_dir/probe" 2>/dev/null; then
  echo "32-bit x86 programs run natively"
  exit 0
fi

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
if ! command -v qemu-i386 >/dev/null; then
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update || echo "apt-get update reported a failure; trying the install anyway"
  $sudo apt-get install -y --no-install-recommends qemu-user
fi
binfmt=/proc/sys/fs/binfmt_misc
[ -e "$binfmt/register" ] || $sudo mount -t binfmt_misc binfmt_misc "$binfmt"
if [ ! -e "$binfmt/zenk-i386" ]; then
  # An i386 ELF executable or shared object; F opens the emulator now, so
  # it serves any mount namespace later.
  magic='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  mask='\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  printf ':zenk-i386:M::%s:%s:%s:F' "$magic" "$mask" "$(command -v qemu-i386)" | $sudo tee "$binfmt/register" >/dev/null
fi
"$probe_dir/probe"
echo "32-bit x86 programs run through qemu-i386 (this kernel has no 32-bit support)"
