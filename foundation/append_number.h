#ifndef QZLOG_FOUNDATION_APPEND_NUMBER_H
#define QZLOG_FOUNDATION_APPEND_NUMBER_H

#include "foundation/itoa.h"
#include "foundation/text_buffer.h"

namespace qzlog {

/// The texts that printf writes, where they can be made without it.

/// "%d" and "%u", to a TextBuffer or a TextCursor.
template <typename Text>
void append_integer(Text& text, unsigned int value) {
  const unsigned digits = count_digits(value);
  write_integer(text.reserve(kMaxIntegerText) + digits, value);
  text.count_in(digits);
}
template <typename Text>
void append_integer(Text& text, int value) {
  if (value >= 0) return append_integer(text, static_cast<unsigned>(value));
  text.append('-');
  append_integer(text, 0U - static_cast<unsigned>(value));
}

/// "%f": six decimals, rounded in the thread's rounding mode, with the decimal point of its C locale.
void append_fixed(TextBuffer& text, double value);

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_APPEND_NUMBER_H
