#include "lines/utf8_text.h"

namespace qzlog {
namespace {

constexpr std::size_t kQuotedLimit = 60;  // characters; a diagnostic stays on one readable line

struct LeadByte {
  std::size_t size;
  char32_t bits;
};

LeadByte read_lead_byte(unsigned char byte) {
  if (byte < 0x80) return {1, byte};
  if (byte >= 0xC2 && byte < 0xE0) return {2, byte & 0x1FU};
  if (byte >= 0xE0 && byte < 0xF0) return {3, byte & 0x0FU};
  if (byte >= 0xF0 && byte < 0xF5) return {4, byte & 0x07U};
  return {0, 0};
}

/// Marks, embeddings, overrides and isolates, which reorder what a terminal shows around them.
bool turns_direction(char32_t code) {
  return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

bool is_control(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || is_line_break(code) || turns_direction(code);
}

void append_escape(std::string& out, char32_t code) {
  if (code == '\n') {
    out += "\\n";
  } else if (code == '\t') {
    out += "\\t";
  } else {
    out += "\\u";
    for (unsigned shift = 16; shift > 0; shift -= 4) out += "0123456789ABCDEF"[code >> (shift - 4) & 0xFU];
  }
}

}  // namespace

Utf8Character decode_utf8(std::string_view text, std::size_t offset) {
  if (offset >= text.size()) return {};
  const LeadByte lead = read_lead_byte(static_cast<unsigned char>(text[offset]));
  if (lead.size == 0 || lead.size > text.size() - offset) return {};
  char32_t code = lead.bits;
  for (std::size_t i = 1; i < lead.size; ++i) {
    const auto byte = static_cast<unsigned char>(text[offset + i]);
    if ((byte & 0xC0U) != 0x80) return {};
    code = (code << 6) | (byte & 0x3FU);
  }
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  if (utf8_size(code) != lead.size || surrogate || code > 0x10FFFF) return {};
  return {code, lead.size};
}

bool is_utf8_text(std::string_view text) {
  for (std::size_t offset = 0; offset < text.size();) {
    const bool is_ascii = static_cast<unsigned char>(text[offset]) < 0x80;
    const std::size_t size = is_ascii ? 1 : decode_utf8(text, offset).size;
    if (size == 0) return false;
    offset += size;
  }
  return true;
}

std::size_t utf8_size(char32_t code) {
  if (code < 0x80) return 1;
  if (code < 0x800) return 2;
  return code < 0x10000 ? 3 : 4;
}

std::size_t utf16_length(std::string_view text) {
  std::size_t units = 0;
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0U) == 0x80) continue;
    units += value >= 0xF0 ? 2 : 1;
  }
  return units;
}

std::size_t append_printable(std::string& out, std::string_view text, std::size_t offset) {
  const Utf8Character character = decode_utf8(text, offset);
  if (character.size == 0) {
    out += "\uFFFD";
    return 1;
  }
  if (is_control(character.code)) {
    append_escape(out, character.code);
  } else {
    out += text.substr(offset, character.size);
  }
  return character.size;
}

std::string printable(std::string_view text) {
  std::string out;
  for (std::size_t offset = 0; offset < text.size();) {
    std::size_t end = offset;
    while (end < text.size() && is_plain(text[end])) ++end;
    out += text.substr(offset, end - offset);
    offset = end < text.size() ? end + append_printable(out, text, end) : end;
  }
  return out;
}

std::string quoted(std::string_view text) {
  std::string out = "'";
  std::size_t offset = 0;
  for (std::size_t count = 0; offset < text.size() && count < kQuotedLimit; ++count) {
    offset += append_printable(out, text, offset);
  }
  if (offset < text.size()) out += "...";
  return out + "'";
}

}  // namespace qzlog
