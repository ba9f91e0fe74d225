#ifndef QZLOG_LINES_JSON_WALK_H
#define QZLOG_LINES_JSON_WALK_H

#include <cstddef>
#include <string>
#include <string_view>

#include "lines/json_value.h"

namespace qzlog {

constexpr bool is_json_blank(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

/// The first quote, backslash or control character, or `end`.
const char* find_json_special(const char* at, const char* end);

/// Where the key of the value at `place` begins, with its quote. Of JSON that check_json found right.
std::size_t place_of_key(std::string_view text, std::size_t place);

/// A way through JSON that check_json found right, of which nothing is copied: a value is the place where it begins.
class JsonPlace {
 public:
  /// No value.
  JsonPlace() = default;
  /// The value that `text` is.
  explicit JsonPlace(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) { skip_blanks(); }

  explicit operator bool() const { return at_ != nullptr; }
  const char* address() const { return at_; }
  JsonKind kind() const { return value_of_scalar().kind; }

  /// The value, the text of one decoded into `text`, where it is valid as long as that is not changed. Of an array and
  /// an object the kind alone.
  JsonValue value(std::string& text) const;

  /// Calls visit(std::string_view key, JsonPlace value) for each member of an object, in their order; keys are decoded
  /// into `key`, with a zero byte behind them.
  template <class Visit>
  void for_each_member(std::string& key, Visit&& visit) const {
    JsonPlace at = *this;
    for (at.skip_character(); !at.leaves('}'); at.skip_comma()) {
      at.read_text(key);
      at.skip_character();
      visit(std::string_view(key), at);
      at.skip_value();
    }
  }
  /// Calls visit(JsonPlace element) for each element of an array.
  template <class Visit>
  void for_each_element(Visit&& visit) const {
    JsonPlace at = *this;
    for (at.skip_character(); !at.leaves(']'); at.skip_comma()) {
      visit(at);
      at.skip_value();
    }
  }

 private:
  void skip_blanks() {
    while (at_ != end_ && is_json_blank(*at_)) ++at_;
  }
  /// One character, whichever, and blanks around it.
  void skip_character() {
    skip_blanks();
    ++at_;
    skip_blanks();
  }
  bool leaves(char end) {
    skip_blanks();
    return *at_ == end;
  }
  void skip_comma() {
    skip_blanks();
    if (*at_ == ',') skip_character();
  }
  void skip_value();
  void skip_text();
  void read_text(std::string& text);
  JsonValue value_of_scalar() const;

  const char* at_ = nullptr;
  const char* end_ = nullptr;
};

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_WALK_H
