# Cross-compiles for AArch64 Linux with Debian's compiler and runs what it builds under user-mode emulation of a
# processor without SVE.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_ASM_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# A fork may find GLib's allocator locked by another thread of the emulator, and the child then waits forever (GLib 2.74);
# malloc is safe. The programs do not see the variable.
set(CMAKE_CROSSCOMPILING_EMULATOR "env;G_SLICE=always-malloc;qemu-aarch64;-U;G_SLICE;-cpu;max,sve=off;-L;/usr/aarch64-linux-gnu")
