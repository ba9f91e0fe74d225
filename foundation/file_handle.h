#ifndef QZLOG_FOUNDATION_FILE_HANDLE_H
#define QZLOG_FOUNDATION_FILE_HANDLE_H

#include <cstdio>
#include <memory>

#include "foundation/qz_libc.h"

struct qz_FileCloser {
  void operator()(std::FILE* file) const { QZ_fclose(file); }
};

/// An open stdio stream, closed with its holder, or null.
using qz_FileHandle = std::unique_ptr<std::FILE, qz_FileCloser>;

#endif  // QZLOG_FOUNDATION_FILE_HANDLE_H
