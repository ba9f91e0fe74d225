# 64 bits, the byte of the lowest value first, and char without a sign.
set(QZLOG_HOST arm64)
set(QZLOG_HOST_COMPILER aarch64-linux-gnu-g++)
set(QZLOG_HOST_EMULATOR qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
