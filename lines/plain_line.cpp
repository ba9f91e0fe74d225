#include "lines/plain_line.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "lines/envelope_form.h"
#include "lines/json_number.h"
#include "lines/json_unescape.h"
#include "message/code_page.h"

namespace qzlog {

namespace {

using Word = std::uint64_t;  // eight characters, the first in the lowest byte

constexpr Word kOnes = 0x0101010101010101U;
constexpr Word kHighBits = 0x80 * kOnes;
constexpr unsigned kMaximumDigits = 18;  // they fit in 64 bits

bool is_digit(char character) { return character >= '0' && character <= '9'; }

bool is_part_of_number(char character) {
  return is_digit(character) || character == '.' || character == 'e' || character == 'E' || character == '+' ||
         character == '-';
}

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
  /// A quote that nothing escapes stands at each place of `quotes`, and control characters nowhere. `has_escapes` says
  /// whether texts may hold escapes.
  Cursor(char* text, QuoteIndex::Places quotes, bool has_escapes)
      : text_(text), at_(text), quotes_(quotes), has_escapes_(has_escapes) {}

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
    char* const text_end = has_escapes_ ? decode_escapes(at_, end) : end;
    if (text_end == nullptr) return false;
    *text_end = '\0';
    text = std::string_view(at_, static_cast<std::size_t>(text_end - at_));
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
    return take_number(value);
  }

  std::uint32_t place() {
    skip_blanks();
    return static_cast<std::uint32_t>(at_ - text_);
  }

  bool take_end() {
    skip_blanks();
    return *at_ == '\0';
  }

 private:
  void skip_blanks() {
    while (*at_ == ' ') ++at_;
  }

  /// Null when an escape is wrong or stands for U+0000, which no text can hold.
  static char* decode_escapes(char* begin, char* end) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (size == 0 || std::memchr(begin, '\\', size) == nullptr) return end;
    char* const text_end = decode_json_escapes(begin, end);
    if (text_end == nullptr || std::memchr(begin, '\0', static_cast<std::size_t>(text_end - begin)) != nullptr) {
      return nullptr;
    }
    return text_end;
  }

  bool take_number(JsonValue& value) {
    const char* const begin = at_;
    const bool is_integer = take_integer(value.integer);
    value.kind = JsonKind::kInteger;
    if (*at_ != '.' && *at_ != 'e' && *at_ != 'E') return is_integer;
    while (is_part_of_number(*at_)) ++at_;
    const JsonNumber number = read_json_number(begin, at_);
    value.kind = JsonKind::kFloat;
    value.number = number.number;
    return number.kind == JsonNumber::kFloat && number.end == at_;
  }

  char* text_;
  char* at_;
  QuoteIndex::Places quotes_;
  bool has_escapes_;
};

/// Reads the fields of one entry.
class PlainLine {
 public:
  PlainLine(char* text, const QuoteIndex& quotes, LineFields& fields, std::vector<LineAttribute>& attributes)
      : cursor_(text, quotes.places(), quotes.has_backslashes()), fields_(fields), attributes_(attributes) {}

  bool read() {
    if (!cursor_.take('{')) return false;
    do {
      if (!read_field()) return false;
    } while (cursor_.take(','));
    return cursor_.take('}') && cursor_.take_end() && (seen_ & kId) != 0;
  }

 private:
  enum Field : unsigned {
    kId = 1,
    kLevel = 2,
    kTime = 4,
    kAttributes = 8,
    kDefault = 16,
    kSelector = 32,
    kWriter = 64,
    kSeq = 128,
    kWritten = 256,
    kDefinitions = 512,
    kName = 1024
  };

  bool read_field() {
    std::string_view key;
    if (!cursor_.take_text(key) || !cursor_.take(':')) return false;
    if (key == "id") return first(kId) && read_id();
    if (key == "level") return first(kLevel) && cursor_.take_unsigned(kMaximumLevel, fields_.level);
    if (key == "time") return first(kTime) && read_time();
    if (key == "attributes") return first(kAttributes) && read_attributes();
    if (key == "default") return first(kDefault) && cursor_.take_bool(fields_.use_default);
    if (key == "selector") return first(kSelector) && cursor_.take_unsigned(kMaximumSelector, fields_.selector);
    return read_envelope_field(key);
  }

  bool read_envelope_field(std::string_view key) {
    if (key == "seq") return first(kSeq) && read_seq();
    if (key == "writer") return first(kWriter) && read_form(fields_.writer, is_writer_form);
    if (key == "written") return first(kWritten) && read_form(fields_.written, is_moment_form);
    if (key == "definitions") return first(kDefinitions) && read_form(fields_.definitions, is_definitions_form);
    if (key == "name") return first(kName) && read_form(fields_.name, is_event_name_form);
    return false;
  }

  bool first(Field field) {
    const bool is_first = (seen_ & field) == 0;
    seen_ |= field;
    return is_first;
  }

  bool read_form(std::string_view& text, bool (*has_form)(std::string_view)) {
    return cursor_.take_text(text) && has_form(text);
  }

  bool read_seq() {
    std::int64_t seq = 0;
    fields_.has_seq = true;
    if (!cursor_.take_integer(seq) || seq < 0) return false;
    fields_.seq = static_cast<std::uint64_t>(seq);
    return true;
  }

  bool read_id() {
    JsonValue id;
    fields_.id_place = cursor_.place();
    if (!cursor_.take_value(id)) return false;
    if (id.kind == JsonKind::kText) {
      fields_.symbolic_id = id.text;
      return !id.text.empty();
    }
    fields_.id = static_cast<std::uint32_t>(id.integer);
    return id.kind == JsonKind::kInteger && id.integer >= 0 && id.integer <= std::int64_t{kMaximumId};
  }

  bool read_time() {
    std::string_view text;
    fields_.time_place = cursor_.place();
    if (!cursor_.take_text(text)) return false;
    fields_.time = text.data();
    return true;
  }

  bool read_attributes() {
    if (!cursor_.take('{')) return false;
    if (cursor_.take('}')) return true;
    std::size_t count = 0;
    do {
      if (count == attributes_.size()) attributes_.emplace_back();
      LineAttribute& attribute = attributes_[count++];
      if (!cursor_.take_text(attribute.name) || !cursor_.take(':')) return false;
      attribute.place = cursor_.place();
      if (!cursor_.take_value(attribute.value)) return false;
    } while (cursor_.take(','));
    fields_.attributes = LineAttributes({attributes_.data(), count});
    return cursor_.take('}');
  }

  Cursor cursor_;
  LineFields& fields_;
  std::vector<LineAttribute>& attributes_;
  unsigned seen_ = 0;
};

}  // namespace

// Twice what the longest line so far needed, in whole pieces.
void PlainLineScanner::make_room(std::size_t size) {
  constexpr std::size_t kLeastBytes = 512;
  const std::size_t capacity = std::clamp(std::bit_ceil(size), kLeastBytes, kMaximumBytes);
  quotes_.reserve(capacity);
  text_.reset();
  capacity_ = 0;
  text_ = std::make_unique_for_overwrite<char[]>(capacity + QuoteIndex::kPieceBytes);
  capacity_ = capacity;
}

bool PlainLineScanner::scan(std::string_view line, LineFields& fields) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() > kMaximumBytes) return false;
  if (line.size() > capacity_ || text_ == nullptr) make_room(line.size());
  std::memcpy(text_.get(), line.data(), line.size());
  std::memset(text_.get() + line.size(), ' ', QuoteIndex::kPieceBytes);
  if (!quotes_.read(text_.get(), line.size())) return false;
  if (quotes_.has_high_bytes() && !is_valid_utf8(line.data(), line.size())) return false;
  text_[line.size()] = '\0';
  return PlainLine(text_.get(), quotes_, fields, attributes_).read();
}

}  // namespace qzlog
