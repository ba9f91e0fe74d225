#include "foundation/shortest_float.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>

#include "foundation/itoa.h"

namespace qzlog {

namespace {

static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);

// A double is its mantissa, with the implicit bit, times 2 to the power of its exponent field less kExponentOfUnits.
constexpr int kMantissaBits = 52;
constexpr int kExponentOfUnits = 1075;
constexpr std::uint64_t kImplicitBit = std::uint64_t{1} << kMantissaBits;
constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;

constexpr unsigned kUnitsPerWhole = 1000000;
// Numbers from 2^-11 to below 2^30: there doubles stand closer than millionths, so that one number of millionths at
// most reads back as a given double. It has the fewest digits once the zeros at its end are left out.
constexpr int kLeastFractionBits = 23;
constexpr int kMostFractionBits = 63;

char* write_whole(char* target, std::uint64_t whole) {
  if (whole > std::numeric_limits<unsigned>::max()) {
    return std::to_chars(target, target + kMaxShortestFloat, whole).ptr;
  }
  return write_number(target, static_cast<unsigned>(whole));
}

/// The point, and as many of six decimals as are not zeros at the end, one at least.
char* write_decimals(char* target, unsigned millionths) {
  *target++ = '.';
  target = write_digit_pair(target, millionths / 10000);
  if (const unsigned rest = millionths % 10000; rest != 0) {
    target = write_digit_pair(target, rest / 100);
    if (rest % 100 != 0) target = write_digit_pair(target, rest % 100);
  }
  return target[-1] == '0' ? target - 1 : target;
}

/// Null when no number of millionths reads back as the double, or that is not certain.
char* write_millionths(char* target, std::uint64_t bits, int fraction_bits) {
  const std::uint64_t stored = bits & (kImplicitBit - 1);
  const std::uint64_t mantissa = stored | kImplicitBit;
  std::uint64_t whole = mantissa >> fraction_bits;
  // The fraction in units of 2^-64, and its product with a million: millionths, and a rest in units of 2^-64 of them.
  const std::uint64_t fraction = mantissa << (64 - fraction_bits);
  const std::uint64_t low = (fraction & 0xFFFFFFFFU) * kUnitsPerWhole;
  const std::uint64_t high = (fraction >> 32) * kUnitsPerWhole + (low >> 32);
  auto millionths = static_cast<unsigned>(high >> 32);
  std::uint64_t distance = high << 32 | (low & 0xFFFFFFFFU);
  if ((distance & kSignBit) != 0) {
    distance = 0 - distance;
    ++millionths;
  }
  // Nearer than half the way to the next double; below a power of two that is half as far.
  const std::uint64_t half_way = std::uint64_t{kUnitsPerWhole} << (63 - fraction_bits);
  if (distance >= (stored != 0 ? half_way : half_way / 2)) return nullptr;
  if (millionths == kUnitsPerWhole) {
    millionths = 0;
    ++whole;
  }
  return write_decimals(write_whole(target, whole), millionths);
}

/// Null for what has a short way of no kind.
char* write_common(char* target, std::uint64_t bits) {
  if (bits == 0) return write_decimals(write_whole(target, 0), 0);
  const int fraction_bits = kExponentOfUnits - static_cast<int>(bits >> kMantissaBits);
  if (fraction_bits >= kLeastFractionBits && fraction_bits <= kMostFractionBits) {
    return write_millionths(target, bits, fraction_bits);
  }
  if (fraction_bits < 0 || fraction_bits >= kLeastFractionBits) return nullptr;
  const std::uint64_t mantissa = (bits & (kImplicitBit - 1)) | kImplicitBit;
  const std::uint64_t whole = mantissa >> fraction_bits;
  return whole << fraction_bits == mantissa ? write_decimals(write_whole(target, whole), 0) : nullptr;
}

char* write_any(char* target, double magnitude) {
  char* end = std::to_chars(target, target + kMaxShortestFloat - 1, magnitude).ptr;
  for (const char* at = target; at != end; ++at) {
    if (*at == '.' || *at == 'e') return end;
  }
  *end++ = '.';
  *end++ = '0';
  return end;
}

}  // namespace

char* write_shortest_float(char* target, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  if ((bits & kSignBit) != 0) *target++ = '-';
  char* const end = write_common(target, bits & ~kSignBit);
  return end != nullptr ? end : write_any(target, std::bit_cast<double>(bits & ~kSignBit));
}

}  // namespace qzlog
