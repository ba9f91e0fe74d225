#ifndef QZLOG_TOOLS_OPTIONS_OUTPUT_CODE_PAGE_H
#define QZLOG_TOOLS_OPTIONS_OUTPUT_CODE_PAGE_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// A code page that texts are converted to.
class CodePage {
 public:
  /// Throws CommandError (cannot run) when no converter has that name, or when line ends, letters and digits would not
  /// be the same bytes as in ASCII, so that the output could not be lines of text (UTF-16, EBCDIC).
  explicit CodePage(std::string name);

  const std::string& name() const noexcept { return name_; }
  bool is_utf8() const noexcept { return is_utf8_; }

  /// `text` in this code page, in place of what `target` holds. Characters that the code page lacks, and bytes that are
  /// not UTF-8, become its substitution character. False when the conversion fails.
  bool from_utf8(const char* text, std::size_t length, std::string& target) const;

 private:
  std::string name_;
  bool is_utf8_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_OUTPUT_CODE_PAGE_H
