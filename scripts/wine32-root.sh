#!/usr/bin/env bash
# Builds the route by which the 32-bit Windows suite runs under Wine on an
# x86-64 kernel that starts no 32-bit program: an i386 Debian root of its
# own, with Debian's wine and wine32 installed in it, whose i386 programs
# start through QEMU's user-mode emulator registered in a private
# binfmt_misc (scripts/wine32 runs a program there). Everything comes from
# the Debian mirror apt already uses.
#   scripts/wine32-root.sh [ROOT]     (default build/wine32-root; root needed)
# A step already done in ROOT is not done again; CI starts from a fresh
# clone, so there it builds the whole route.
#
# Why each piece:
#  - wine32 cannot be installed beside the machine's own amd64 packages when
#    the i386 index of a suite lags the amd64 one (a mirror in mid-sync), and
#    could not start anyway: the kernel refuses i386 programs. In a root of
#    its own, from bookworm main alone, every package agrees.
#  - Linux 6.7 and later give every user namespace a binfmt_misc of its own,
#    so the emulator is registered inside `unshare --user` and nothing
#    machine-wide changes. The F flag opens the emulator at registration,
#    so it serves the programs inside the root too.
#  - QEMU: Debian's qemu-i386-static (7.2 in Debian 12) builds the root and
#    runs Wine. Wine's preloader (wine32-preloader) reserves Wine's address
#    ranges before anything else maps there; without it Wine probes them
#    with tens of thousands of mappings that QEMU 7.2 places elsewhere, three
#    minutes a Wine process here instead of one second.
#  - QEMU 7.2 crashes a Wine program that starts several threads of its own
#    ("uncaught target signal 11"), so the concurrency test runs under the
#    qemu-i386 of bookworm-backports (10.0), unpacked beside the root, not
#    installed: scripts/wine32 takes it with ZENK_WINE32_QEMU=backports.
#    QEMU 10 has a fault of its own: a VINSERTI128 that loads the last 16
#    bytes before an inaccessible page faults (processors and QEMU 7.2 load
#    them), so the guard-page checks of the AVX2 kernels cannot run under it.
#  Exit status 3: this machine cannot provide the route (no user namespaces
#  with a binfmt_misc of their own); 4: the mirror did not deliver it.
#  - QEMU leaves the trap number of a 32-bit signal context at -1, and Wine's
#    fault handlers read it: a library preloaded in the root
#    (scripts/wine32-trapno.c) fills it from the signal, so that a page fault
#    becomes an access violation as on Windows.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
repo=$(dirname "$here")
root=$(realpath -m "${1:-$repo/build/wine32-root}")
work="$root.work"
export DEBIAN_FRONTEND=noninteractive LC_ALL=C

step() { printf '  [%s] %s\n' "$(date -u +%H:%M:%S)" "$*"; }
need_root() { [ "$(id -u)" -eq 0 ] || { echo "wine32-root.sh: run as root (debootstrap, chroot)" >&2; exit 1; }; }
need_root

# Linux 6.7 and later mount a fresh binfmt_misc in a user namespace.
if ! unshare --user --map-root-user --mount sh -c \
     'mount -t binfmt_misc binfmt_misc /proc/sys/fs/binfmt_misc' 2>/dev/null; then
  echo "wine32-root.sh: this kernel ($(uname -r)) gives a user namespace no binfmt_misc of its own" >&2
  exit 3
fi

# The machine's own tools: debootstrap, the static 7.2 emulator, a 32-bit C
# compiler for the preload library.
missing=()
for p in debootstrap qemu-user-static gcc-multilib; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  apt-get update || echo "apt-get update reported a failure; trying the install anyway"
  apt-get install -y --no-install-recommends "${missing[@]}"
fi

# The Debian mirror apt uses for the release this machine runs.
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirror=$(apt-get indextargets --format '$(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
         awk -v c="$codename" '$1 == c { print $2; exit }')
[ -n "$mirror" ] || { echo "no apt source for $codename found" >&2; exit 1; }
step "mirror $mirror, suite $codename"
mkdir -p "$work"

# ---- QEMU from backports, for Wine programs with threads of their own:
# downloaded as a package and unpacked, not installed.
qemu_bp="$work/qemu-backports/usr/bin/qemu-i386"
if [ ! -x "$qemu_bp" ]; then
  step "QEMU from $codename-backports"
  lists="$work/apt-lists"
  mkdir -p "$lists/partial" "$work/debs"
  printf 'deb %s %s-backports main\n' "$mirror" "$codename" > "$work/backports.list"
  apt_bp=(-o Dir::Etc::SourceList="$work/backports.list" -o Dir::Etc::SourceParts=/dev/null
          -o Dir::State::Lists="$lists" -o Dir::Cache::archives="$work/debs" -o APT::Get::List-Cleanup=0
          -o APT::Sandbox::User=root)
  if apt-get "${apt_bp[@]}" update &&
     (cd "$work/debs" && apt-get "${apt_bp[@]}" download "qemu-user/$codename-backports"); then
    rm -rf "$work/qemu-backports" && mkdir -p "$work/qemu-backports"
    dpkg-deb --fsys-tarfile "$work"/debs/qemu-user_*.deb | tar -x -C "$work/qemu-backports" ./usr/bin/qemu-i386
    rm -f "$work"/debs/qemu-user_*.deb
    # Static, so that it starts in any root.
    file -L "$qemu_bp" | grep -Eq 'static(ally|-pie) linked' || { echo "$qemu_bp is not static" >&2; exit 1; }
  fi
  [ -x "$qemu_bp" ] || step "QEMU from $codename-backports could not be had: programs with threads cannot run"
fi

# ---- The root: first stage here, second stage inside under the emulator.
if [ ! -e "$root/.zenk-base" ]; then
  step "debootstrap i386 $codename (first stage)"
  rm -rf "$root"
  debootstrap --foreign --arch=i386 --variant=minbase "$codename" "$root" "$mirror" || exit 4
  step "second stage under qemu-i386"
  # Device nodes cannot be made in a user namespace: as in a container,
  # debootstrap uses the bound /dev instead.
  container=lxc "$here/wine32" --root "$root" -- /debootstrap/debootstrap --second-stage
  printf 'deb %s %s main\n' "$mirror" "$codename" > "$root/etc/apt/sources.list"
  touch "$root/.zenk-base"
fi

if [ ! -e "$root/.zenk-wine" ]; then
  step "wine and wine32 inside the root"
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  "$here/wine32" --root "$root" -- sh -c 'apt-get update && DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends wine wine32 wine32-preloader && apt-get clean' || exit 4
  touch "$root/.zenk-wine"
fi

# ---- The trap-number library, preloaded into every program of the root.
step "trap-number preload library"
gcc -m32 -O2 -Wall -Wextra -Werror -shared -fPIC -o "$root/usr/local/lib/zenk-trapno.so" "$here/wine32-trapno.c"
echo /usr/local/lib/zenk-trapno.so > "$root/etc/ld.so.preload"

# ---- The Wine prefix.
if [ ! -e "$root/.zenk-prefix" ]; then
  step "Wine prefix"
  "$here/wine32" --root "$root" -- wineboot --init
  touch "$root/.zenk-prefix"
fi
step "ready: $("$here/wine32" --root "$root" -- wine --version) under $(qemu-i386-static --version | head -1)"
