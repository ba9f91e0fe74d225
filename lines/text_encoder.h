#ifndef QZLOG_LINES_TEXT_ENCODER_H
#define QZLOG_LINES_TEXT_ENCODER_H

#include <string>
#include <string_view>

namespace qzlog {

/// Makes texts of lines, which are UTF-8, what entries keep: texts in the stored code page (see StoredCodePage).
class TextEncoder {
 public:
  /// Looks at the settings.
  void update();

  /// Makes of `text`, which is UTF-8 with a zero byte behind it, what is to be stored, valid until the next call.
  /// Characters that the code page lacks become its substitution character. False when it cannot be converted.
  bool convert(std::string_view& text);
  bool is_utf8() const { return is_utf8_; }
  const std::string& name() const { return name_; }

 private:
  std::string name_ = "UTF-8";
  bool is_utf8_ = true;
  std::string converted_;  // kept, so that not every text takes memory anew
};

}  // namespace qzlog

#endif  // QZLOG_LINES_TEXT_ENCODER_H
