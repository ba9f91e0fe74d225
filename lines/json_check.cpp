#include "lines/json_check.h"

#include <bitset>
#include <string>

#include "lines/json_number.h"
#include "lines/json_unescape.h"
#include "lines/json_walk.h"
#include "lines/utf8_text.h"
#include "message/code_page.h"

namespace qzlog {
namespace {

class JsonChecker {
 public:
  explicit JsonChecker(std::string_view text) : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

  /// UTF-8 apart.
  bool check() {
    for (;;) {
      Step step = check_value();
      while (step == kBehindValue) step = check_behind_value();
      if (step == kEnd) return true;
      if (step == kWrong) return false;
    }
  }
  const JsonFault& fault() const { return fault_; }

 private:
  enum Step { kBeforeValue, kBehindValue, kEnd, kWrong };

  Step wrong(const char* reason) {
    const bool is_zero = at_ != end_ && *at_ == '\0';
    fault_ = {is_zero ? "a zero byte" : reason, static_cast<std::size_t>(at_ - begin_), at_ == end_};
    return kWrong;
  }

  void skip_blanks() {
    while (at_ != end_ && is_json_blank(*at_)) ++at_;
  }
  /// After blanks.
  bool is_next(char character) {
    skip_blanks();
    return at_ != end_ && *at_ == character;
  }
  bool take(char character) {
    const bool found = is_next(character);
    if (found) ++at_;
    return found;
  }
  bool in_object() const { return objects_[depth_ - 1]; }

  Step check_value() {
    skip_blanks();
    if (at_ == end_) return wrong("it ends where a value has to stand");
    switch (*at_) {
      case '{':
        return open(true) == kWrong ? kWrong : take('}') ? close() : check_key();
      case '[':
        return open(false) == kWrong ? kWrong : take(']') ? close() : kBeforeValue;
      case '"':
        return check_text();
      case 't':
        return check_word("true");
      case 'f':
        return check_word("false");
      case 'n':
        return check_word("null");
      default:
        return check_number();
    }
  }

  Step check_behind_value() {
    skip_blanks();
    if (depth_ == 0) return at_ == end_ ? kEnd : wrong("something follows its end");
    if (take(',')) return in_object() ? check_key() : kBeforeValue;
    if (take(in_object() ? '}' : ']')) return close();
    return wrong(in_object() ? "a comma or '}' has to stand here" : "a comma or ']' has to stand here");
  }

  Step open(bool object) {
    if (depth_ == kMaximumJsonDepth) return wrong("more than 1024 arrays and objects stand within each other");
    objects_[depth_++] = object;
    ++at_;
    return kBeforeValue;
  }
  Step close() {
    --depth_;
    return kBehindValue;
  }

  Step check_key() {
    if (!is_next('"')) return wrong("a key in double quotes has to stand here");
    if (check_text() == kWrong) return kWrong;
    return take(':') ? kBeforeValue : wrong("a colon has to follow a key");
  }

  Step check_word(std::string_view word) {
    for (const char expected : word) {
      if (at_ == end_ || *at_ != expected)
        return wrong("a value has to be a text, a number, an array, an object, true, false or null");
      ++at_;
    }
    return kBehindValue;
  }

  Step check_number() {
    if (*at_ != '-' && (*at_ < '0' || *at_ > '9')) return check_word("null");  // the words say what a value can be
    const JsonNumber number = read_json_number(at_, end_);
    if (number.kind == JsonNumber::kTooLarge) return wrong("a number needs more than 64 bits");
    at_ = number.end;
    return number.kind == JsonNumber::kNone ? wrong("a number lacks a digit, or has a leading zero") : kBehindValue;
  }

  Step check_text() {
    ++at_;
    for (;;) {
      at_ = find_json_special(at_, end_);
      if (at_ == end_) return wrong("a text has no end");
      if (*at_ == '"') break;
      if (*at_ != '\\') return wrong("a control character stands in a text: it has to be escaped");
      if (!check_escape()) return kWrong;
    }
    ++at_;
    return kBehindValue;
  }

  bool check_escape() {
    ++at_;
    if (at_ != end_ && *at_ == 'u') return check_code_unit();
    if (at_ == end_ || std::string_view("\"\\/bfnrt").find(*at_) == std::string_view::npos) {
      wrong("no such escape");
      return false;
    }
    ++at_;
    return true;
  }

  /// At its letter u.
  bool check_code_unit() {
    const char* const escape = at_ - 1;
    unsigned unit = 0;
    if (!take_code_unit(unit)) return false;
    if (unit < 0xD800 || unit > 0xDFFF) return true;
    unsigned second = 0;
    if (unit < 0xDC00 && take_within_text('\\') && take_within_text('u')) {
      --at_;
      if (!take_code_unit(second)) return false;
      if (second >= 0xDC00 && second <= 0xDFFF) return true;
    }
    if (at_ != end_) at_ = escape;
    wrong("half of a surrogate pair");
    return false;
  }
  bool take_within_text(char character) {
    const bool found = at_ != end_ && *at_ == character;
    if (found) ++at_;
    return found;
  }
  bool take_code_unit(unsigned& unit) {
    ++at_;
    for (int digit = 0; digit < 4; ++digit, ++at_) {
      const int value = at_ != end_ ? hexadecimal_value(*at_) : -1;
      if (value < 0) {
        wrong("four hexadecimal digits have to follow \\u");
        return false;
      }
      unit = unit * 16 + static_cast<unsigned>(value);
    }
    return true;
  }

  const char* begin_;
  const char* at_;
  const char* end_;
  unsigned depth_ = 0;
  std::bitset<kMaximumJsonDepth> objects_;  // of the open ones, which are objects
  JsonFault fault_{};
};

/// Where a text stops being UTF-8; its size where it does not.
std::size_t find_other_bytes(std::string_view text) {
  if (is_valid_utf8(text.data(), text.size())) return text.size();
  std::size_t at = 0;
  while (const std::size_t size = decode_utf8(text, at).size) at += size;
  return at;
}

/// Whether the bytes can be the beginning of a character.
bool begins_character(std::string_view bytes) {
  constexpr std::size_t kLongest = 4;
  for (const std::string_view rest : {"\x80", "\x80\x80", "\x80\x80\x80", "\xBF", "\xBF\x80", "\xBF\x80\x80"}) {
    if (bytes.size() + rest.size() > kLongest) continue;
    if (decode_utf8(std::string(bytes).append(rest), 0).size == bytes.size() + rest.size()) return true;
  }
  return false;
}

}  // namespace

bool check_json(std::string_view text, JsonFault& fault) {
  JsonChecker checker(text);
  const bool is_well_formed = checker.check();
  if (!is_well_formed) fault = checker.fault();
  const std::size_t other = find_other_bytes(text);
  if (other == text.size()) return is_well_formed;
  if (!is_well_formed && (fault.place < other || begins_character(text.substr(other)))) return false;
  fault = {"bytes that are not UTF-8", other, false};
  return false;
}

}  // namespace qzlog
