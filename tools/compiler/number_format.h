#ifndef QZLOG_TOOLS_COMPILER_NUMBER_FORMAT_H
#define QZLOG_TOOLS_COMPILER_NUMBER_FORMAT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// As masks are written: 0x and eight digits.
inline std::string hexadecimal(std::uint32_t value) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[(value >> shift) & 0xFU];
  return text;
}

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_NUMBER_FORMAT_H
