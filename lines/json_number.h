#ifndef QZLOG_LINES_JSON_NUMBER_H
#define QZLOG_LINES_JSON_NUMBER_H

#include <cstdint>

namespace qzlog {

/// A number as JSON writes it.
struct JsonNumber {
  enum Kind { kNone, kInteger, kLargeInteger, kFloat, kTooLarge };

  Kind kind = kNone;
  const char* end = nullptr;   ///< behind the number; of kNone, where something else would have to stand
  bool negative_zero = false;  ///< the integer -0
  std::int64_t integer = 0;
  std::uint64_t large_integer = 0;  ///< kLargeInteger: above INT64_MAX
  double number = 0;                ///< kFloat; what is too small for a double is zero
};

/// Reads a number that begins at `begin`, which is '-' or a digit; nothing at `end` or behind it is looked at.
/// kTooLarge for an integer of more than 64 bits and a number above the largest double.
JsonNumber read_json_number(const char* begin, const char* end);

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_NUMBER_H
