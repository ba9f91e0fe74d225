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

  /// There is nothing to be given out up to here, this offset left out.
  void pass_to(std::int64_t offset) {
    if (!given_.empty() && given_.back().offset >= offset - 1) return;
    given_.push_back({offset - 1, true});
    take_off();
  }

  void settle(std::int64_t offset) {
    for (Given& each : given_) {
      if (each.offset == offset) each.is_settled = true;
      if (each.offset >= offset) break;
    }
    take_off();
  }

  /// Behind what is settled without a gap; nothing where the group knows it.
  std::optional<std::int64_t> next() const { return next_ == told_ ? std::nullopt : next_; }
  /// The group knows that number now.
  void tell(std::int64_t next) { told_ = next; }

 private:
  struct Given {
    std::int64_t offset;
    bool is_settled;
  };

  void take_off() {
    for (; !given_.empty() && given_.front().is_settled; given_.pop_front()) next_ = given_.front().offset + 1;
  }

  std::deque<Given> given_;  // from the first that is not settled on
  std::optional<std::int64_t> next_;
  std::optional<std::int64_t> told_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_KAFKA_SETTLED_OFFSETS_H
