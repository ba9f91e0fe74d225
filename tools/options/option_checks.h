#ifndef QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H
#define QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "tools/compiler/text/number_text.h"

namespace qzlog_tool {

/// A check for options that name something: an empty name (a variable that was not set) must not pass for no option.
inline std::string check_not_empty(const std::string& text) { return text.empty() ? "the name is empty" : ""; }

/// A property mask, in decimal or, behind 0x, hexadecimal digits. Nothing for another text.
inline std::optional<std::uint32_t> parse_mask(const std::string& text) {
  const auto mask = qzlog_compiler::parse_number(text, 0, std::numeric_limits<std::uint32_t>::max());
  return mask ? std::optional(static_cast<std::uint32_t>(*mask)) : std::nullopt;
}

inline std::string check_mask(const std::string& text) {
  return parse_mask(text) ? "" : "'" + text + "' is no number from 0 to 0xFFFFFFFF";
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H
