#include "lines/json_text.h"

#include <cstddef>
#include <cstring>

#include "lines/json_escape.h"
#include "lines/line_output.h"

namespace qzlog {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr unsigned kMostFollowing = 3;

struct ByteRange {
  unsigned char first = 0x80;
  unsigned char last = 0xBF;

  bool has(unsigned char byte) const { return first <= byte && byte <= last; }
};

/// What a byte begins: how many bytes follow it, and which the first of these can be.
struct LeadByte {
  unsigned following = 0;
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
  if (byte == 0xF0) return {kMostFollowing, {0x90, 0xBF}};
  return {kMostFollowing, {0x80, static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)}};
}

JsonPiece write_replacement(unsigned taken, char* target) {
  std::memcpy(target, kReplacement.data(), kReplacement.size());
  return {taken, static_cast<unsigned>(kReplacement.size()), false};
}

/// A character, or the replacement of as many bytes as begin like one.
JsonPiece write_multibyte(const char* text, std::size_t length, char* target) {
  const LeadByte lead = read_lead_byte(static_cast<unsigned char>(text[0]));
  if (lead.following == 0) return write_replacement(1, target);
  ByteRange allowed = lead.second;
  for (unsigned at = 1; at <= lead.following; ++at) {
    if (at == length || !allowed.has(static_cast<unsigned char>(text[at]))) return write_replacement(at, target);
    allowed = {};
  }
  std::memcpy(target, text, lead.following + 1);
  return {lead.following + 1, lead.following + 1, true};
}

/// The letter behind the backslash of an escape; 0 where there is none.
char escape_letter(unsigned char byte) {
  constexpr std::string_view kNamed = "\b\f\n\r\t\"\\";
  constexpr std::string_view kLetters = "bfnrt\"\\";
  const std::size_t named = kNamed.find(static_cast<char>(byte));
  return named != std::string_view::npos ? kLetters[named] : '\0';
}

}  // namespace

JsonPiece write_json_piece(const char* text, std::size_t length, char* target) {
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte >= 0x80) return write_multibyte(text, length, target);
  if (const char letter = escape_letter(byte)) {
    target[0] = '\\';
    target[1] = letter;
    return {1, 2, true};
  }
  if (byte >= 0x20) {
    target[0] = text[0];
    return {1, 1, true};
  }
  std::memcpy(target, "\\u0000", kMaxJsonPiece);
  target[4] = byte < 0x10 ? '0' : '1';
  target[5] = "0123456789abcdef"[byte & 0xFU];
  return {1, kMaxJsonPiece, true};
}

void append_json_text(std::string_view text, std::string& out) {
  LineOutput output(out);
  output.append('"');
  output.count_up_to(escape_json(text.data(), text.size(), output.end(), output).end);
  output.append('"');
  output.finish();
}

}  // namespace qzlog
