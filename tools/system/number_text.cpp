#include "tools/system/number_text.h"

#include <charconv>
#include <system_error>

namespace qzlog_tool {

std::optional<std::int64_t> parse_number(std::string_view text, std::int64_t minimum, std::int64_t maximum) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  if (text.starts_with('-')) return std::nullopt;
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  if (negative) number = -number;
  return number >= minimum && number <= maximum ? std::optional(number) : std::nullopt;
}

}  // namespace qzlog_tool
