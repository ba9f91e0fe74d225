#ifndef QZLOG_MESSAGE_TEXT_CUT_H
#define QZLOG_MESSAGE_TEXT_CUT_H

#include <cstddef>

namespace qzlog {

/// So many bytes one UTF-16 unit takes at most in any code page, switching between character sets included.
inline constexpr std::size_t kMostBytesPerUnit = 8;

/// Cut a text to so many bytes, or UTF-16 units of what it stands for in a code page, into `buffer` of `capacity`
/// bytes. Throw QZX_logging_illegal_argument when what is left, with its terminator, does not fit: the buffer may then
/// hold a part of it.

/// What is shorter is filled up with zero bytes.
void cut_to_bytes(const char* text, int limit, char* buffer, int capacity);

/// A pair of units may be cut in two; what its first half becomes is the converter's matter.
void cut_to_units(const char* text, const char* code_page, int limit, char* buffer, int capacity);

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_TEXT_CUT_H
