#ifndef QZLOG_SHIP_KAFKA_SETTLED_OFFSETS_H
#define QZLOG_SHIP_KAFKA_SETTLED_OFFSETS_H

#include <cstdint>
#include <deque>
#include <optional>

namespace qzlog_ship {

/// Which offsets of a partition were given out and which of those are settled: a group remembers one number for each
/// partition, up to which everything is.
class SettledOffsets {
 public:
  /// In their order.
  void give_out(std::int64_t offset) { given_.push_back({offset, false}); }

  void settle(std::int64_t offset) {
    for (Given& each : given_) {
      if (each.offset == offset) each.is_settled = true;
      if (each.offset >= offset) break;
    }
    for (; !given_.empty() && given_.front().is_settled; given_.pop_front()) next_ = given_.front().offset + 1;
  }

  /// Behind what is settled without a gap; nothing where nothing was since it was last asked.
  std::optional<std::int64_t> take_next() {
    std::optional<std::int64_t> next;
    next.swap(next_);
    return next;
  }

 private:
  struct Given {
    std::int64_t offset;
    bool is_settled;
  };

  std::deque<Given> given_;  // from the first that is not settled on
  std::optional<std::int64_t> next_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_KAFKA_SETTLED_OFFSETS_H
