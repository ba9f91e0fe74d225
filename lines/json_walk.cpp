#include "lines/json_walk.h"

#include <cstring>

#include "lines/json_number.h"
#include "lines/json_unescape.h"

namespace qzlog {
namespace {

constexpr bool is_special(char character) {
  return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

// Sixteen characters, on which the compiler computes at once.
using Block = unsigned char __attribute__((vector_size(16)));

bool holds_special(const char* at) {
  Block block;
  std::memcpy(&block, at, sizeof block);
  const Block special = static_cast<Block>(block < Block{} + 0x20) | static_cast<Block>(block == Block{} + '"') |
                        static_cast<Block>(block == Block{} + '\\');
  std::uint64_t halves[2];
  std::memcpy(halves, &special, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

bool is_escaped(std::string_view text, std::size_t place) {
  const std::size_t before = text.substr(0, place).find_last_not_of('\\');
  const std::size_t backslashes = place - (before == std::string_view::npos ? 0 : before + 1);
  return backslashes % 2 != 0;
}

}  // namespace

// Within a key each quote is escaped.
std::size_t place_of_key(std::string_view text, std::size_t place) {
  const std::size_t end = text.substr(0, place).rfind('"');
  std::size_t begin = text.substr(0, end).rfind('"');
  while (is_escaped(text, begin)) begin = text.substr(0, begin).rfind('"');
  return begin;
}

const char* find_json_special(const char* at, const char* end) {
  while (static_cast<std::size_t>(end - at) >= sizeof(Block) && !holds_special(at)) at += sizeof(Block);
  while (at != end && !is_special(*at)) ++at;
  return at;
}

void JsonPlace::skip_text() {
  for (++at_;; at_ += 2) {
    at_ = find_json_special(at_, end_);
    if (*at_ == '"') break;
  }
  ++at_;
}

// Without a stack: what stands in arrays and objects is passed over.
void JsonPlace::skip_value() {
  unsigned depth = 0;
  do {
    const char first = *at_;
    if (first == '"') {
      skip_text();
      continue;
    }
    if (first == '{' || first == '[') ++depth;
    if (first == '}' || first == ']') --depth;
    ++at_;
    if (depth > 0 || first == '}' || first == ']') continue;
    while (at_ != end_ && !is_json_blank(*at_) && *at_ != ',' && *at_ != '}' && *at_ != ']') ++at_;
  } while (depth > 0);
}

void JsonPlace::read_text(std::string& text) {
  const char* const begin = at_ + 1;
  skip_text();
  text.assign(begin, at_ - 1);
  if (text.find('\\') == std::string::npos) return;
  text.resize(static_cast<std::size_t>(decode_json_escapes(text.data(), text.data() + text.size()) - text.data()));
}

JsonValue JsonPlace::value_of_scalar() const {
  JsonValue value;
  switch (*at_) {
    case '{':
      value.kind = JsonKind::kObject;
      return value;
    case '[':
      value.kind = JsonKind::kArray;
      return value;
    case '"':
      value.kind = JsonKind::kText;
      return value;
    case 't':
    case 'f':
      value.kind = JsonKind::kBool;
      value.truth = *at_ == 't';
      return value;
    case 'n':
      return value;
    default:
      break;
  }
  const JsonNumber number = read_json_number(at_, end_);
  if (number.kind == JsonNumber::kFloat) {
    value.kind = JsonKind::kFloat;
    value.number = number.number;
  } else if (number.kind == JsonNumber::kLargeInteger) {
    value.kind = JsonKind::kLargeInteger;
    value.large_integer = number.large_integer;
  } else {
    value.kind = JsonKind::kInteger;
    value.negative_zero = number.negative_zero;
    value.integer = number.integer;
  }
  return value;
}

JsonValue JsonPlace::value(std::string& text) const {
  JsonValue value = value_of_scalar();
  if (value.kind == JsonKind::kText) {
    JsonPlace(*this).read_text(text);
    value.text = text;
  }
  return value;
}

}  // namespace qzlog
