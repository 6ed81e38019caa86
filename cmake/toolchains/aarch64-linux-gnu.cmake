# 64-bit Arm Linux, cross-built on Debian with clang for the aarch64 target,
# on the cross packages' C and C++ runtimes (libstdc++-12-dev-arm64-cross,
# libc6-dev-arm64-cross) and linker (binutils-aarch64-linux-gnu). Debian's
# g++-aarch64-linux-gnu would do as well, but it conflicts with gcc-multilib,
# which the 32-bit x86 flavour needs on the same machine. The multiarch
# folders (/usr/include, and /usr/lib/aarch64-linux-gnu for libraries such as
# libpng-dev:arm64) are searched after the cross runtimes.
#
# Test programs run under qemu-user with the cross runtimes as their root.
# The C library is pinned to those too: where libc6:arm64 is installed beside
# them (libpng-dev:arm64 brings it), the dynamic loader would otherwise take
# its libc.so.6 from another build of glibc than itself, and the first thread
# a program starts hangs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER clang)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_LIBRARY_PATH=/usr/aarch64-linux-gnu/lib)
