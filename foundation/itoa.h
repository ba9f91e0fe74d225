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

/// The same from the first digit on: writes to `target` and returns the end.
inline char* write_digit_pair(char* target, unsigned below_100) {
  return static_cast<char*>(std::memcpy(target, kDigitPairs + below_100 * 2, 2)) + 2;
}
inline char* write_four_digits(char* target, unsigned below_10000) {
  return write_digit_pair(write_digit_pair(target, below_10000 / 100), below_10000 % 100);
}
inline char* write_number_below_100(char* target, unsigned value) {
  if (value >= 10) return write_digit_pair(target, value);
  *target = static_cast<char>('0' + value);
  return target + 1;
}
inline char* write_number_below_10000(char* target, unsigned value) {
  if (value < 100) return write_number_below_100(target, value);
  return write_digit_pair(write_number_below_100(target, value / 100), value % 100);
}
inline char* write_number(char* target, unsigned int value) {
  constexpr unsigned kEightDigits = 100'000'000;
  if (value < 10000) return write_number_below_10000(target, value);
  if (value < kEightDigits) return write_four_digits(write_number_below_10000(target, value / 10000), value % 10000);
  target = write_number_below_100(target, value / kEightDigits);
  value %= kEightDigits;
  return write_four_digits(write_four_digits(target, value / 10000), value % 10000);
}
inline char* write_number(char* target, int value) {
  if (value >= 0) return write_number(target, static_cast<unsigned>(value));
  *target = '-';
  return write_number(target + 1, 0U - static_cast<unsigned>(value));
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_ITOA_H
