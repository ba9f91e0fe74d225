#include "message/number_style.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include <unicode/dcfmtsym.h>

#include "message/icu_memory.h"

namespace qzlog {

namespace {

using Symbols = icu::DecimalFormatSymbols;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
// More than formats of locales have.
constexpr unsigned kMostFraction = 9;
constexpr unsigned kMostShift = 2;
// Below it a double tells any two numbers with a fraction of what is shown apart: 15 digits.
constexpr double kMostUnits = 1e15;

constexpr double kPowers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11};
static_assert(std::size(kPowers) == kMostFraction + kMostShift + 1);

std::string in_utf8(const icu::UnicodeString& text) {
  if (text.isBogus()) throw QZX_memory_alloc();
  std::string bytes;
  return text.toUTF8String(bytes);
}

/// ICU's text of a number.
std::string icu_text(const icu::DecimalFormat& format, double value) {
  icu::UnicodeString text;
  return in_utf8(format.format(value, text));
}

void append_text(TextBuffer& text, const std::string& added) { text.append(added.data(), added.size()); }

std::string symbol(const Symbols& symbols, Symbols::ENumberFormatSymbol which) {
  return in_utf8(symbols.getSymbol(which));
}

}  // namespace

/// The decimal digits of a number as it is shown, rounded.
class NumberStyle::Digits {
 public:
  Digits(const NumberStyle& style, double value) : most_fraction_(style.most_fraction_) {
    const double power = kPowers[style.most_fraction_ + style.shift_];
    const double units = value * power;
    const auto whole_units = static_cast<std::uint64_t>(units < kMostUnits ? units + 0.5 : 0.0);
    // Then no shorter text reads back as this number.
    if (units < kMostUnits && static_cast<double>(whole_units) / power == value) {
      take_units(whole_units);
    } else {
      round_shortest(value, static_cast<int>(style.shift_));
    }
    while (fraction_count_ > style.least_fraction_ && fraction()[fraction_count_ - 1] == '0') --fraction_count_;
  }

  const char* whole() const { return begin_; }
  std::size_t whole_count() const { return whole_count_; }
  const char* fraction() const { return begin_ + whole_count_; }
  std::size_t fraction_count() const { return fraction_count_; }

 private:
  static constexpr std::size_t kMostWhole = std::numeric_limits<double>::max_exponent10 + kMostShift + 2;

  void take_units(std::uint64_t units) {
    const std::to_chars_result end = std::to_chars(text_ + kMostFraction + 1, text_ + sizeof text_, units);
    begin_ = text_ + kMostFraction + 1;
    std::size_t count = static_cast<std::size_t>(end.ptr - begin_);
    // One digit before the point at least.
    for (; count < most_fraction_ + 1; ++count) *--begin_ = '0';
    split(count);
  }

  /// Half to even, of the shortest decimal number that reads back as the value.
  void round_shortest(double value, int shift) {
    char shortest[32];
    const char* const end =
        std::to_chars(shortest, shortest + sizeof shortest, value, std::chars_format::scientific).ptr;
    const char* const exponent = std::find(static_cast<const char*>(shortest), end, 'e');
    char digits[sizeof shortest];
    const char* const digits_end = std::remove_copy(static_cast<const char*>(shortest), exponent, digits, '.');
    int power = 0;
    std::from_chars(exponent + (exponent[1] == '+' ? 2 : 1), end, power);
    place(digits, static_cast<std::size_t>(digits_end - digits), power + 1 + shift);
  }

  /// Of the number 0.DIGITS times 10 to the power of `point`.
  void place(const char* digits, std::size_t count, int point) {
    begin_ = text_ + 1;  // a digit may come before
    const int wanted = point + static_cast<int>(most_fraction_);
    const auto shown = static_cast<std::size_t>(std::max(wanted, 0));
    // What is shown begins with zeros when the number is below 1.
    const auto zeros = static_cast<std::size_t>(std::clamp(1 - point, 0, static_cast<int>(most_fraction_) + 1));
    std::fill_n(begin_, zeros, '0');
    const std::size_t kept = std::min(shown, count);
    std::copy_n(digits, kept, begin_ + zeros);
    std::fill_n(begin_ + zeros + kept, shown - kept, '0');
    std::size_t total = zeros + shown;
    if (wanted >= 0 && is_rounded_up(digits, count, shown)) total += increment(total);
    split(total);
  }

  static bool is_rounded_up(const char* digits, std::size_t count, std::size_t shown) {
    if (shown >= count || digits[shown] < '5') return false;
    const bool is_tie = digits[shown] == '5' && shown + 1 == count;
    return !is_tie || (shown != 0 && (digits[shown - 1] - '0') % 2 != 0);
  }

  /// How many digits more there are.
  std::size_t increment(std::size_t count) {
    char* digit = begin_ + count;
    while (digit != begin_ && digit[-1] == '9') *--digit = '0';
    if (digit != begin_) {
      ++digit[-1];
      return 0;
    }
    *--begin_ = '1';
    return 1;
  }

  void split(std::size_t count) {
    fraction_count_ = most_fraction_;
    whole_count_ = count - most_fraction_;
  }

  std::size_t most_fraction_;
  char* begin_ = nullptr;
  std::size_t whole_count_ = 0;
  std::size_t fraction_count_ = 0;
  char text_[kMostWhole + kMostFraction + 32];
};

NumberStyle::NumberStyle(const icu::Format* format) {
  const auto* const decimal = dynamic_cast<const icu::DecimalFormat*>(format);
  if (decimal == nullptr) return;
  const IcuMemory memory;
  learn(*decimal);
  memory.check();
}

void NumberStyle::learn(const icu::DecimalFormat& format) {
  usable_ = learn_digits(format) && learn_signs(format) && learn_grouping(format) && is_right_for_samples(format);
}

bool NumberStyle::learn_digits(const icu::DecimalFormat& format) {
  const int least_fraction = format.getMinimumFractionDigits();
  const int most_fraction = format.getMaximumFractionDigits();
  if (least_fraction < 0 || most_fraction < least_fraction || most_fraction > static_cast<int>(kMostFraction)) {
    return false;
  }
  least_fraction_ = static_cast<unsigned>(least_fraction);
  most_fraction_ = static_cast<unsigned>(most_fraction);
  const Symbols* const symbols = format.getDecimalFormatSymbols();
  if (symbols == nullptr) throw QZX_memory_alloc();
  ascii_digits_ = true;
  for (int digit = 0; digit < 10; ++digit) {
    digit_texts_[digit] = in_utf8(symbols->getConstDigitSymbol(digit));
    ascii_digits_ = ascii_digits_ && digit_texts_[digit] == std::to_string(digit);
  }
  point_ = symbol(*symbols, Symbols::kDecimalSeparatorSymbol);
  separator_ = symbol(*symbols, Symbols::kGroupingSeparatorSymbol);
  // A currency may have signs of its own.
  const std::string own_point = symbol(*symbols, Symbols::kMonetarySeparatorSymbol);
  const std::string own_separator = symbol(*symbols, Symbols::kMonetaryGroupingSeparatorSymbol);
  const std::string text = icu_text(format, 1234567.5);
  if (text.find(digits_of("7") + point_) == std::string::npos &&
      text.find(digits_of("7") + own_point) != std::string::npos) {
    point_ = own_point;
  }
  if (text.find(separator_ + digits_of("567")) == std::string::npos &&
      text.find(own_separator + digits_of("567")) != std::string::npos) {
    separator_ = own_separator;
  }
  return !digit_texts_[7].empty();
}

bool NumberStyle::learn_signs(const icu::DecimalFormat& format) {
  std::string seven = digits_of("7");
  if (least_fraction_ != 0) seven += point_ + digits_of(std::string(least_fraction_, '0'));
  // A percentage shows a hundred times the value.
  shift_ = icu_text(format, 7).find(digits_of("700")) != std::string::npos ? kMostShift : 0;
  const double value = shift_ != 0 ? 0.07 : 7;
  for (const auto& [affixes, text] :
       {std::pair(&positive_, icu_text(format, value)), std::pair(&negative_, icu_text(format, -value))}) {
    const std::size_t at = text.find(seven);
    if (at == std::string::npos) return false;
    affixes->before = text.substr(0, at);
    affixes->after = text.substr(at + seven.size());
  }
  not_a_number_ = icu_text(format, kNotANumber);
  negative_not_a_number_ = icu_text(format, -kNotANumber);
  infinity_ = icu_text(format, kInfinity);
  negative_infinity_ = icu_text(format, -kInfinity);
  return true;
}

bool NumberStyle::learn_grouping(const icu::DecimalFormat& format) {
  if (!format.isGroupingUsed() || format.getGroupingSize() <= 0) return true;
  group_ = static_cast<std::size_t>(format.getGroupingSize());
  further_group_ =
      format.getSecondaryGroupingSize() > 0 ? static_cast<std::size_t>(format.getSecondaryGroupingSize()) : group_;
  // Some locales group from a second digit of the next group on.
  for (const unsigned least : {1U, 2U}) {
    least_grouped_ = group_ + least;
    const double value = std::pow(10.0, static_cast<double>(least_grouped_ - 1) - shift_);
    if (icu_text(format, value) == text_of(value)) return true;
  }
  return false;
}

bool NumberStyle::is_right_for_samples(const icu::DecimalFormat& format) const {
  for (const double value : {0.0,         1.0,         0.5,        1.5,         0.05,     0.005,
                             0.0005,      0.125,       0.0625,     2.5,         1234.0,   12345.0,
                             123456.0,    1234567.0,   99.995,     999.9995,    9999.5,   0.99999,
                             1234567.891, 1e15,        12345e15,   1e22,        1.25e-7,  1e-300,
                             1e300,       0.1 + 0.2,   4.35,       1000000.5,   0.000501, 98765.4321,
                             kInfinity,   kNotANumber, 8388607.75, 1e9 + 0.125, 5e-324,   1.7976931348623157e308}) {
    for (const double each : {value, -value}) {
      if (icu_text(format, each) != text_of(each)) return false;
    }
  }
  return true;
}

std::string NumberStyle::text_of(double value) const {
  TextBuffer text;
  append(text, value);
  return std::string(text.data(), text.size());
}

std::string NumberStyle::digits_of(const std::string& ascii) const {
  TextBuffer text;
  append_digits(text, ascii.data(), ascii.size());
  return std::string(text.data(), text.size());
}

void NumberStyle::append(TextBuffer& text, double value) const {
  const bool is_negative = std::signbit(value);
  if (std::isnan(value)) return append_text(text, is_negative ? negative_not_a_number_ : not_a_number_);
  if (std::isinf(value)) return append_text(text, is_negative ? negative_infinity_ : infinity_);
  const Affixes& affixes = is_negative ? negative_ : positive_;
  const Digits digits(*this, std::fabs(value));
  append_text(text, affixes.before);
  append_whole(text, digits.whole(), digits.whole_count());
  if (digits.fraction_count() != 0) {
    append_text(text, point_);
    append_digits(text, digits.fraction(), digits.fraction_count());
  }
  append_text(text, affixes.after);
}

void NumberStyle::append_whole(TextBuffer& text, const char* ascii, std::size_t count) const {
  if (group_ == 0 || count < least_grouped_) return append_digits(text, ascii, count);
  std::size_t left = count;
  // The first group is what the others leave.
  std::size_t group = (left - group_ - 1) % further_group_ + 1;
  while (left > group_) {
    append_digits(text, ascii, group);
    append_text(text, separator_);
    ascii += group;
    left -= group;
    group = further_group_;
  }
  append_digits(text, ascii, left);
}

void NumberStyle::append_digits(TextBuffer& text, const char* ascii, std::size_t count) const {
  if (ascii_digits_) return text.append(ascii, count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& digit = digit_texts_[ascii[i] - '0'];
    append_text(text, digit);
  }
}

}  // namespace qzlog
