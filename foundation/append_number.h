#ifndef QZLOG_FOUNDATION_APPEND_NUMBER_H
#define QZLOG_FOUNDATION_APPEND_NUMBER_H

#include "foundation/itoa.h"
#include "foundation/text_buffer.h"

/// The texts that printf writes, where they can be made without it.

/// "%d" and "%u", to a qz_TextBuffer or a qz_TextCursor.
template <typename Text>
void qz_append_integer(Text& text, unsigned int value) {
  const unsigned digits = qz_count_digits(value);
  qz_write_integer(text.reserve(kMaxIntegerText) + digits, value);
  text.count_in(digits);
}
template <typename Text>
void qz_append_integer(Text& text, int value) {
  if (value >= 0) return qz_append_integer(text, static_cast<unsigned>(value));
  text.append('-');
  qz_append_integer(text, 0U - static_cast<unsigned>(value));
}

/// "%f": six decimals, rounded in the thread's rounding mode, with the decimal point of its C locale.
void qz_append_fixed(qz_TextBuffer& text, double value);

#endif  // QZLOG_FOUNDATION_APPEND_NUMBER_H
