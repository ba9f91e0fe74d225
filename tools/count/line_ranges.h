#ifndef QZLOG_TOOLS_COUNT_LINE_RANGES_H
#define QZLOG_TOOLS_COUNT_LINE_RANGES_H

#include <cstdint>
#include <iterator>
#include <map>

namespace qzlog_tool {

/// Numbers of lines, which follow each other for the most part: memory is taken by the gaps.
class LineRanges {
 public:
  /// The first number of each range to its last one; ranges neither overlap nor touch.
  using Ranges = std::map<std::uint64_t, std::uint64_t>;

  /// Adds `first` to `last` (not before it) and returns how many of them are new.
  std::uint64_t add(std::uint64_t first, std::uint64_t last);
  /// How many of `first` to `last` it has.
  std::uint64_t count(std::uint64_t first, std::uint64_t last) const;

  const Ranges& ranges() const noexcept { return ranges_; }
  bool operator==(const LineRanges&) const = default;

 private:
  Ranges::const_iterator first_behind(std::uint64_t number) const;

  Ranges ranges_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_LINE_RANGES_H
