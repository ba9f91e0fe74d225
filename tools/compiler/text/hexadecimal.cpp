#include "tools/compiler/text/hexadecimal.h"

#include <algorithm>

namespace qzlog_compiler {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::string_view kSmallDigits = "0123456789abcdef";

}  // namespace

std::string hexadecimal(std::uint64_t value, std::size_t digits, HexadecimalLetters letters) {
  const std::string_view shown = letters == HexadecimalLetters::kSmall ? kSmallDigits : kDigits;
  std::string text;
  for (; value != 0 || text.size() < digits; value >>= 4) text += shown[value & 0xFU];
  std::reverse(text.begin(), text.end());
  return text;
}

std::string bits_text(std::uint32_t bits) { return "0x" + hexadecimal(bits, 8); }

std::string hexadecimal_bytes(std::string_view bytes, std::string_view separator) {
  std::string text;
  text.reserve(bytes.size() * (2 + separator.size()));
  for (const char byte : bytes) {
    if (!text.empty()) text += separator;
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xFU];
  }
  return text;
}

}  // namespace qzlog_compiler
