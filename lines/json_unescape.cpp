#include "lines/json_unescape.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qzlog {
namespace {

constexpr std::string_view kLetters = "bfnrt\"\\/";
constexpr std::string_view kCharacters = "\b\f\n\r\t\"\\/";

/// Reads escapes and writes what they stand for, behind each other in one text.
class EscapeDecoder {
 public:
  EscapeDecoder(char* begin, const char* end) : to_(begin), from_(begin), end_(end) {}

  char* decode() {
    for (;;) {
      const auto left = static_cast<std::size_t>(end_ - from_);
      const auto* const escape = left != 0 ? static_cast<const char*>(std::memchr(from_, '\\', left)) : nullptr;
      copy_to(escape != nullptr ? escape : end_);
      if (escape == nullptr) return to_;
      ++from_;
      if (!take_escape()) return nullptr;
    }
  }

 private:
  void copy_to(const char* end) {
    const auto size = static_cast<std::size_t>(end - from_);
    if (to_ != from_) std::memmove(to_, from_, size);
    to_ += size;
    from_ = end;
  }

  /// Behind the backslash.
  bool take_escape() {
    if (from_ == end_) return false;
    const char letter = *from_++;
    if (letter == 'u') return take_character();
    const std::size_t place = kLetters.find(letter);
    if (place == std::string_view::npos) return false;
    *to_++ = kCharacters[place];
    return true;
  }

  bool take_character() {
    std::uint32_t code = 0;
    if (!take_unit(code)) return false;
    if (code >= 0xD800 && code <= 0xDFFF) {
      std::uint32_t low = 0;
      if (code > 0xDBFF || end_ - from_ < 2 || from_[0] != '\\' || from_[1] != 'u') return false;
      from_ += 2;
      if (!take_unit(low) || low < 0xDC00 || low > 0xDFFF) return false;
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    append(code);
    return true;
  }

  bool take_unit(std::uint32_t& unit) {
    constexpr int kDigits = 4;
    if (end_ - from_ < kDigits) return false;
    for (int digit = 0; digit < kDigits; ++digit) {
      const int value = hexadecimal_value(*from_++);
      if (value < 0) return false;
      unit = unit << 4 | static_cast<std::uint32_t>(value);
    }
    return true;
  }

  void append(std::uint32_t code) {
    if (code < 0x80) return append_byte(code);
    if (code < 0x800) {
      append_byte(0xC0 | code >> 6);
    } else {
      if (code < 0x10000) {
        append_byte(0xE0 | code >> 12);
      } else {
        append_byte(0xF0 | code >> 18);
        append_byte(0x80 | (code >> 12 & 0x3F));
      }
      append_byte(0x80 | (code >> 6 & 0x3F));
    }
    append_byte(0x80 | (code & 0x3F));
  }
  void append_byte(std::uint32_t byte) { *to_++ = static_cast<char>(byte); }

  char* to_;
  const char* from_;
  const char* end_;
};

}  // namespace

int hexadecimal_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const char letter = static_cast<char>(digit | 0x20);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

char* decode_json_escapes(char* begin, char* end) { return EscapeDecoder(begin, end).decode(); }

}  // namespace qzlog
