#include "lines/json_text.h"

#include <cstddef>

namespace qzlog {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct ByteRange {
  unsigned char first = 0x80;
  unsigned char last = 0xBF;

  bool has(unsigned char byte) const { return first <= byte && byte <= last; }
};

/// What a byte begins: how many bytes follow it, and which the first of these can be.
struct LeadByte {
  std::size_t following = 0;
  ByteRange second = {};
};

/// `byte` is none of ASCII's. Nothing follows a byte that begins no character.
LeadByte read_lead_byte(unsigned char byte) {
  if (byte < 0xC2 || byte > 0xF4) return {};
  if (byte < 0xE0) return {1};
  if (byte < 0xF0) {
    if (byte == 0xE0) return {2, {0xA0, 0xBF}};
    return {2, {0x80, static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF)}};  // surrogates are no characters
  }
  if (byte == 0xF0) return {3, {0x90, 0xBF}};
  return {3, {0x80, static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)}};
}

/// What a text begins with.
struct Piece {
  std::size_t size = 1;
  bool is_plain = false;  ///< stands for itself in a JSON string
};

/// A character, or as many bytes as begin like one.
Piece multibyte_piece(std::string_view text) {
  const LeadByte lead = read_lead_byte(static_cast<unsigned char>(text[0]));
  if (lead.following == 0) return {};
  ByteRange allowed = lead.second;
  for (std::size_t at = 1; at <= lead.following; ++at) {
    if (at == text.size() || !allowed.has(static_cast<unsigned char>(text[at]))) return {at, false};
    allowed = {};
  }
  return {1 + lead.following, true};
}

/// `text` is not empty.
Piece first_piece(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte >= 0x80) return multibyte_piece(text);
  return {1, byte >= 0x20 && byte != '"' && byte != '\\'};
}

/// For a byte of ASCII that cannot stand for itself, or the first of bytes that are no character.
void append_escape(unsigned char byte, std::string& out) {
  constexpr std::string_view kNamed = "\b\f\n\r\t\"\\";
  constexpr std::string_view kLetters = "bfnrt\"\\";
  const std::size_t named = kNamed.find(static_cast<char>(byte));
  if (byte >= 0x80) {
    out += kReplacement;
  } else if (named != std::string_view::npos) {
    out += '\\';
    out += kLetters[named];
  } else {
    out += byte < 0x10 ? "\\u000" : "\\u001";
    out += "0123456789abcdef"[byte & 0xFU];
  }
}

}  // namespace

void append_json_text(std::string_view text, std::string& out) {
  out += '"';
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Piece piece = first_piece(text.substr(at));
    if (!piece.is_plain) {
      out += text.substr(written, at - written);
      append_escape(static_cast<unsigned char>(text[at]), out);
      written = at + piece.size;
    }
    at += piece.size;
  }
  out += text.substr(written);
  out += '"';
}

}  // namespace qzlog
