#ifndef QZLOG_TOOLS_CHOICE_NUMBER_RANGES_H
#define QZLOG_TOOLS_CHOICE_NUMBER_RANGES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// Numbers from `first` to `last`, both included.
struct NumberRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  bool holds(std::uint32_t number) const { return number >= first && number <= last; }
  friend bool operator==(const NumberRange&, const NumberRange&) = default;
};

/// "5", "5..9", "5.." and "..3", in decimal digits or hexadecimal ones behind 0x, none above `maximum`. Nothing for
/// other texts, and for ranges that end before they begin.
std::optional<NumberRange> parse_range(std::string_view text, std::uint32_t maximum);

/// Ranges with commas between them.
std::optional<std::vector<NumberRange>> parse_ranges(std::string_view text, std::uint32_t maximum);

/// Numbers as ranges that do not touch, in their order.
class NumberSet {
 public:
  NumberSet() = default;
  explicit NumberSet(std::vector<NumberRange> ranges);

  bool holds(std::uint32_t number) const;
  const std::vector<NumberRange>& ranges() const { return ranges_; }

 private:
  std::vector<NumberRange> ranges_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_NUMBER_RANGES_H
