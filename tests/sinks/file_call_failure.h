#ifndef QZLOG_TESTS_SINKS_FILE_CALL_FAILURE_H
#define QZLOG_TESTS_SINKS_FILE_CALL_FAILURE_H

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace qz_test {

/// The calls of the test program on files that can fail on purpose; not those that the C library makes for itself.
enum class FileCallKind { kOpen, kWrite, kSync, kCut, kUnlink, kClose, kMap, kRoom, kCount };

/// While it lives, the `nth` such call (from 1) of the process fails with `error`: `times` in a row. A write may
/// transfer a half of its bytes first. One at a time.
class FileCallFailure {
 public:
  static constexpr int kFromThenOn = 1 << 30;
  /// As an error: the process is killed instead, in the middle of a write when that transfers a part.
  static constexpr int kKilled = -1;

  FileCallFailure(FileCallKind kind, int nth, int error, int times = 1, bool writes_half = false);
  /// A killed write transfers so many of its bytes first.
  static void set_part(std::size_t bytes);
  /// From now on nothing can be taken from the end of a file, besides what else fails.
  static void set_cut_fails(bool fails);
  ~FileCallFailure();
  FileCallFailure(const FileCallFailure&) = delete;
  FileCallFailure& operator=(const FileCallFailure&) = delete;

  bool happened() const;
};

/// While it lives, notes what of which file is brought to the disk. One at a time.
class SyncNotes {
 public:
  SyncNotes();
  ~SyncNotes();
  SyncNotes(const SyncNotes&) = delete;
  SyncNotes& operator=(const SyncNotes&) = delete;

  /// So many bytes of the file from its beginning.
  static off_t synced_bytes(const std::string& path);
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_FILE_CALL_FAILURE_H
