#ifndef QZLOG_TESTS_SINKS_STRICT_JSON_H
#define QZLOG_TESTS_SINKS_STRICT_JSON_H

#include <cctype>
#include <cstddef>
#include <string_view>

namespace qz_test {

/// Whether a text is one JSON value and nothing else, by RFC 8259 to the letter; without blanks; bytes above 0x7F
/// are not looked at.
class StrictJson {
 public:
  static bool is_value(std::string_view text) {
    for (char control = 0; control < ' '; ++control) {
      if (text.find(control) != std::string_view::npos) return false;
    }
    StrictJson json(text);
    return json.value() && json.text_.empty();
  }

 private:
  explicit StrictJson(std::string_view text) : text_(text) {}

  bool take(char character) {
    if (text_.empty() || text_.front() != character) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool take(std::string_view word) {
    if (!text_.starts_with(word)) return false;
    text_.remove_prefix(word.size());
    return true;
  }
  bool digits() {
    if (text_.empty() || std::isdigit(static_cast<unsigned char>(text_.front())) == 0) return false;
    while (!text_.empty() && std::isdigit(static_cast<unsigned char>(text_.front())) != 0) text_.remove_prefix(1);
    return true;
  }
  bool number() {
    take('-');
    if (!take('0') && !digits()) return false;
    if (take('.') && !digits()) return false;
    if (take('e') || take('E')) {
      if (!take('+')) take('-');
      return digits();
    }
    return true;
  }
  bool escape() {
    if (!take('u')) {
      const bool known = !text_.empty() && std::string_view("\"\\/bfnrt").find(text_.front()) != std::string_view::npos;
      if (known) text_.remove_prefix(1);
      return known;
    }
    for (int i = 0; i < 4; ++i) {
      if (text_.empty() || std::isxdigit(static_cast<unsigned char>(text_.front())) == 0) return false;
      text_.remove_prefix(1);
    }
    return true;
  }
  /// By the C library's searches: the tests are not optimised, and look at millions of lines.
  bool string() {
    if (!take('"')) return false;
    while (true) {
      const std::size_t end = text_.find('"');
      if (end == std::string_view::npos) return false;
      const std::size_t backslash = text_.substr(0, end).find('\\');
      text_.remove_prefix(backslash == std::string_view::npos ? end + 1 : backslash + 1);
      if (backslash == std::string_view::npos) return true;
      if (!escape()) return false;
    }
  }
  template <typename Element>
  bool list(char end, Element element) {
    if (take(end)) return true;
    do {
      if (!element()) return false;
    } while (take(','));
    return take(end);
  }
  bool value() {
    if (take('{')) return list('}', [&] { return string() && take(':') && value(); });
    if (take('[')) return list(']', [&] { return value(); });
    if (!text_.empty() && text_.front() == '"') return string();
    return take("true") || take("false") || take("null") || number();
  }

  std::string_view text_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_STRICT_JSON_H
