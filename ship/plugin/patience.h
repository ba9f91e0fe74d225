#ifndef QZLOG_SHIP_PLUGIN_PATIENCE_H
#define QZLOG_SHIP_PLUGIN_PATIENCE_H

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "ship/transport.h"

namespace qzlog_ship {

/// How long a call waits: as long as the host gives it, and not much longer once the command is to end. A signal may
/// come just before a wait, so that nothing is waited for longer than a slice at once:
///
///   Patience patience(host, timeout_ms, Patience::kToSend);
///   while (!patience.is_over()) wait_for_something(patience.slice());
class Patience {
 public:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;

  /// Once the command is to end: for a receiver that may be away, and for what one that is there may yet acknowledge.
  static constexpr Milliseconds kToOpen{1000};
  static constexpr Milliseconds kToSend{5000};

  /// The host has to outlive this object.
  Patience(const qzlog_host& host, std::uint32_t timeout_ms, Milliseconds once_ending)
      : host_(host), end_(Clock::now() + Milliseconds(timeout_ms)), once_ending_(once_ending) {}

  Clock::time_point end() {
    if (!is_ending_ && host_.is_ending(host_.context) != 0) {
      is_ending_ = true;
      end_ = std::min(end_, Clock::now() + once_ending_);
    }
    return end_;
  }
  bool is_over() { return Clock::now() >= end(); }
  /// 0 once it is over.
  Milliseconds left() { return std::max(std::chrono::ceil<Milliseconds>(end() - Clock::now()), Milliseconds(0)); }
  Milliseconds slice() { return std::min(left(), Milliseconds(200)); }

 private:
  const qzlog_host& host_;
  Clock::time_point end_;
  Milliseconds once_ending_;
  bool is_ending_ = false;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_PATIENCE_H
