#include "tools/compiler/ldf_text.h"

#include <algorithm>

#include "tools/compiler/attribute_type.h"
#include "tools/compiler/ldf_format.h"
#include "tools/compiler/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::string_view kEllipsis = "\u2026";

bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }

}  // namespace

std::string hexadecimal(std::size_t value, std::size_t digits) {
  std::string text;
  for (; value != 0 || text.size() < digits; value >>= 4) text += kDigits[value & 0xFU];
  std::reverse(text.begin(), text.end());
  return text;
}

std::string offset_text(std::size_t offset) { return std::to_string(offset) + " (0x" + hexadecimal(offset, 1) + ")"; }

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

std::string type_text(std::uint32_t code) {
  const std::string_view name = short_type_name(static_cast<qz_AttributeType>(code & ldf::kTypeCodeMask));
  const bool plain = code <= ldf::kTypeCodeMask && find_attribute_type(name);
  return plain ? std::string(name) : std::string(name) + " (" + std::to_string(code) + ")";
}

std::string shown_text(std::string_view text) { return '"' + printable(text) + '"'; }

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string cut_line(std::string text, std::size_t columns) {
  if (columns == 0 || text.size() <= columns || character_count(text) <= columns) return text;
  std::size_t end = 0;
  for (std::size_t count = 0; end < text.size(); ++end) {
    if (begins_character(text[end]) && ++count == columns) break;
  }
  text.resize(end);
  return text.append(kEllipsis);
}

}  // namespace qzlog_compiler
