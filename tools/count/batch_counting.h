#ifndef QZLOG_TOOLS_COUNT_BATCH_COUNTING_H
#define QZLOG_TOOLS_COUNT_BATCH_COUNTING_H

#include <cstdint>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "ship/transport.h"
#include "tools/count/count_batch.h"

namespace qzlog_tool {

/// Counts entries by day and ID, and keeps which lines they came in.
class BatchCounting {
 public:
  /// Counts the entry of a line that came in a record: on the local date of its time, of when the receiver took it
  /// where it has none, today where that is not known either. False, with nothing counted, where that is not in the
  /// years 1 to 9999.
  bool add(const qz_LOG_EntryLine& line, const qzlog_received& record);

  /// How many lines are covered.
  std::uint64_t size() const { return size_; }
  const CountBatch& batch() const { return batch_; }
  void clear();

 private:
  CountBatch batch_;
  std::uint64_t size_ = 0;
};

/// What stands for a line that has no writer and number: of the identity that it was delivered with; where it has none,
/// of the line and its place at the receiver.
LineDigest line_digest(const qzlog_received& record);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_BATCH_COUNTING_H
