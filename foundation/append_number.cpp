#include "foundation/append_number.h"

#include <langinfo.h>

#include <bit>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace qzlog {

namespace {

constexpr int kDecimals = 6;
constexpr unsigned kUnitsPerWhole = 1000000;
// 309 digits, sign, point, decimals and the terminator, and a decimal point of several bytes.
constexpr std::size_t kMaxFixedText = 384;

static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);

// A double is its mantissa, with the implicit bit, times 2 to the power of its exponent field less kExponentOfUnits.
constexpr int kMantissaBits = 52;
constexpr int kExponentOfUnits = 1075;
constexpr std::uint64_t kImplicitBit = std::uint64_t{1} << kMantissaBits;

/// A number as a whole part and millionths, cut off, and what was cut off in units of 2^-64 millionths.
struct FixedPoint {
  std::uint64_t whole;
  unsigned millionths;
  std::uint64_t rest;
};

/// False for what does not fit: numbers from 2^53 on and, but for zero, those below about 2^-11.
bool to_fixed_point(double magnitude, FixedPoint& fixed) {
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  fixed = {};
  if (bits == 0) return true;
  const int fraction_bits = kExponentOfUnits - static_cast<int>(bits >> kMantissaBits);
  if (fraction_bits <= 0 || fraction_bits > 64) return false;
  const std::uint64_t mantissa = (bits & (kImplicitBit - 1)) | kImplicitBit;
  fixed.whole = fraction_bits == 64 ? 0 : mantissa >> fraction_bits;
  // The fraction in units of 2^-64, and its product with a million in two halves.
  const std::uint64_t fraction = mantissa << (64 - fraction_bits);
  const std::uint64_t low = (fraction & 0xFFFFFFFFU) * kUnitsPerWhole;
  const std::uint64_t high = (fraction >> 32) * kUnitsPerWhole + (low >> 32);
  fixed.millionths = static_cast<unsigned>(high >> 32);
  fixed.rest = high << 32 | (low & 0xFFFFFFFFU);
  return true;
}

/// To the nearest millionth, of two equally near to the even one.
void round_to_nearest(FixedPoint& fixed) {
  constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
  const bool is_up = fixed.rest > kHalf || (fixed.rest == kHalf && fixed.millionths % 2 != 0);
  if (!is_up || ++fixed.millionths != kUnitsPerWhole) return;
  fixed.millionths = 0;
  ++fixed.whole;
}

void append_whole(TextBuffer& text, std::uint64_t whole) {
  if (whole <= std::numeric_limits<unsigned>::max()) return append_integer(text, static_cast<unsigned>(whole));
  constexpr std::size_t kMaxDigits = 20;
  char* const begin = text.reserve(kMaxDigits);
  text.count_in(static_cast<std::size_t>(std::to_chars(begin, begin + kMaxDigits, whole).ptr - begin));
}

void append_fixed_point(TextBuffer& text, bool is_negative, const FixedPoint& fixed) {
  if (is_negative) text.append('-');
  append_whole(text, fixed.whole);
  char* const point = text.reserve(kDecimals + 1);
  // A million more gives the leading zeros; its own digit is where the point belongs.
  write_integer(point + kDecimals + 1, kUnitsPerWhole + fixed.millionths);
  *point = '.';
  text.count_in(kDecimals + 1);
}

bool is_point_plain() {
  const char* const point = nl_langinfo(RADIXCHAR);
  return point[0] == '.' && point[1] == '\0';
}

/// By the library's own means: the rounding is that of the floating-point environment unless there is nothing to round.
void append_rounded(TextBuffer& text, double value) {
  char* const begin = text.reserve(kMaxFixedText);
  if (std::isfinite(value) && is_point_plain() && std::fegetround() == FE_TONEAREST) {
    const auto result = std::to_chars(begin, begin + kMaxFixedText, value, std::chars_format::fixed, kDecimals);
    text.count_in(static_cast<std::size_t>(result.ptr - begin));
  } else {
    text.count_in(static_cast<std::size_t>(std::snprintf(begin, kMaxFixedText, "%f", value)));
  }
}

}  // namespace

void append_fixed(TextBuffer& text, double value) {
  FixedPoint fixed = {};
  const bool fits = std::isfinite(value) && to_fixed_point(std::fabs(value), fixed) && is_point_plain();
  if (!fits || (fixed.rest != 0 && std::fegetround() != FE_TONEAREST)) return append_rounded(text, value);
  round_to_nearest(fixed);
  append_fixed_point(text, std::signbit(value), fixed);
}

}  // namespace qzlog
