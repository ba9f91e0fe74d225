#ifndef QZLOG_FOUNDATION_ITOA_H
#define QZLOG_FOUNDATION_ITOA_H

#include <cstddef>
#include <cstring>

/// Write a number in decimal digits and a terminator; negative numbers with a leading minus sign. `buffer` holds at
/// least 12 bytes.
void my_itoa(char* buffer, unsigned int value);
void my_itoa(char* buffer, int value);

namespace qzlog {

/// The most characters of the above, without the terminator.
constexpr std::size_t kMaxIntegerText = 11;

/// "00", "01" ... "99".
extern const char kDigitPairs[201];

/// Writes the digits, without a terminator, in front of `end`, and returns the first of them.
inline char* write_integer(char* end, unsigned int value) {
  // Two digits at a time.
  for (; value >= 100; value /= 100) end = static_cast<char*>(std::memcpy(end - 2, kDigitPairs + value % 100 * 2, 2));
  if (value >= 10) return static_cast<char*>(std::memcpy(end - 2, kDigitPairs + value * 2, 2));
  *--end = static_cast<char>('0' + value);
  return end;
}

/// How many digits the number has.
constexpr unsigned count_digits(unsigned int value) {
  return value < 10           ? 1
         : value < 100        ? 2
         : value < 1000       ? 3
         : value < 10000      ? 4
         : value < 100000     ? 5
         : value < 1000000    ? 6
         : value < 10000000   ? 7
         : value < 100000000  ? 8
         : value < 1000000000 ? 9
                              : 10;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_ITOA_H
