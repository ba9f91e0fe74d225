#ifndef QZLOG_LINES_TEXT_CODE_PAGE_H
#define QZLOG_LINES_TEXT_CODE_PAGE_H

#include <cstddef>
#include <string>

#include "foundation/never_destroyed.h"

namespace qzlog {

/// The code page that the texts of entries are in, Char and MBChar alike: the configured one, whether ICU renders
/// messages or not. Where none is configured it is ICU's default converter, or UTF-8 while ICU is switched off. Objects
/// live as long as the process.
class TextCodePage {
 public:
  /// The one that is in force. A lookup without a lock and without memory, but for the first one in a code page. Throws
  /// QZX_logging_illegal_argument for one that no converter has, and for one in which texts would hold zero bytes
  /// (UTF-16, UTF-32); QZX_memory_alloc.
  static const TextCodePage& current();

  const char* name() const { return name_.c_str(); }
  bool is_utf8() const { return is_utf8_; }
  /// Whether a text of ASCII's characters from the blank to the tilde has the same bytes in UTF-8.
  bool has_plain_ascii() const { return has_plain_ascii_; }

 private:
  friend class TextCodePages;
  template <typename T>
  friend class NeverDestroyed;
  explicit TextCodePage(const char* name);
  bool has_name(const char* name) const { return name_ == name; }

  std::string name_;
  bool is_utf8_ = false;
  bool has_plain_ascii_ = false;
  const TextCodePage* next_ = nullptr;
};

/// Whether a text has characters of ASCII from the blank to the tilde only.
bool is_printable_ascii(const char* text, std::size_t length);

}  // namespace qzlog

#endif  // QZLOG_LINES_TEXT_CODE_PAGE_H
