#include "tools/count/line_ranges.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

/// A whole 64-bit range has one number more than can be said; no writer has counted that far.
std::uint64_t size_of(std::uint64_t first, std::uint64_t last) {
  const std::uint64_t distance = last - first;
  return distance == UINT64_MAX ? distance : distance + 1;
}

}  // namespace

/// The first range that ends at the number or behind it.
LineRanges::Ranges::const_iterator LineRanges::first_behind(std::uint64_t number) const {
  auto at = ranges_.upper_bound(number);
  if (at != ranges_.begin() && std::prev(at)->second >= number) --at;
  return at;
}

std::uint64_t LineRanges::count(std::uint64_t first, std::uint64_t last) const {
  std::uint64_t count = 0;
  for (auto at = first_behind(first); at != ranges_.end() && at->first <= last; ++at) {
    count += size_of(std::max(first, at->first), std::min(last, at->second));
  }
  return count;
}

std::uint64_t LineRanges::add(std::uint64_t first, std::uint64_t last) {
  // Most come in their order.
  if (!ranges_.empty() && first != 0 && std::prev(ranges_.end())->second == first - 1) {
    std::prev(ranges_.end())->second = last;
    return size_of(first, last);
  }
  const std::uint64_t added = size_of(first, last) - count(first, last);
  if (added == 0) return 0;
  auto at = first_behind(first == 0 ? 0 : first - 1);
  while (at != ranges_.end() && (last == UINT64_MAX || at->first <= last + 1)) {
    first = std::min(first, at->first);
    last = std::max(last, at->second);
    at = ranges_.erase(at);
  }
  ranges_.emplace(first, last);
  return added;
}

}  // namespace qzlog_tool
