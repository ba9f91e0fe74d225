#ifndef QZLOG_LINES_STORED_CODE_PAGE_H
#define QZLOG_LINES_STORED_CODE_PAGE_H

#include <cstddef>
#include <string>

#include "foundation/never_destroyed.h"

namespace qzlog {

/// The code page that the texts of entries are in, Char and MBChar alike: the configured one where ICU renders messages
/// (where none is configured, ICU's default converter). While ICU is switched off texts are passed on as they are, and
/// taken for UTF-8. Objects live as long as the process.
class StoredCodePage {
 public:
  /// The one that is in force. Takes no lock and no memory but when the code page is another one than the last time.
  /// Throws QZX_logging_illegal_argument for one that no converter has, and for one in which texts would hold zero
  /// bytes (UTF-16, UTF-32); QZX_memory_alloc.
  static const StoredCodePage& current();

  const char* name() const { return name_.c_str(); }
  bool is_utf8() const { return is_utf8_; }
  /// Whether a text of ASCII's characters from the blank to the tilde has the same bytes in UTF-8.
  bool has_plain_ascii() const { return has_plain_ascii_; }

 private:
  friend class StoredCodePages;
  template <typename T>
  friend class NeverDestroyed;
  explicit StoredCodePage(const char* name);
  bool has_name(const char* name) const { return name_ == name; }

  std::string name_;
  bool is_utf8_ = false;
  bool has_plain_ascii_ = false;
  const StoredCodePage* next_ = nullptr;
};

/// The name of the code page in force, whether or not lines can be written in it: what settings name, "UTF-8" while ICU
/// is switched off. Valid until the settings change.
const char* stored_code_page_name();

/// Whether a text has characters of ASCII from the blank to the tilde only.
bool is_printable_ascii(const char* text, std::size_t length);

}  // namespace qzlog

#endif  // QZLOG_LINES_STORED_CODE_PAGE_H
