#ifndef QZLOG_FOUNDATION_FILE_HANDLE_H
#define QZLOG_FOUNDATION_FILE_HANDLE_H

#include <cstdio>
#include <memory>

#include "foundation/qz_libc.h"

namespace qzlog {

struct FileCloser {
  void operator()(std::FILE* file) const { QZ_fclose(file); }
};

/// An open stdio stream, closed with its holder, or null.
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_FILE_HANDLE_H
