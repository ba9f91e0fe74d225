#ifndef QZLOG_MESSAGE_NUMBER_STYLE_H
#define QZLOG_MESSAGE_NUMBER_STYLE_H

#include <cstddef>
#include <string>

#include <unicode/decimfmt.h>

#include "foundation/text_buffer.h"

namespace qzlog {

/// How a formatter of ICU's writes numbers, learnt from its own texts: digits, grouping, fractions, rounding and signs.
/// Writing them so takes a small part of the time. Never changes; any thread.
class NumberStyle {
 public:
  /// Of null it is not usable. QZX_memory_alloc, or IcuMayHaveRunOut, when ICU had no memory for a text; the formatter
  /// is of no use then.
  explicit NumberStyle(const icu::Format* format);

  /// False for a formatter that writes them in a way that this does not describe; append must not be used.
  bool is_usable() const { return usable_; }
  /// Appends the text that the formatter gives, in UTF-8.
  void append(TextBuffer& text, double value) const;

 private:
  class Digits;

  /// What stands before and behind the digits.
  struct Affixes {
    std::string before;
    std::string after;
  };

  void learn(const icu::DecimalFormat& format);
  bool learn_digits(const icu::DecimalFormat& format);
  bool learn_signs(const icu::DecimalFormat& format);
  bool learn_grouping(const icu::DecimalFormat& format);
  bool is_right_for_samples(const icu::DecimalFormat& format) const;
  std::string text_of(double value) const;
  std::string digits_of(const std::string& ascii) const;
  void append_digits(TextBuffer& text, const char* ascii, std::size_t count) const;
  void append_whole(TextBuffer& text, const char* ascii, std::size_t count) const;

  bool usable_ = false;
  bool ascii_digits_ = true;
  unsigned shift_ = 0;  // a value is shown times 10 to the power of it
  unsigned least_fraction_ = 0;
  unsigned most_fraction_ = 0;
  std::size_t group_ = 0;          // digits of the group before the point; 0: all
  std::size_t further_group_ = 0;  // of those before
  std::size_t least_grouped_ = 0;  // so many digits are grouped
  std::string digit_texts_[10];
  std::string separator_;
  std::string point_;
  Affixes positive_;
  Affixes negative_;
  std::string not_a_number_;
  std::string negative_not_a_number_;
  std::string infinity_;
  std::string negative_infinity_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_NUMBER_STYLE_H
