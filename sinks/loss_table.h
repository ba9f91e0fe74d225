#ifndef QZLOG_SINKS_LOSS_TABLE_H
#define QZLOG_SINKS_LOSS_TABLE_H

#include <atomic>
#include <ctime>
#include <string>
#include <vector>

#include "foundation/locks.h"

namespace qzlog {

/// What was lost, by event and level, until the log has been told. Any thread; noting a loss needs no memory.
class LossTable {
 public:
  struct Row {
    unsigned id;
    unsigned level;
    unsigned count;
    std::timespec since;  // the first of them
  };

  void add(unsigned id, unsigned level, const std::timespec& now, unsigned count = 1) noexcept;
  bool has_any() const noexcept { return rows_used_.load(std::memory_order_relaxed) != 0; }
  /// In the order in which they were lost first. std::bad_alloc.
  std::vector<Row> rows() const;
  /// The log was told of these, which rows() gave.
  void take(const std::vector<Row>& rows) noexcept;

 private:
  /// What is lost of further events is counted in the last row, with the ID and level that it was begun with.
  static constexpr unsigned kRows = 256;

  mutable Mutex mutex_;
  std::atomic<unsigned> rows_used_{0};
  Row rows_[kRows];
};

/// What lines tell of entries that are not there, which is the member's name.
enum class ToldOf {
  kLost,  ///< something did not work
  kHeld,  ///< they were over a limit
};

/// The rows as a body of a line: `"lost":[{"id":1001,"level":3,"count":12,"since":"TIME"},...]}`, or the same of
/// "held".
void append_told_body(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_SINKS_LOSS_TABLE_H
