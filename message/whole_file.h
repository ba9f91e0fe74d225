#ifndef QZLOG_MESSAGE_WHOLE_FILE_H
#define QZLOG_MESSAGE_WHOLE_FILE_H

#include <string>

namespace qzlog {

/// A file's bytes in memory, as they were when it was read: what happens to the file later does not reach them.
struct WholeFile {
  /// Absent is what the name does not lead to, or only those with other permissions, or what is no regular file; failed
  /// is what is or may be there and cannot be read, now or as a whole: no descriptor left, an error of the device or
  /// any other of the system, a file that was cut meanwhile, one too large for a bundle.
  enum class State : unsigned char { kAbsent, kRead, kFailed };
  State state = State::kAbsent;
  std::string bytes;
};

/// Throws std::bad_alloc.
WholeFile read_whole_file(const std::string& path);

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_WHOLE_FILE_H
