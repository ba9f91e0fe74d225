#ifndef QZLOG_SHARED_COUNTER_H
#define QZLOG_SHARED_COUNTER_H

#include "qzlog/export.h"

/// Counts per day and key in a counter file, for several threads of several processes at once: each count is in the
/// file exactly once when the call returns. The file is that of _qz_LOG_EntryCounter, whose reader is `qzlog count
/// show`; `qzlog render --count` and `qzlog count` may change it meanwhile.
///
/// A thread holds the file's advisory lock (flock) for the few microseconds that it writes. A program that changes the
/// file without that lock, as _qz_LOG_EntryCounter does, may take counts away; where a file system has no locks, other
/// processes may. A process that is killed leaves the record that it wrote old or new.
///
/// A file that is removed or replaced while it is open is let go of, and the next count goes to the file that has the
/// name then, which is made when there is none.
///
/// Any thread. A process that is forked goes on counting with the object that its parent made.
///
///     qz_LOG_SharedCounter counter("/var/lib/shop", "events");
///     counter.Increase(2026, 11, 23, 1001);
///     counter.IncreaseToday(1001);
class QZLOG_EXPORT qz_LOG_SharedCounter {
 public:
  /// Opens DIRECTORY/NAME.cnt, or makes it. Throws QZX_logging_illegal_argument for null,
  /// QZX_logging_file_operation_failed, with the path and the reason, when it cannot be opened for writing or is no
  /// regular file, and QZX_memory_alloc.
  qz_LOG_SharedCounter(const char* directory, const char* name);
  ~qz_LOG_SharedCounter();
  qz_LOG_SharedCounter(const qz_LOG_SharedCounter&) = delete;
  qz_LOG_SharedCounter& operator=(const qz_LOG_SharedCounter&) = delete;

  /// Adds `times` to the count of a day and key, modulo 2^32. Throws QZX_logging_illegal_argument for what is no day of
  /// the years 1 to 9999, and QZX_logging_file_operation_failed, with the path and the reason and nothing counted, when
  /// the file cannot be read or written, or has no room for another record within 2 GiB.
  void Increase(int year, int month, int day, int entry_key, unsigned int times = 1);
  /// The same for today on the local clock.
  void IncreaseToday(int entry_key, unsigned int times = 1);

  /// The file's absolute path; valid as long as the object.
  const char* GetPath() const;

 private:
  class QZLOG_NO_EXPORT Implementation;
  Implementation* implementation_;
};

#endif  // QZLOG_SHARED_COUNTER_H
