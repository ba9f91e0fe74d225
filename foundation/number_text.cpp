#include "foundation/number_text.h"

#include <langinfo.h>

#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "foundation/itoa.h"

namespace {

constexpr int kDecimals = 6;
// 309 digits, sign, point, decimals and the terminator, and a decimal point of several bytes.
constexpr std::size_t kMaxFixedText = 384;

template <typename Integer>
void append_digits(qz_TextBuffer& text, Integer value) {
  char digits[qz_TextBuffer::kPadding + kMaxIntegerText];
  char* const end = digits + kMaxIntegerText;
  const char* const begin = qz_write_integer(end, value);
  text.append_padded(begin, static_cast<std::size_t>(end - begin));
}

/// Whether the C locale writes "." and the rounding mode is to nearest, which to_chars takes for granted.
bool are_numbers_plain() {
  const char* const point = nl_langinfo(RADIXCHAR);
  return point[0] == '.' && point[1] == '\0' && std::fegetround() == FE_TONEAREST;
}

}  // namespace

void qz_append_integer(qz_TextBuffer& text, int value) { append_digits(text, value); }

void qz_append_integer(qz_TextBuffer& text, unsigned int value) { append_digits(text, value); }

void qz_append_fixed(qz_TextBuffer& text, double value) {
  char* const begin = text.reserve(kMaxFixedText);
  if (std::isfinite(value) && are_numbers_plain()) {
    const auto result = std::to_chars(begin, begin + kMaxFixedText, value, std::chars_format::fixed, kDecimals);
    text.count_in(static_cast<std::size_t>(result.ptr - begin));
  } else {
    text.count_in(static_cast<std::size_t>(std::snprintf(begin, kMaxFixedText, "%f", value)));
  }
}
