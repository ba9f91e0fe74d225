#include "message/integer_style.h"

#include <climits>
#include <cstdlib>

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>

#include "foundation/itoa.h"
#include "message/icu_memory.h"

namespace qzlog {

namespace {

/// ICU's text of an integer; empty when it has none.
std::string text_of(const icu::MessageFormat& format, int value) {
  const icu::Formattable argument(value);
  icu::UnicodeString text;
  icu::FieldPosition position;
  UErrorCode status = U_ZERO_ERROR;
  format.format(&argument, 1, text, position, status);
  if (text.isBogus()) throw QZX_memory_alloc();
  std::string bytes;
  return U_SUCCESS(status) ? text.toUTF8String(bytes) : bytes;
}

}  // namespace

IntegerStyle::IntegerStyle(const icu::Locale& locale) {
  with_icu_memory([&] {
    const IcuMemory memory;
    learn(locale);
    memory.check();
  });
}

/// The digits and the minus sign come from the integers -9 to 9, and then have to give right what is longer too.
void IntegerStyle::learn(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(icu::UnicodeString(u"{0,number,##########}"), locale, status);
  if (status == U_MEMORY_ALLOCATION_ERROR) throw QZX_memory_alloc();
  if (U_FAILURE(status)) return;
  ascii_digits_ = true;
  for (int digit = 0; digit < 10; ++digit) {
    digits_[digit] = text_of(format, digit);
    ascii_digits_ = ascii_digits_ && digits_[digit] == std::to_string(digit);
  }
  const std::string minus_seven = text_of(format, -7);
  const std::size_t seven_at = minus_seven.find(digits_[7]);
  if (digits_[7].empty() || seven_at == std::string::npos) return;
  minus_before_ = minus_seven.substr(0, seven_at);
  minus_after_ = minus_seven.substr(seven_at + digits_[7].size());

  for (const int sample : {0, 1, -1, 10, 1000, 12345, 1234567890, -1234567890, INT_MAX, INT_MIN}) {
    TextBuffer text;
    append(text, sample);
    if (text_of(format, sample) != std::string(text.data(), text.size())) return;
  }
  usable_ = true;
}

void IntegerStyle::append(TextBuffer& text, int value) const {
  char digits[kMaxIntegerText];
  const char* const end = digits + kMaxIntegerText;
  const char* const begin = write_integer(digits + kMaxIntegerText,
                                          value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value));
  if (value < 0) text.append(minus_before_.data(), minus_before_.size());
  if (ascii_digits_) {
    text.append(begin, static_cast<std::size_t>(end - begin));
  } else {
    for (const char* digit = begin; digit != end; ++digit) {
      const std::string& localized = digits_[*digit - '0'];
      text.append(localized.data(), localized.size());
    }
  }
  if (value < 0) text.append(minus_after_.data(), minus_after_.size());
}

}  // namespace qzlog
