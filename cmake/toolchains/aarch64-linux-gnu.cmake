# 64-bit Arm Linux, cross-built with Debian's g++-aarch64-linux-gnu. Debian's
# cross compilers search the multiarch folders (/usr/include, and
# /usr/lib/aarch64-linux-gnu for libraries such as libpng-dev:arm64) after
# their own sysroot, so nothing more is set up here. Test programs run under
# qemu-user with the cross packages' C and C++ runtimes as their root. The C
# library is pinned to those too: where libc6:arm64 is installed beside them
# (libpng-dev:arm64 brings it), the dynamic loader would otherwise take its
# libc.so.6 from another build of glibc than itself, and the first thread a
# program starts hangs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_LIBRARY_PATH=/usr/aarch64-linux-gnu/lib)
