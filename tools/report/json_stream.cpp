#include "tools/report/json_stream.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tools/compiler/text/hexadecimal.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kHexadecimalPiece = std::size_t{1} << 15;
constexpr std::size_t kLongestCharacter = 4;

bool continues_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; }

/// As much of the text as can be converted by itself: a cut before a byte that begins a character splits none. Where
/// none does, so many others stand in a row that the last of them belong to no character.
std::size_t first_piece(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  for (std::size_t back = 0; back < kLongestCharacter; ++back) {
    if (!continues_character(text[limit - back])) return limit - back;
  }
  return limit;
}

/// Without the quotation marks.
std::string escaped(std::string_view text) {
  using Json = nlohmann::json;
  const std::string quoted = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

void write_json_text(std::string_view text, std::ostream& out, std::size_t piece_size_bytes) {
  out << '"';
  while (!text.empty()) {
    const std::size_t size = first_piece(text, piece_size_bytes);
    out << escaped(text.substr(0, size));
    text.remove_prefix(size);
  }
  out << '"';
}

JsonObjectStream::JsonObjectStream(std::ostream& out) : out_(out) {}

void JsonObjectStream::number(std::string_view key, std::uint64_t value) { member(key) << value; }

void JsonObjectStream::text(std::string_view key, std::string_view text) { write_json_text(text, member(key)); }

void JsonObjectStream::hexadecimal(std::string_view key, std::string_view bytes) {
  member(key) << '"';
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kHexadecimalPiece))) {
    out_ << hexadecimal_bytes(bytes.substr(0, kHexadecimalPiece));
  }
  out_ << '"';
}

std::ostream& JsonObjectStream::member(std::string_view key) {
  out_ << separator_ << '"' << key << "\":";
  separator_ = ',';
  return out_;
}

void JsonObjectStream::end() { out_ << (separator_ == '{' ? "{}" : "}"); }

JsonListStream::JsonListStream(std::ostream& out, const char* before_item) : out_(out), before_item_(before_item) {
  out_ << '[';
}

std::ostream& JsonListStream::item() {
  out_ << (empty_ ? "" : ",") << before_item_;
  empty_ = false;
  return out_;
}

void JsonListStream::end(const char* before_end) { out_ << (empty_ ? "" : before_end) << ']'; }

}  // namespace qzlog_compiler
