# Cross compilation for a host whose name, compiler and emulator the including file has set, against the Debian packages of that host
# that make_sysroot.sh has unpacked.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${QZLOG_HOST})
set(CMAKE_CXX_COMPILER ${QZLOG_HOST_COMPILER})
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/hosts/${QZLOG_HOST}/sysroot)
file(REAL_PATH ${CMAKE_SYSROOT} CMAKE_SYSROOT)

# Programs are those of this machine, everything else is the host's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

if(QZLOG_HOST STREQUAL i686 AND CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL x86_64)
  # This processor runs the host's programs. They name the loader and the libraries that they need, and so start as any other;
  # an old RPATH, because a RUNPATH does not hold for what libraries need themselves.
  set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--dynamic-linker=${CMAKE_SYSROOT}/lib/${QZLOG_HOST_LOADER} -Wl,--disable-new-dtags")
  set(CMAKE_BUILD_RPATH ${CMAKE_SYSROOT}/lib/${QZLOG_HOST_TRIPLET} ${CMAKE_SYSROOT}/usr/lib/${QZLOG_HOST_TRIPLET})
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/emulate.sh ${QZLOG_HOST_EMULATOR} ${CMAKE_SYSROOT})
endif()
