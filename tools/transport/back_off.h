#ifndef QZLOG_TOOLS_TRANSPORT_BACK_OFF_H
#define QZLOG_TOOLS_TRANSPORT_BACK_OFF_H

#include <algorithm>
#include <chrono>
#include <random>

namespace qzlog_tool {

/// How long to wait before the next attempt: longer each time, and not quite as long as others who lost the same
/// receiver at the same moment.
class BackOff {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Limits {
    Milliseconds first{100};
    Milliseconds longest{30000};
  };

  explicit BackOff(const Limits& limits, unsigned seed = std::random_device()())
      : limits_(limits), random_(seed), next_(limits.first) {}

  /// Half to all of the time that is due; the next one is twice as long, up to the longest.
  Milliseconds next() {
    const Milliseconds due = next_;
    next_ = std::min(limits_.longest, next_ * 2);
    return Milliseconds(std::uniform_int_distribution<Milliseconds::rep>((due.count() + 1) / 2, due.count())(random_));
  }
  /// Something got there.
  void reset() { next_ = limits_.first; }

 private:
  Limits limits_;
  std::minstd_rand random_;
  Milliseconds next_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_BACK_OFF_H
