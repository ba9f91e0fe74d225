# 32-bit x86: long, size_t and pointers have four bytes, and doubles are wider in registers than in memory.
set(QZLOG_HOST i686)
set(QZLOG_HOST_COMPILER i686-linux-gnu-g++)
set(QZLOG_HOST_TRIPLET i386-linux-gnu)
set(QZLOG_HOST_LOADER ld-linux.so.2)
set(QZLOG_HOST_EMULATOR qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
