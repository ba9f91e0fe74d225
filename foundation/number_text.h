#ifndef QZLOG_FOUNDATION_NUMBER_TEXT_H
#define QZLOG_FOUNDATION_NUMBER_TEXT_H

#include "foundation/text_buffer.h"

/// The texts that printf writes, where they can be made without it.

/// "%d" and "%u".
void qz_append_integer(qz_TextBuffer& text, int value);
void qz_append_integer(qz_TextBuffer& text, unsigned int value);

/// "%f": six decimals, rounded in the thread's rounding mode, with the decimal point of its C locale.
void qz_append_fixed(qz_TextBuffer& text, double value);

#endif  // QZLOG_FOUNDATION_NUMBER_TEXT_H
