# 64 bits, the byte of the highest value first, and char without a sign.
set(QZLOG_HOST s390x)
set(QZLOG_HOST_COMPILER s390x-linux-gnu-g++)
set(QZLOG_HOST_EMULATOR qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
