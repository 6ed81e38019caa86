#!/usr/bin/env bash
# Installs the Debian packages the build needs, and only those missing:
# nothing happens (and no root is needed) when they are all there.
#   scripts/install-deps.sh          the library, tests, tools, GStreamer element and benchmarks (linux-x64)
#   scripts/install-deps.sh --all    also the 32-bit, Windows (and wine64, and what builds the
#                                    emulated 32-bit Wine route), 64-bit Arm, sanitizer and fuzzing toolchains
set -euo pipefail

packages=(cmake ninja-build g++ googletest pkg-config file binutils
          libcli11-dev libpng-dev libbenchmark-dev libyuv-dev libswscale-dev
          libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools gstreamer1.0-plugins-base
          help2man)
if [ "${1:-}" = "--all" ]; then
  packages+=(gcc-multilib g++-multilib mingw-w64 g++-mingw-w64-i686 binutils-mingw-w64-i686
             g++-mingw-w64-x86-64 binutils-mingw-w64-x86-64 wine64 debootstrap qemu-user-static
             clang libclang-rt-14-dev
             binutils-aarch64-linux-gnu libstdc++-12-dev-arm64-cross qemu-user libsimde-dev)
fi
# Off x86 the kernels compile through SIMDe.
case "$(dpkg --print-architecture)" in amd64 | i386) ;; *) packages+=(libsimde-dev) ;; esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
# One index failing while a mirror syncs is not fatal; the install decides.
$sudo apt-get update || echo "apt-get update reported a failure; trying the install anyway"
$sudo apt-get install -y --no-install-recommends "${missing[@]}"
