#include "tools/choice/seen_numbers.h"

#include <iterator>

namespace qzlog_tool {

bool SeenNumbers::add(std::string_view writer, std::uint64_t number) {
  auto found = writers_.find(writer);
  if (found == writers_.end()) {
    found = writers_.emplace(writer, Ranges()).first;
    bytes_ += writer_bytes(writer);
  }
  if (!add_to(found->second, number)) return false;
  while (bytes_ > most_bytes_ && forget_some(found->second)) {
  }
  return true;
}

bool SeenNumbers::add_to(Ranges& ranges, std::uint64_t number) {
  const auto after = ranges.upper_bound(number);
  const auto before = after != ranges.begin() ? std::prev(after) : ranges.end();
  if (before != ranges.end() && before->second >= number) return false;
  const bool joins_before = before != ranges.end() && before->second + 1 == number;
  const bool joins_after = after != ranges.end() && after->first == number + 1;
  if (joins_before && joins_after) {
    before->second = after->second;
    ranges.erase(after);
    bytes_ -= kRangeBytes;
  } else if (joins_before) {
    before->second = number;
  } else if (joins_after) {
    const std::uint64_t last = after->second;
    ranges.erase(after);
    ranges.emplace(number, last);
  } else {
    ranges.emplace(number, number);
    bytes_ += kRangeBytes;
  }
  return true;
}

/// False where there is nothing but the last range of `kept`.
bool SeenNumbers::forget_some(Ranges& kept) {
  if (kept.size() > 1) {
    kept.erase(kept.begin());
    bytes_ -= kRangeBytes;
    ++forgotten_;
    return true;
  }
  auto writer = writers_.begin();
  if (&writer->second == &kept && ++writer == writers_.end()) return false;
  bytes_ -= writer_bytes(writer->first) + writer->second.size() * kRangeBytes;
  forgotten_ += writer->second.size();
  writers_.erase(writer);
  return true;
}

}  // namespace qzlog_tool
