#ifndef QZLOG_TOOLS_CHOICE_STORED_TEXT_H
#define QZLOG_TOOLS_CHOICE_STORED_TEXT_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// Texts of entries as UTF-8: they are stored in the code page of the library's settings where ICU is enabled, as they
/// are when this is made. One thread at a time.
class StoredTexts {
 public:
  StoredTexts();

  /// Whether stored texts are UTF-8.
  bool are_utf8() const { return code_page_.empty(); }
  /// Valid until the next call; nothing for what cannot be converted. `text` is zero-terminated. Takes no memory of its
  /// own.
  std::optional<std::string_view> utf8(const char* text);

 private:
  std::string code_page_;  // empty: UTF-8
  std::unique_ptr<char[]> buffer_;
};

/// A text as attributes store it: line breaks as "\n" and "\r", two characters each.
std::string with_stored_line_breaks(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_STORED_TEXT_H
