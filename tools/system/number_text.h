#ifndef QZLOG_TOOLS_SYSTEM_NUMBER_TEXT_H
#define QZLOG_TOOLS_SYSTEM_NUMBER_TEXT_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace qzlog_tool {

/// Reads a decimal number (010 is ten), or a hexadecimal one after 0x; both may be negative. Nothing when the text is
/// anything else or the number lies outside the two bounds.
std::optional<std::int64_t> parse_number(std::string_view text, std::int64_t minimum, std::int64_t maximum);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_NUMBER_TEXT_H
