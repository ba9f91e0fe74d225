#include "tools/count/covered_lines.h"

#include <algorithm>

namespace qzlog_tool {

LineRanges& CoveredLines::ranges_of(std::string_view writer) {
  const auto found = writers_.find(writer);
  return found != writers_.end() ? found->second : writers_.emplace(writer, LineRanges()).first->second;
}

std::uint64_t CoveredLines::add(const CoveredLines& other) {
  std::uint64_t added = 0;
  for (const auto& [writer, numbers] : other.writers_) {
    LineRanges& own = ranges_of(writer);
    for (const auto& [first, last] : numbers.ranges()) added += own.add(first, last);
  }
  for (const LineDigest& digest : other.digests_) added += add(digest) ? 1 : 0;
  return added;
}

std::uint64_t CoveredLines::count(const CoveredLines& other) const {
  std::uint64_t count = 0;
  for (const auto& [writer, numbers] : other.writers_) {
    const auto own = writers_.find(writer);
    if (own == writers_.end()) continue;
    for (const auto& [first, last] : numbers.ranges()) count += own->second.count(first, last);
  }
  count +=
      static_cast<std::uint64_t>(std::count_if(other.digests_.begin(), other.digests_.end(),
                                               [this](const LineDigest& digest) { return digests_.contains(digest); }));
  return count;
}

std::uint64_t CoveredLines::size() const {
  std::uint64_t size = digests_.size();
  for (const auto& [writer, numbers] : writers_) size += numbers.count(0, UINT64_MAX);
  return size;
}

}  // namespace qzlog_tool
