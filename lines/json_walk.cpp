#include "lines/json_walk.h"

#include <cstring>

#include "lines/json_number.h"

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

void append_utf8(std::uint32_t code, std::string& text) {
  const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (code < 0x80) return append(code);
  if (code < 0x800) {
    append(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      append(0xE0 | code >> 12);
    } else {
      append(0xF0 | code >> 18);
      append(0x80 | (code >> 12 & 0x3F));
    }
    append(0x80 | (code >> 6 & 0x3F));
  }
  append(0x80 | (code & 0x3F));
}

}  // namespace

int hexadecimal_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const char letter = static_cast<char>(digit | 0x20);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
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
  text.clear();
  ++at_;
  for (;;) {
    const char* const special = find_json_special(at_, end_);
    text.append(at_, special);
    at_ = special + 1;
    if (*special == '"') return;
    append_escaped(text);
  }
}

/// Behind the backslash.
void JsonPlace::append_escaped(std::string& text) {
  constexpr std::string_view kLetters = "bfnrt";
  constexpr std::string_view kCharacters = "\b\f\n\r\t";
  const char letter = *at_++;
  if (letter != 'u') {
    const std::size_t place = kLetters.find(letter);
    text += place != std::string_view::npos ? kCharacters[place] : letter;
    return;
  }
  std::uint32_t code = read_code_unit();
  if (code >= 0xD800 && code <= 0xDFFF) {
    at_ += 2;
    code = 0x10000 + ((code - 0xD800) << 10) + (read_code_unit() - 0xDC00);
  }
  append_utf8(code, text);
}

unsigned JsonPlace::read_code_unit() {
  unsigned unit = 0;
  for (int digit = 0; digit < 4; ++digit) unit = unit * 16 + static_cast<unsigned>(hexadecimal_value(*at_++));
  return unit;
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
