#include "lines/json_number.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace qzlog {
namespace {

bool is_digit(char character) { return character >= '0' && character <= '9'; }

const char* skip_digits(const char* at, const char* end) { return std::find_if_not(at, end, is_digit); }

/// The parts of a number.
struct NumberParts {
  const char* digits = nullptr;    // behind the sign
  const char* fraction = nullptr;  // its point, or the end of the digits
  const char* exponent = nullptr;  // its letter, or the end of the fraction
  const char* end = nullptr;       // null where a digit is missing
  const char* missing = nullptr;   // where it is missing

  bool is_integer() const { return digits != nullptr && fraction == end; }
};

NumberParts split(const char* begin, const char* end) {
  NumberParts parts;
  const auto without = [&parts](const char* place) {
    parts.end = nullptr;
    parts.missing = place;
    return parts;
  };
  parts.digits = begin + (begin != end && *begin == '-' ? 1 : 0);
  if (parts.digits == end || !is_digit(*parts.digits)) return without(parts.digits);
  const char* at = *parts.digits == '0' ? parts.digits + 1 : skip_digits(parts.digits, end);
  if (at != end && is_digit(*at)) return without(at);  // behind a leading zero
  parts.fraction = at;
  if (at != end && *at == '.') {
    const char* const first = ++at;
    at = skip_digits(at, end);
    if (at == first) return without(at);
  }
  parts.exponent = at;
  if (at != end && (*at == 'e' || *at == 'E')) {
    ++at;
    if (at != end && (*at == '+' || *at == '-')) ++at;
    const char* const first = at;
    at = skip_digits(at, end);
    if (at == first) return without(at);
  }
  parts.end = at;
  return parts;
}

void read_integer(const char* begin, const NumberParts& parts, JsonNumber& number) {
  number.kind = JsonNumber::kInteger;
  number.negative_zero = *begin == '-' && *parts.digits == '0';
  if (std::from_chars(begin, parts.end, number.integer).ec == std::errc()) return;
  number.kind = JsonNumber::kLargeInteger;
  if (*begin != '-' && std::from_chars(begin, parts.end, number.large_integer).ec == std::errc()) return;
  number.kind = JsonNumber::kTooLarge;
}

/// Whether a number that no double comes near to is so small, not so large. Its first digit that counts and its
/// exponent are far apart in neither case.
bool is_small(const NumberParts& parts) {
  constexpr std::int64_t kFar = std::int64_t{1} << 40;
  std::int64_t exponent = 0;
  if (parts.exponent != parts.end) {
    const char* at = parts.exponent + 1;
    const bool negative = *at == '-';
    if (!is_digit(*at)) ++at;
    for (; at != parts.end; ++at) exponent = std::min(exponent * 10 + (*at - '0'), kFar);
    if (negative) exponent = -exponent;
  }
  if (*parts.digits != '0') return exponent + (parts.fraction - parts.digits) < 0;
  const char* const first = std::find_if(parts.fraction, parts.exponent, [](char digit) { return digit >= '1'; });
  return exponent - (first - parts.fraction) < 0;
}

void read_float(const char* begin, const NumberParts& parts, JsonNumber& number) {
  number.kind = JsonNumber::kFloat;
  if (std::from_chars(begin, parts.end, number.number).ec == std::errc()) return;
  number.number = *begin == '-' ? -0.0 : 0.0;
  if (!is_small(parts)) number.kind = JsonNumber::kTooLarge;
}

}  // namespace

JsonNumber read_json_number(const char* begin, const char* end) {
  JsonNumber number;
  const NumberParts parts = split(begin, end);
  number.end = parts.end != nullptr ? parts.end : parts.missing;
  if (parts.end == nullptr) return number;
  if (parts.is_integer()) {
    read_integer(begin, parts, number);
  } else {
    read_float(begin, parts, number);
  }
  return number;
}

}  // namespace qzlog
