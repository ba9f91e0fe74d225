#ifndef QZLOG_TOOLS_COMPILER_TEXT_NUMBER_TEXT_H
#define QZLOG_TOOLS_COMPILER_TEXT_NUMBER_TEXT_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace qzlog_compiler {

enum class NumberForm {
  kDecimal,      ///< digits; 010 is ten
  kHexadecimal,  ///< digits of either case
  kEither,       ///< a decimal number, or a hexadecimal one after 0x
};

/// Reads a number without a sign; one that 64 bits do not hold gives the largest that they do. Nothing when the text is
/// anything else.
std::optional<std::uint64_t> parse_unsigned(std::string_view text, NumberForm form);

/// Reads a decimal number, or a hexadecimal one after 0x; both may be negative. Nothing when the text is anything else
/// or the number lies outside the two bounds.
std::optional<std::int64_t> parse_number(std::string_view text, std::int64_t minimum, std::int64_t maximum);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_NUMBER_TEXT_H
