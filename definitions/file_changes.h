#ifndef QZLOG_DEFINITIONS_FILE_CHANGES_H
#define QZLOG_DEFINITIONS_FILE_CHANGES_H

#include <sys/stat.h>

#include <cstdint>

#include "foundation/no_copies.h"

namespace qzlog {

/// Whether an open file still is what was read of it. The file is looked at once in a tick of the system's clock, of a
/// few milliseconds. For one thread at a time.
class FileChanges : public qz_UTIL_no_inadvertant_copies {
 public:
  /// The descriptor stays the caller's, open as long as this is used.
  explicit FileChanges(int descriptor) noexcept : descriptor_(descriptor) {}

  /// Whether what was read before the call may not be in the file any more: it was written to since the last call, or a
  /// moment ago, when its times do not tell one write from the next, or cannot be looked at.
  bool may_have_changed() noexcept;

 private:
  int descriptor_;
  std::int64_t tick_ = -1;
  bool is_doubtful_ = true;  // for the rest of this tick
  struct stat seen_ {};
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_FILE_CHANGES_H
