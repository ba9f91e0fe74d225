#ifndef QZLOG_COUNTER_FILE_STAMP_H
#define QZLOG_COUNTER_FILE_STAMP_H

#include <sys/stat.h>

namespace qzlog {

/// Which file a descriptor stands for, its size, and when it was changed last. A file with another stamp was changed;
/// one with the same was not, as far as the times of its file system tell one moment from the next.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  long long size = 0;
  long long modified_seconds = 0;
  long modified_nanoseconds = 0;
  long long changed_seconds = 0;
  long changed_nanoseconds = 0;
  bool is_regular_file = false;  // false, too, when the descriptor tells nothing

  static FileStamp of(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) return {};
    return {status.st_dev,          status.st_ino,         status.st_size,         status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec, S_ISREG(status.st_mode)};
  }
  bool operator==(const FileStamp&) const = default;
};

}  // namespace qzlog

#endif  // QZLOG_COUNTER_FILE_STAMP_H
