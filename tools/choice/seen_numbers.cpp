#include "tools/choice/seen_numbers.h"

#include <iterator>

namespace qzlog_tool {

bool SeenNumbers::add(std::string_view writer, std::uint64_t number) {
  auto found = writers_.find(writer);
  if (found == writers_.end()) found = writers_.emplace(writer, Ranges()).first;
  if (!add_to(found->second, number)) return false;
  if (range_count_ > most_ranges_) forget_some(found->second);
  return true;
}

bool SeenNumbers::add_to(Ranges& ranges, std::uint64_t number) {
  const auto after = ranges.upper_bound(number);
  const bool has_before = after != ranges.begin();
  const auto before = has_before ? std::prev(after) : ranges.end();
  if (has_before && before->second >= number) return false;
  const bool joins_before = has_before && before->second + 1 == number;
  const bool joins_after = after != ranges.end() && after->first == number + 1;
  if (joins_before && joins_after) {
    before->second = after->second;
    ranges.erase(after);
    --range_count_;
  } else if (joins_before) {
    before->second = number;
  } else if (joins_after) {
    const std::uint64_t last = after->second;
    ranges.erase(after);
    ranges.emplace(number, last);
  } else {
    ranges.emplace(number, number);
    ++range_count_;
  }
  return true;
}

void SeenNumbers::forget_some(Ranges& kept) {
  if (kept.size() > 1) {
    kept.erase(kept.begin());
    --range_count_;
    ++forgotten_;
    return;
  }
  for (auto writer = writers_.begin(); writer != writers_.end(); ++writer) {
    if (&writer->second == &kept) continue;
    range_count_ -= writer->second.size();
    forgotten_ += writer->second.size();
    writers_.erase(writer);
    return;
  }
}

}  // namespace qzlog_tool
