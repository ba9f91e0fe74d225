#include "tools/choice/raw_line.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "tools/choice/byte_search.h"

namespace qzlog_tool {

namespace {

// What lines have beside attributes.
constexpr std::string_view kMembers[] = {"id",    "lost", "level",  "time",    "attributes",  "default", "selector",
                                         "bytes", "seq",  "writer", "written", "definitions", "name"};
// What an entry has with its time.
constexpr std::string_view kTimeAttributes[] = {"TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE"};

constexpr std::size_t kTimeSize = std::string_view("2026-11-21T08:15:30Z").size();

bool is_digit(char character) { return character >= '0' && character <= '9'; }

// All others could be escaped, or have to be.
bool is_unescaped(char character) {
  return character != '"' && character != '\\' && character != '/' && static_cast<unsigned char>(character) > ' ';
}

template <std::size_t size>
bool is_one_of(std::string_view name, const std::string_view (&names)[size]) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

RawKey::RawKey(std::string_view name)
    : text_('"' + std::string(name) + '"'),
      is_plain_(!name.empty() && std::all_of(name.begin(), name.end(), is_unescaped) && !is_one_of(name, kMembers) &&
                !is_one_of(name, kTimeAttributes)) {}

/// Goes through a line's beginning; `at_` is never behind the line's end.
class RawLine::Reader {
 public:
  explicit Reader(RawLine& line) : line_(line), rest_(line.line_) {}

  void read() {
    if (!take("{") || !read_envelope() || !take("\"id\":") || !read_id()) return;
    if (take("\"level\":") && !read_level()) return;
    if (take("\"time\":\"") && !read_time()) return;
    take("\"default\":true,");
    if (take("\"selector\":") && !skip_number()) return;
    std::string_view name;
    if (take("\"name\":\"") && !(take_text(name) && take(","))) return;
    if (take("\"attributes\":{")) line_.attributes_ = line_.line_.size() - rest_.size();
  }

 private:
  bool take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  /// Up to the closing quote, which is taken too. False for a text with a backslash.
  bool take_text(std::string_view& text) {
    const std::size_t end = rest_.find('"');
    if (end == std::string_view::npos) return false;
    text = rest_.substr(0, end);
    if (text.find('\\') != std::string_view::npos) return false;
    rest_.remove_prefix(end + 1);
    return true;
  }

  /// At most `kMostDigits` of them, and what stands behind every member here.
  bool take_number_and_comma(std::uint64_t& number) {
    constexpr std::size_t kMostDigits = 18;
    std::size_t digits = 0;
    number = 0;
    while (digits < rest_.size() && digits < kMostDigits && is_digit(rest_[digits])) {
      number = number * 10 + static_cast<std::uint64_t>(rest_[digits++] - '0');
    }
    if (digits == 0 || digits == rest_.size() || rest_[digits] != ',') return false;
    rest_.remove_prefix(digits + 1);
    return true;
  }

  bool skip_number() {
    std::uint64_t number = 0;
    return take_number_and_comma(number);
  }

  bool read_envelope() {
    if (take("\"writer\":\"")) {
      line_.has_writer_ = take_text(line_.writer_) && take(",");
      if (!line_.has_writer_) return false;
    }
    if (take("\"seq\":")) {
      line_.has_seq_ = take_number_and_comma(line_.seq_);
      if (!line_.has_seq_) return false;
    }
    std::string_view text;
    if (take("\"written\":\"") && !(take_text(text) && take(","))) return false;
    if (!take("\"definitions\":\"")) return true;
    line_.has_definitions_ = take_text(line_.definitions_) && take(",");
    return line_.has_definitions_;
  }

  bool read_id() {
    std::uint64_t id = 0;
    if (!take_number_and_comma(id) || id > 0xFFFFFFFF) return false;
    line_.id_ = static_cast<std::uint32_t>(id);
    line_.has_id_ = true;
    return true;
  }

  bool read_level() {
    if (rest_.size() < 2 || !is_digit(rest_[0]) || rest_[1] != ',') return false;
    line_.level_ = static_cast<unsigned>(rest_[0] - '0');
    line_.has_level_ = true;
    rest_.remove_prefix(2);
    return true;
  }

  // A second of 60 counts as the next one: it does not sort as its text does.
  bool read_time() {
    constexpr std::size_t kSeconds = kTimeSize - 3;
    if (rest_.size() < kTimeSize + 2) return false;
    const char* const text = rest_.data();
    if (text[10] != 'T' || text[kTimeSize - 1] != 'Z' || text[kTimeSize] != '"' || text[kTimeSize + 1] != ',' ||
        text[kSeconds] > '5') {
      return false;
    }
    line_.time_ = rest_.substr(0, kTimeSize);
    rest_.remove_prefix(kTimeSize + 2);
    return true;
  }

  RawLine& line_;
  std::string_view rest_;
};

RawLine::RawLine(std::string_view line) : line_(line) { Reader(*this).read(); }

// The key's bytes with both quotes stand in no text, whose quotes are escaped. Behind a colon they are a value; behind
// a brace or a comma they are a key, for a text that ends there with a comma could not go on so. A second time they
// would be the same attribute again, which no entry has, or one of "bytes", for which may_give_bytes is there.
RawValue RawLine::find(const RawKey& key) const {
  if (attributes_ == 0) return {};
  const ByteSearch search(key.text());
  for (std::size_t at = attributes_;; ++at) {
    at = search.find_in(line_, at);
    if (at == std::string_view::npos)
      return {has_escaped_characters() ? RawValue::Kind::kUnknown : RawValue::Kind::kAbsent};
    const char before = line_[at - 1];
    if (before == '{' || before == ',') return value_at(at + search.size());
    if (before != ':') return {};
  }
}

bool RawLine::has_escaped_characters() const {
  if (std::memchr(line_.data(), '\\', line_.size()) == nullptr) return false;
  return ByteSearch("\\u").find_in(line_, 0) != std::string_view::npos;
}

/// Of what stands behind a key.
RawValue RawLine::value_at(std::size_t place) const {
  if (place + 1 >= line_.size() || line_[place] != ':') return {};
  ++place;
  if (line_[place] == '"') return text_at(place + 1);
  const std::string_view rest = line_.substr(place);
  if (rest.starts_with("true")) return bool_at(true, place + 4);
  if (rest.starts_with("false")) return bool_at(false, place + 5);
  return integer_at(place);
}

bool RawLine::ends_value(std::size_t place) const {
  return place < line_.size() && (line_[place] == ',' || line_[place] == '}');
}

RawValue RawLine::bool_at(bool truth, std::size_t end) const {
  if (!ends_value(end)) return {};
  return {RawValue::Kind::kBool, 0, truth};
}

RawValue RawLine::integer_at(std::size_t place) const {
  constexpr std::size_t kMostDigits = 18;
  const bool is_negative = line_[place] == '-';
  if (is_negative) ++place;
  const std::size_t begin = place;
  long long magnitude = 0;
  while (place < line_.size() && is_digit(line_[place]) && place - begin < kMostDigits) {
    magnitude = magnitude * 10 + (line_[place++] - '0');
  }
  if (place == begin || !ends_value(place)) return {};
  return {RawValue::Kind::kInteger, is_negative ? -magnitude : magnitude};
}

RawValue RawLine::text_at(std::size_t place) const {
  const std::size_t end = line_.find('"', place);
  if (end == std::string_view::npos) return {};
  const std::string_view text = line_.substr(place, end - place);
  if (text.find('\\') != std::string_view::npos) return {};
  return {RawValue::Kind::kText, 0, false, text};
}

bool RawLine::may_give_bytes() const { return ByteSearch("\"bytes\"").find_in(line_, 0) != std::string_view::npos; }

}  // namespace qzlog_tool
