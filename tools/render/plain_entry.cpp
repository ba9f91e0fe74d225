#include "tools/render/plain_entry.h"

#include <simdjson.h>

#include <bit>
#include <cstdint>
#include <cstring>

namespace qzlog_tool {

namespace {

using Word = std::uint64_t;  // eight characters, the first in the lowest byte

constexpr Word kOnes = 0x0101010101010101U;
constexpr Word kHighBits = 0x80 * kOnes;
constexpr unsigned kMaximumDigits = 18;  // they fit in 64 bits

bool is_digit(char character) { return character >= '0' && character <= '9'; }

/// The digits at the beginning of eight characters, and their number.
struct LeadingDigits {
  unsigned count;
  Word number;
};

LeadingDigits leading_digits(const char* at) {
  Word word = 0;
  std::memcpy(&word, at, sizeof word);
  if (std::endian::native != std::endian::little) word = __builtin_bswap64(word);
  word ^= '0' * kOnes;  // digits become 0 to 9
  // Marks all up to the first that is none; bytes above it may be marked wrongly.
  const Word others = ((word + 0x76 * kOnes) | word) & kHighBits;
  const auto count = static_cast<unsigned>(std::countr_zero(others)) / 8;
  if (count == 0) return {0, 0};
  // Neighbours are joined: eight digits to four numbers below 100, two below 10,000, one.
  word <<= 64 - 8 * count;
  word = (word * 10 + (word >> 8)) & 0x00FF00FF00FF00FFU;
  word = (word * 100 + (word >> 16)) & 0x0000FFFF0000FFFFU;
  return {count, (word * 10000 + (word >> 32)) & 0xFFFFFFFFU};
}

/// A place in a line. Each `take` skips blanks, reads what it is named after and returns true, or returns false
/// somewhere on the way; the line is then not plain.
class Cursor {
 public:
  /// A quote stands at each place of `quotes`, and nothing that would need a second look stands anywhere.
  Cursor(char* text, QuoteIndex::Places quotes) : text_(text), at_(text), quotes_(quotes) {}

  bool take(char expected) {
    if (*at_ != expected) skip_blanks();
    if (*at_ != expected) return false;
    ++at_;
    return true;
  }

  bool take_text(std::string_view& text) {
    if (!take('"')) return false;
    quotes_.next();  // the one just taken
    char* const end = text_ + quotes_.next();
    if (*end != '"') return false;
    *end = '\0';
    text = std::string_view(at_, static_cast<std::size_t>(end - at_));
    at_ = end + 1;
    return true;
  }

  bool take_integer(std::int64_t& integer) {
    skip_blanks();
    const bool negative = *at_ == '-';
    if (negative) ++at_;
    const bool leading_zero = *at_ == '0';
    auto [digits, number] = leading_digits(at_);
    at_ += digits;
    if (digits == sizeof(Word)) {
      for (; is_digit(*at_) && digits <= kMaximumDigits; ++at_, ++digits) {
        number = number * 10 + static_cast<Word>(*at_ - '0');
      }
    }
    if (digits == 0 || digits > kMaximumDigits || (leading_zero && (digits > 1 || negative))) return false;
    integer = negative ? -static_cast<std::int64_t>(number) : static_cast<std::int64_t>(number);
    return true;
  }

  bool take_unsigned(std::uint32_t maximum, std::uint32_t& number) {
    std::int64_t integer = 0;
    if (!take_integer(integer) || integer < 0 || integer > std::int64_t{maximum}) return false;
    number = static_cast<std::uint32_t>(integer);
    return true;
  }

  bool take_bool(bool& truth) {
    skip_blanks();
    truth = *at_ == 't';
    const std::string_view word = truth ? "true" : "false";
    if (std::strncmp(at_, word.data(), word.size()) != 0) return false;
    at_ += word.size();
    return true;
  }

  bool take_value(JsonValue& value) {
    skip_blanks();
    if (*at_ == '"') {
      value.kind = JsonKind::kText;
      return take_text(value.text);
    }
    if (*at_ == 't' || *at_ == 'f') {
      value.kind = JsonKind::kBool;
      return take_bool(value.truth);
    }
    value.kind = JsonKind::kInteger;
    return take_integer(value.integer);
  }

  bool take_end() {
    skip_blanks();
    return *at_ == '\0';
  }

 private:
  void skip_blanks() {
    while (*at_ == ' ') ++at_;
  }

  char* text_;
  char* at_;
  QuoteIndex::Places quotes_;
};

/// Reads the fields of one entry.
class PlainLine {
 public:
  PlainLine(char* text, QuoteIndex::Places quotes, JsonEntry& entry, std::vector<JsonAttribute>& attributes)
      : cursor_(text, quotes), entry_(entry), attributes_(attributes) {}

  bool read() {
    if (!cursor_.take('{')) return false;
    do {
      if (!read_field()) return false;
    } while (cursor_.take(','));
    return cursor_.take('}') && cursor_.take_end() && (seen_ & kId) != 0;
  }

 private:
  enum Field : unsigned { kId = 1, kLevel = 2, kTime = 4, kAttributes = 8, kDefault = 16, kSelector = 32 };

  bool read_field() {
    std::string_view key;
    if (!cursor_.take_text(key) || !cursor_.take(':')) return false;
    if (key == "id") return first(kId) && read_id();
    if (key == "level") return first(kLevel) && cursor_.take_unsigned(kMaximumLevel, entry_.level);
    if (key == "time") return first(kTime) && read_time();
    if (key == "attributes") return first(kAttributes) && read_attributes();
    if (key == "default") return first(kDefault) && cursor_.take_bool(entry_.use_default);
    if (key == "selector") return first(kSelector) && cursor_.take_unsigned(kMaximumSelector, entry_.selector);
    return false;
  }

  bool first(Field field) {
    const bool is_first = (seen_ & field) == 0;
    seen_ |= field;
    return is_first;
  }

  bool read_id() {
    JsonValue id;
    if (!cursor_.take_value(id)) return false;
    if (id.kind == JsonKind::kText) {
      entry_.name = id.text;
      return !id.text.empty();
    }
    entry_.id = static_cast<std::uint32_t>(id.integer);
    return id.kind == JsonKind::kInteger && id.integer >= 0 && id.integer <= std::int64_t{kMaximumId};
  }

  bool read_time() {
    std::string_view text;
    if (!cursor_.take_text(text)) return false;
    entry_.time = text.data();
    return true;
  }

  bool read_attributes() {
    if (!cursor_.take('{')) return false;
    if (cursor_.take('}')) return true;
    std::size_t count = 0;
    do {
      if (count == attributes_.size()) attributes_.emplace_back();
      JsonAttribute& attribute = attributes_[count++];
      if (!cursor_.take_text(attribute.name) || !cursor_.take(':') || !cursor_.take_value(attribute.value))
        return false;
    } while (cursor_.take(','));
    entry_.attributes = JsonAttributes({attributes_.data(), count});
    return cursor_.take('}');
  }

  Cursor cursor_;
  JsonEntry& entry_;
  std::vector<JsonAttribute>& attributes_;
  unsigned seen_ = 0;
};

}  // namespace

PlainEntryScanner::PlainEntryScanner()
    : text_(std::make_unique<char[]>(kMaximumBytes + QuoteIndex::kPieceBytes)), quotes_(kMaximumBytes) {}

bool PlainEntryScanner::scan(std::string_view line, JsonEntry& entry) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() > kMaximumBytes) return false;
  std::memcpy(text_.get(), line.data(), line.size());
  std::memset(text_.get() + line.size(), ' ', QuoteIndex::kPieceBytes);
  if (!quotes_.read(text_.get(), line.size())) return false;
  if (quotes_.has_high_bytes() && !simdjson::validate_utf8(line.data(), line.size())) return false;
  text_[line.size()] = '\0';
  return PlainLine(text_.get(), quotes_.places(), entry, attributes_).read();
}

}  // namespace qzlog_tool
