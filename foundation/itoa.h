#ifndef QZLOG_FOUNDATION_ITOA_H
#define QZLOG_FOUNDATION_ITOA_H

#include <cstddef>

/// Write a number in decimal digits and a terminator; negative numbers with a leading minus sign. `buffer` holds at
/// least 12 bytes.
void my_itoa(char* buffer, unsigned int value);
void my_itoa(char* buffer, int value);

/// The most characters of the above, and how many `value` needs, with the characters but no terminator written in front
/// of `end`: returns the first of them.
constexpr std::size_t kMaxIntegerText = 11;
char* qz_write_integer(char* end, unsigned int value);
char* qz_write_integer(char* end, int value);

#endif  // QZLOG_FOUNDATION_ITOA_H
