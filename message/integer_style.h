#ifndef QZLOG_MESSAGE_INTEGER_STYLE_H
#define QZLOG_MESSAGE_INTEGER_STYLE_H

#include <string>

#include <unicode/locid.h>

#include "foundation/text_buffer.h"

namespace qzlog {

/// How a locale writes the integers of messages (the pattern "##########"): digits without grouping and a sign, learnt
/// from ICU's own texts.
class IntegerStyle {
 public:
  /// QZX_memory_alloc when ICU had no memory for a text.
  explicit IntegerStyle(const icu::Locale& locale);

  /// False for a locale that writes them in a way that digit for digit does not describe; append must not be used.
  bool is_usable() const { return usable_; }
  /// Appends the text that ICU gives, in UTF-8.
  void append(TextBuffer& text, int value) const;

 private:
  void learn(const icu::Locale& locale);

  bool usable_ = false;
  bool ascii_digits_ = false;
  std::string digits_[10];
  std::string minus_before_;
  std::string minus_after_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_INTEGER_STYLE_H
