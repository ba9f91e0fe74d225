#include "tools/choice/number_ranges.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "tools/compiler/text/number_text.h"

namespace qzlog_tool {

namespace {

std::optional<std::uint32_t> parse_end(std::string_view text, std::uint32_t maximum) {
  if (text.starts_with('-')) return std::nullopt;
  const std::optional<std::int64_t> number = qzlog_compiler::parse_number(text, 0, maximum);
  return number ? std::optional(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

}  // namespace

std::optional<NumberRange> parse_range(std::string_view text, std::uint32_t maximum) {
  constexpr std::string_view kDots = "..";
  const std::size_t dots = text.find(kDots);
  if (dots == std::string_view::npos) {
    const std::optional<std::uint32_t> number = parse_end(text, maximum);
    return number ? std::optional(NumberRange{*number, *number}) : std::nullopt;
  }
  const std::string_view first_text = text.substr(0, dots);
  const std::string_view last_text = text.substr(dots + kDots.size());
  if (first_text.empty() && last_text.empty()) return std::nullopt;
  const auto first = first_text.empty() ? std::optional(std::uint32_t{0}) : parse_end(first_text, maximum);
  const auto last = last_text.empty() ? std::optional(maximum) : parse_end(last_text, maximum);
  if (!first || !last || *first > *last) return std::nullopt;
  return NumberRange{*first, *last};
}

std::optional<std::vector<NumberRange>> parse_ranges(std::string_view text, std::uint32_t maximum) {
  std::vector<NumberRange> ranges;
  for (;;) {
    const std::size_t comma = text.find(',');
    const std::optional<NumberRange> range = parse_range(text.substr(0, comma), maximum);
    if (!range) return std::nullopt;
    ranges.push_back(*range);
    if (comma == std::string_view::npos) return ranges;
    text.remove_prefix(comma + 1);
  }
}

NumberSet::NumberSet(std::vector<NumberRange> ranges) {
  std::sort(ranges.begin(), ranges.end(), [](NumberRange a, NumberRange b) { return a.first < b.first; });
  for (const NumberRange range : ranges) {
    if (!ranges_.empty() && range.first <= std::uint64_t{ranges_.back().last} + 1) {
      ranges_.back().last = std::max(ranges_.back().last, range.last);
    } else {
      ranges_.push_back(range);
    }
  }
}

bool NumberSet::holds(std::uint32_t number) const {
  const auto behind = std::upper_bound(ranges_.begin(), ranges_.end(), number,
                                       [](std::uint32_t wanted, NumberRange range) { return wanted < range.first; });
  return behind != ranges_.begin() && std::prev(behind)->last >= number;
}

}  // namespace qzlog_tool
