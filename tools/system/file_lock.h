#ifndef QZLOG_TOOLS_SYSTEM_FILE_LOCK_H
#define QZLOG_TOOLS_SYSTEM_FILE_LOCK_H

#include <sys/file.h>

#include <cerrno>

namespace qzlog_tool {

/// Waits for the lock of an open file or folder and holds it, against other commands. Where the file system has no
/// locks there is none.
class FileLock {
 public:
  explicit FileLock(int descriptor) noexcept : descriptor_(descriptor) {
    while (::flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock() { ::flock(descriptor_, LOCK_UN); }

 private:
  int descriptor_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_FILE_LOCK_H
