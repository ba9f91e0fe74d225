#include "tools/stats/entry_scan.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

#include "entry/text_limits.h"
#include "lines/envelope_form.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;

using Word = std::uint64_t;
constexpr Word kOnes = 0x0101010101010101U;
constexpr Word kHighBits = 0x80 * kOnes;
constexpr std::size_t kMostAttributes = 64;  // of an event: a bit for each
constexpr long long kMostLevel = 9;
constexpr std::size_t kTimeBytes = std::string_view("2026-11-21T08:15:30Z").size();

struct IntegerRange {
  long long minimum;
  long long maximum;
};

template <class Value>
constexpr IntegerRange range_of() {
  return {std::numeric_limits<Value>::min(), std::numeric_limits<Value>::max()};
}

// In the order of the types.
constexpr IntegerRange kIntegerRanges[] = {range_of<std::uint8_t>(),  range_of<std::int8_t>(),
                                           range_of<std::uint16_t>(), range_of<std::int16_t>(),
                                           range_of<std::uint32_t>(), range_of<std::int32_t>()};

/// What an entry has with its time, whether its line names it or not.
bool comes_with_time(std::string_view name) {
  return name == "TIMEZONE_DIFFERENCE" || name == "DAYLIGHT_SAVING_ACTIVE";
}

bool is_integer(qz_AttributeType type) { return type >= TypeUInt1 && type <= TypeSInt4; }
bool is_text(qz_AttributeType type) { return type >= TypeChar32 && type <= TypeMBChar2K; }
bool is_digit(char character) { return character >= '0' && character <= '9'; }

bool is_ascii(char character) { return static_cast<unsigned char>(character) < 0x80; }

/// A byte that stands for itself in a text.
bool is_plain(char character) {
  return static_cast<unsigned char>(character) >= ' ' && character != '"' && character != '\\';
}

/// Marks each byte that is not plain; bytes above such a one may be marked wrongly.
Word marks_of(Word word) {
  const auto zeros = [](Word bytes) { return (bytes - kOnes) & ~bytes; };
  return (zeros(word ^ ('"' * kOnes)) | zeros(word ^ ('\\' * kOnes)) | ((word - ' ' * kOnes) & ~word)) & kHighBits;
}

bool is_plain_ascii(char character) { return is_plain(character) && is_ascii(character); }

/// Two digits as a number; -1 for anything else.
int two_digits(const char* text) {
  if (!is_digit(text[0]) || !is_digit(text[1])) return -1;
  return (text[0] - '0') * 10 + (text[1] - '0');
}

/// The first second of YYYY-MM-DD. The first and the last years, at whose ends zones matter, are the library's.
std::optional<long long> day_of(const char* date) {
  constexpr int kFirstYear = 1971;
  constexpr int kLastYear = 9998;
  const int parts[] = {two_digits(date), two_digits(date + 2), two_digits(date + 5), two_digits(date + 8)};
  const bool has_digits = std::all_of(std::begin(parts), std::end(parts), [](int part) { return part >= 0; });
  if (!has_digits || date[4] != '-' || date[7] != '-') return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(parts[0] * 100 + parts[1]),
                                        std::chrono::month(static_cast<unsigned>(parts[2])),
                                        std::chrono::day(static_cast<unsigned>(parts[3])));
  if (!day.ok() || int{day.year()} < kFirstYear || int{day.year()} > kLastYear) return std::nullopt;
  return std::chrono::sys_seconds(std::chrono::sys_days(day)).time_since_epoch().count();
}

/// Whether a text has a form. One that it had is kept in `last`.
bool is_known(std::string_view text, bool (*has_form)(std::string_view), std::string& last) {
  if (text == last && !last.empty()) return true;
  if (!has_form(text)) return false;
  last = text;
  return true;
}

}  // namespace

/// A place in a line. Each `take` reads what it is named after and returns true, or returns false somewhere on the way.
class EntryScan::Cursor {
 public:
  explicit Cursor(std::string_view line) : at_(line.data()), end_(line.data() + line.size()) {}

  bool at_end() const { return at_ == end_; }

  bool take(char expected) {
    if (at_ == end_ || *at_ != expected) return false;
    ++at_;
    return true;
  }

  bool take(std::string_view expected) {
    if (left() < expected.size() || std::memcmp(at_, expected.data(), expected.size()) != 0) return false;
    at_ += expected.size();
    return true;
  }

  /// What stands before the next quote, which is taken too; UTF-8.
  bool take_text(std::string_view& text) {
    const char* const begin = at_;
    Word all = 0;
    for (Word word = 0; left() >= sizeof word; at_ += sizeof word) {
      std::memcpy(&word, at_, sizeof word);
      if (marks_of(word) != 0) break;
      all |= word;
    }
    for (; at_ != end_ && is_plain(*at_); ++at_) all |= static_cast<unsigned char>(*at_);
    text = std::string_view(begin, static_cast<std::size_t>(at_ - begin));
    return take('"') && ((all & kHighBits) == 0 || qzlog_compiler::is_utf8(text));
  }

  bool take_integer(long long& integer) {
    constexpr std::ptrdiff_t kMostDigits = 18;  // they fit in 64 bits
    const bool is_negative = take('-');
    const char* const begin = at_;
    integer = 0;
    while (at_ != end_ && is_digit(*at_) && at_ - begin < kMostDigits) integer = integer * 10 + (*at_++ - '0');
    const std::ptrdiff_t digits = at_ - begin;
    const bool has_leading_zero = digits > 0 && *begin == '0' && (digits > 1 || is_negative);
    const bool has_more = at_ != end_ && is_digit(*at_);
    if (is_negative) integer = -integer;
    return digits > 0 && !has_more && !has_leading_zero;
  }

  bool take_number(long long maximum, long long& number) {
    return take_integer(number) && number >= 0 && number <= maximum;
  }

  /// Of an attribute.
  bool take_value(qz_AttributeType type, ScannedValue& value) {
    if (is_integer(type)) return take_integer(type, value);
    if (is_text(type)) return take_text(type, value);
    if (type == TypeBool) return take_bool(value);
    value.kind = ScannedValue::Kind::kInteger;
    value.is_float = true;
    return take_integer(value.integer);
  }

  /// So many bytes, null where the line has fewer.
  const char* take_bytes(std::size_t count) {
    if (left() < count) return nullptr;
    at_ += count;
    return at_ - count;
  }

 private:
  std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

  bool take_integer(qz_AttributeType type, ScannedValue& value) {
    const IntegerRange& range = kIntegerRanges[type - TypeUInt1];
    value.kind = ScannedValue::Kind::kInteger;
    return take_integer(value.integer) && value.integer >= range.minimum && value.integer <= range.maximum;
  }

  bool take_text(qz_AttributeType type, ScannedValue& value) {
    value.kind = ScannedValue::Kind::kText;
    const auto limit = static_cast<std::size_t>(qzlog::text_limit(static_cast<unsigned char>(type)));
    return take('"') && take_text(value.text) && value.text.size() <= limit;
  }

  bool take_bool(ScannedValue& value) {
    value.kind = ScannedValue::Kind::kBool;
    value.truth = take("true");
    return value.truth || take("false");
  }

  const char* at_;
  const char* end_;
};

void EntryScan::add(const qzlog_compiler::DefinitionModel& model) {
  events_.clear();
  last_event_ = nullptr;
  if (++models_ > 1) return;
  for (const qzlog_compiler::EntryDefinition& entry : model.entries) {
    const auto [place, is_new] = events_.emplace(entry.id, make_event(entry, model));
    if (!is_new) place->second = Event();
  }
}

// What has two definitions, or comes with the time, is the library's; so is a name that lines may write in several
// ways.
EntryScan::Event EntryScan::make_event(const qzlog_compiler::EntryDefinition& entry,
                                       const qzlog_compiler::DefinitionModel& model) const {
  std::vector<const AttributeDefinition*> all;
  for (const AttributeDefinition& attribute : entry.attributes) all.push_back(&attribute);
  for (const AttributeDefinition& attribute : model.globals) all.push_back(&attribute);
  const auto count = [&all](std::string_view name) {
    return std::count_if(all.begin(), all.end(), [name](const auto* own) { return own->name == name; });
  };
  const auto has_one = [&](std::string_view name, qz_AttributeType type) {
    return count(name) == 1 &&
           std::any_of(all.begin(), all.end(), [&](const auto* own) { return own->name == name && own->type == type; });
  };
  Event event;
  event.may_have_time = std::none_of(wanted_.begin(), wanted_.end(), comes_with_time) &&
                        has_one("TIMEZONE_DIFFERENCE", TypeSInt2) && has_one("DAYLIGHT_SAVING_ACTIVE", TypeBool);
  for (const AttributeDefinition* const attribute : all) {
    const std::string& name = attribute->name;
    const qz_AttributeType type = attribute->type;
    const bool is_scanned = type == TypeBool || is_integer(type) || type == TypeFloat || is_text(type);
    if (!is_scanned || count(name) != 1 || comes_with_time(name)) continue;
    if (name.empty() || !std::all_of(name.begin(), name.end(), is_plain_ascii)) continue;
    const auto wanted = std::find(wanted_.begin(), wanted_.end(), name);
    event.attributes.push_back(
        {'"' + name + "\":", type, wanted != wanted_.end() ? static_cast<int>(wanted - wanted_.begin()) : -1});
    if (event.attributes.size() == kMostAttributes) break;
  }
  return event;
}

const EntryScan::Event* EntryScan::find_event(std::uint32_t id) {
  if (last_event_ != nullptr && id == last_id_) return last_event_;
  const auto found = events_.find(id);
  if (found == events_.end()) return nullptr;
  last_id_ = id;
  last_event_ = &found->second;
  return last_event_;
}

// In the writers' order; "default" and "selector" are left to the library.
bool EntryScan::scan(std::string_view text, ScannedEntry& entry) {
  entry = ScannedEntry();
  Cursor line(text);
  long long number = 0;
  if (!line.take('{') || !scan_envelope(line, entry)) return false;
  if (!line.take("\"id\":") || !line.take_number(std::numeric_limits<std::uint32_t>::max(), number)) return false;
  entry.id = static_cast<std::uint32_t>(number);
  const Event* const event = find_event(entry.id);
  if (event == nullptr) return false;
  if (line.take(",\"level\":")) {
    if (!line.take_number(kMostLevel, number)) return false;
    entry.level = static_cast<unsigned>(number);
  }
  entry.has_time = line.take(",\"time\":\"");
  if (entry.has_time && (!event->may_have_time || !scan_time(line, entry.moment))) return false;
  std::string_view name;
  if (line.take(",\"name\":\"") && (!line.take_text(name) || !qzlog::is_event_name_form(name))) return false;
  if (line.take(",\"attributes\":{") && !scan_attributes(line, *event, entry)) return false;
  return line.take('}') && line.at_end();
}

bool EntryScan::scan_envelope(Cursor& line, ScannedEntry& entry) {
  std::string_view text;
  if (line.take("\"writer\":\"")) {
    if (!line.take_text(entry.writer) || !is_known(entry.writer, qzlog::is_writer_form, last_writer_)) return false;
    if (!line.take(',')) return false;
  }
  long long seq = 0;
  if (line.take("\"seq\":") && (!line.take_integer(seq) || seq < 0 || !line.take(','))) return false;
  if (line.take("\"written\":\"")) {
    if (!line.take_text(text) || !qzlog::is_moment_form(text) || !line.take(',')) return false;
  }
  if (!line.take("\"definitions\":\"")) return true;
  return line.take_text(text) && is_known(text, qzlog::is_definitions_form, last_definitions_) && line.take(',');
}

/// YYYY-MM-DDTHH:MM:SSZ and a quote.
bool EntryScan::scan_time(Cursor& line, long long& moment) {
  const char* const text = line.take_bytes(kTimeBytes);
  if (text == nullptr || text[10] != 'T' || text[13] != ':' || text[16] != ':' || text[19] != 'Z') return false;
  if (!last_day_ || std::memcmp(text, last_date_, sizeof last_date_) != 0) {
    last_day_ = day_of(text);
    if (!last_day_) return false;
    std::memcpy(last_date_, text, sizeof last_date_);
  }
  const int hour = two_digits(text + 11);
  const int minute = two_digits(text + 14);
  const int second = two_digits(text + 17);
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return false;
  moment = *last_day_ + hour * 3600 + minute * 60 + second;
  return line.take('"');
}

// Most lines have their attributes in the order of the definitions.
bool EntryScan::scan_attributes(Cursor& line, const Event& event, ScannedEntry& entry) {
  if (line.take('}')) return true;
  std::uint64_t seen = 0;
  const std::size_t count = event.attributes.size();
  std::size_t next = 0;
  do {
    std::size_t tried = 0;
    while (tried < count && !line.take(event.attributes[next].key)) {
      ++tried;
      if (++next == count) next = 0;
    }
    const std::uint64_t bit = std::uint64_t{1} << next;
    if (tried == count || (seen & bit) != 0) return false;
    seen |= bit;
    ScannedValue ignored;
    const Attribute& attribute = event.attributes[next];
    ScannedValue& value = attribute.wanted < 0 ? ignored : entry.values[attribute.wanted];
    if (!line.take_value(attribute.type, value)) return false;
    if (++next == count) next = 0;
  } while (line.take(','));
  return line.take('}');
}

}  // namespace qzlog_tool
