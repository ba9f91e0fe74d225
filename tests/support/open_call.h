#ifndef QZLOG_TESTS_SUPPORT_OPEN_CALL_H
#define QZLOG_TESTS_SUPPORT_OPEN_CALL_H

#include <fcntl.h>
#include <sys/types.h>

#include <cstdarg>

namespace qz_test {

/// For what stands in place of the C library's open(): hands the call on, with the arguments behind `flags`.
inline int hand_on_open(const char* path, int flags, va_list arguments) {
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  return openat(AT_FDCWD, path, flags, mode);
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_OPEN_CALL_H
