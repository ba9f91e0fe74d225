#include "tools/compiler/text/number_text.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace qzlog_compiler {
namespace {

std::optional<std::uint64_t> parse_digits(std::string_view digits, int base) {
  std::uint64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
  if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : number;
}

}  // namespace

std::optional<std::uint64_t> parse_unsigned(std::string_view text, NumberForm form) {
  const bool has_prefix = form == NumberForm::kEither && (text.starts_with("0x") || text.starts_with("0X"));
  if (has_prefix) text.remove_prefix(2);
  return parse_digits(text, has_prefix || form == NumberForm::kHexadecimal ? 16 : 10);
}

std::optional<std::int64_t> parse_number(std::string_view text, std::int64_t minimum, std::int64_t maximum) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const std::optional<std::uint64_t> magnitude = parse_unsigned(text, NumberForm::kEither);
  if (!magnitude || *magnitude > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
  const std::int64_t number = negative ? -static_cast<std::int64_t>(*magnitude) : static_cast<std::int64_t>(*magnitude);
  return number >= minimum && number <= maximum ? std::optional(number) : std::nullopt;
}

}  // namespace qzlog_compiler
