#include "lines/entry_builder.h"

#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

#include "config/loaded_names.h"
#include "entry/text_limits.h"
#include "lines/base64_decode.h"
#include "lines/entry_access.h"
#include "lines/library_text.h"
#include "lines/utf8_text.h"
#include "qzlog/qz_time.h"

namespace qzlog {

namespace {

// Enough for the IDs that most logs repeat, and little memory.
constexpr std::size_t kKeptEntries = 64;

// What SetTimestamp sets along with the time. An entry that was written elsewhere brings its own values: they win.
constexpr std::string_view kTimeFields[] = {"TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE"};

/// An attribute that is given a value.
struct Target {
  const LineAttribute& source;
  const EntryAttribute& attribute;
  qz_LOG_LogEntry& entry;

  const char* name() const { return source.name.data(); }
  qz_AttributeType type() const { return attribute.type; }
  bool is_own() const { return attribute.position != _qz_LOG_log_entry_imp::kNoPosition; }

  template <unsigned char code, class Value>
  void add(void (qz_LOG_LogEntry::*add_by_name)(const char*, Value), Value value) const {
    if (!is_own()) return (entry.*add_by_name)(name(), value);
    EntryAccess::of(entry).add_own<code>(attribute.position, attribute.expected, value);
  }
};

struct IntegerType {
  std::int64_t minimum;
  std::int64_t maximum;
  void (*add)(const Target& target, std::int64_t value);
};

template <class Value, unsigned char code, void (qz_LOG_LogEntry::*kAdd)(const char*, Value)>
constexpr IntegerType integer_type() {
  // `char` is 8 bits with a sign to the library, on every host.
  using Limits = std::numeric_limits<std::conditional_t<std::is_same_v<Value, char>, signed char, Value>>;
  return {Limits::min(), Limits::max(),
          [](const Target& target, std::int64_t value) { target.add<code>(kAdd, static_cast<Value>(value)); }};
}

constexpr IntegerType kIntegerTypes[] = {integer_type<unsigned char, TypeUInt1, &qz_LOG_LogEntry::AddAttrib1u>(),
                                         integer_type<char, TypeSInt1, &qz_LOG_LogEntry::AddAttrib1>(),
                                         integer_type<unsigned short, TypeUInt2, &qz_LOG_LogEntry::AddAttrib2u>(),
                                         integer_type<short, TypeSInt2, &qz_LOG_LogEntry::AddAttrib2>(),
                                         integer_type<unsigned int, TypeUInt4, &qz_LOG_LogEntry::AddAttrib4u>(),
                                         integer_type<int, TypeSInt4, &qz_LOG_LogEntry::AddAttrib4>()};
constexpr qz_AttributeType kFirstIntegerType = TypeUInt1;

/// Without `Type`.
std::string type_name(qz_AttributeType type) { return _qz_LOG_get_attribute_type_string(type) + 4; }

std::string about(const char* name) { return "attribute " + quoted(name) + ": "; }

LineFault wrong_kind(const LineAttribute& attribute, qz_AttributeType type, std::string_view wanted) {
  return {LineRule::kWrongKind,
          about(attribute.name.data()) + type_name(type) + " takes " + std::string(wanted) + ", not " +
              std::string(kind_name(attribute.value.kind)),
          attribute.place};
}

void add_bool(const Target& target) {
  const JsonValue& value = target.source.value;
  if (value.kind != JsonKind::kBool) throw wrong_kind(target.source, target.type(), "true or false");
  target.add<TypeBool>(&qz_LOG_LogEntry::AddAttribBool, value.truth);
}

[[noreturn]] void refuse_number(const Target& target, const IntegerType& range) {
  const JsonValue& value = target.source.value;
  throw LineFault{LineRule::kOutOfRange,
                  about(target.name()) +
                      (value.kind == JsonKind::kLargeInteger ? std::to_string(value.large_integer)
                                                             : std::to_string(value.integer)) +
                      " does not fit " + type_name(target.type()) + " (" + std::to_string(range.minimum) + " to " +
                      std::to_string(range.maximum) + ")",
                  target.source.place};
}

void add_integer(const Target& target) {
  const JsonValue& value = target.source.value;
  const IntegerType& range = kIntegerTypes[target.type() - kFirstIntegerType];
  if (value.kind != JsonKind::kInteger && value.kind != JsonKind::kLargeInteger) {
    throw wrong_kind(target.source, target.type(), "an integer");
  }
  const bool is_large = value.kind == JsonKind::kLargeInteger;
  if (is_large || value.integer < range.minimum || value.integer > range.maximum) refuse_number(target, range);
  range.add(target, value.integer);
}

struct NumberName {
  std::string_view name;
  double number;
};

// What JSON has no numbers for.
constexpr NumberName kNumberNames[] = {{"NaN", std::numeric_limits<double>::quiet_NaN()},
                                       {"Infinity", std::numeric_limits<double>::infinity()},
                                       {"-Infinity", -std::numeric_limits<double>::infinity()}};

double number_of(const LineAttribute& attribute, qz_AttributeType type) {
  const JsonValue& value = attribute.value;
  switch (value.kind) {
    case JsonKind::kFloat:
      return value.number;
    case JsonKind::kInteger:
      return value.negative_zero ? -0.0 : static_cast<double>(value.integer);
    case JsonKind::kLargeInteger:
      return static_cast<double>(value.large_integer);
    case JsonKind::kText:
      for (const NumberName& row : kNumberNames) {
        if (row.name == value.text) return row.number;
      }
      break;
    default:
      break;
  }
  throw wrong_kind(attribute, type, "a number");
}

// A text without a zone names no moment, so only what qz_Time reads as GMT is taken. `name` is null for the entry's
// time.
qz_Time parse_time(const char* text, const char* name, std::size_t place) {
  qz_Time time;
  time.set_GMT_time_mode(false);
  if (!time.set_to_string_value(text) || !time.is_GMT_time_mode()) {
    throw LineFault{LineRule::kBadTime,
                    (name != nullptr ? about(name) : "'time': ") + quoted(text) +
                        " is not a date and time with its zone, such as 2026-11-21T08:15:30Z or "
                        "2026-11-21T09:15:30.5+01:00",
                    place};
  }
  return time;
}

std::string_view text_of(const LineAttribute& attribute, qz_AttributeType type, std::string_view wanted) {
  const JsonValue& value = attribute.value;
  if (value.kind != JsonKind::kText) throw wrong_kind(attribute, type, wanted);
  if (attribute.may_hold_nul) c_text(value.text, attribute.place);
  return value.text;
}

void add_time(const Target& target) {
  const std::string_view text = text_of(target.source, target.type(), "a text with a date and time");
  target.entry.AddAttribTime(target.name(), parse_time(text.data(), target.name(), target.source.place));
}

void set_time(const LineFields& source, qz_LOG_LogEntry& entry) {
  if (source.time == nullptr) return;
  const qz_Time time = parse_time(source.time, nullptr, source.time_place);
  try {
    entry.SetTimestamp(time, true);
  } catch (const QZX_logging_all& failure) {
    throw LineFault{LineRule::kTimeGlobals,
                    library_text(failure) +
                        "; a 'time' needs the definitions TIMEZONE_DIFFERENCE (SInt2) and DAYLIGHT_SAVING_ACTIVE "
                        "(Bool), best as globals",
                    source.time_place};
  }
}

void set_id(std::uint32_t id, const LineFields& source, qz_LOG_LogEntry& entry) {
  const auto fault = [&](LineRule rule, const qz_EXCEPTION_base& failure) {
    return LineFault{rule, "entry ID " + std::to_string(id) + ": " + library_text(failure), source.id_place};
  };
  try {
    entry.SetEntryID(id);
  } catch (const QZX_logging_entry_type_not_found& failure) {
    throw fault(LineRule::kUnknownId, failure);
  } catch (const QZX_logging_invalid_definition& failure) {
    throw fault(LineRule::kBadDefinitionFile, failure);
  }
}

bool is_text_type(qz_AttributeType type) { return type >= TypeChar32 && type <= TypeMBChar2K; }

/// The state and the type that CheckAttribute tells of; a name that is not defined is refused.
int check_defined(const LineAttribute& attribute, const qz_LOG_LogEntry& entry, qz_AttributeType& type) {
  if (attribute.may_hold_nul) c_text(attribute.name, attribute.place);
  const int state = entry.CheckAttribute(attribute.name.data(), type);
  if (state >= 0) return state;
  throw LineFault{.rule = LineRule::kUnknownAttribute,
                  .text = "attribute " + quoted(attribute.name) + " is not defined for entry ID " +
                          std::to_string(entry.GetEntryID()),
                  .place = attribute.place,
                  .is_of_key = true};
}

LineFault given_twice(const LineAttribute& attribute) {
  return {.rule = LineRule::kDuplicateAttribute,
          .text = "attribute " + quoted(attribute.name) + " is given twice",
          .place = attribute.place,
          .is_of_key = true};
}

// Which of the fields that came with the time may still be given once by name.
class TimeFields {
 public:
  explicit TimeFields(bool time_was_set) : open_{time_was_set, time_was_set} {}

  bool take(std::string_view name) {
    for (std::size_t index = 0; index < std::size(kTimeFields); ++index) {
      if (kTimeFields[index] == name && open_[index]) return std::exchange(open_[index], false);
    }
    return false;
  }

 private:
  bool open_[std::size(kTimeFields)];
};

}  // namespace

EntryBuilder::EntryBuilder() : kept_(kKeptEntries + 1) { kept_.back() = std::make_unique<KeptEntry>(); }

std::uint32_t EntryBuilder::find_id(const LineFields& source) {
  if (source.symbolic_id.empty()) return source.id;
  const auto unknown = [&source](std::string text) {
    return LineFault{LineRule::kUnknownName, std::move(text), source.id_place};
  };
  unsigned id = 0;
  if (find_event_id(source.symbolic_id, id)) return id;
  if (!has_event_names()) {
    throw unknown("the name " + quoted(source.symbolic_id) + " needs definitions with names: these hold only IDs");
  }
  throw unknown("the definitions have no entry " + quoted(source.symbolic_id));
}

const qz_LOG_LogEntry& EntryBuilder::build(const LineFields& source) {
  encoder_.update();
  const std::uint32_t id = find_id(source);
  KeptEntry& kept = kept_entry(id, source);
  place_ = LineFault::kWholeLine;
  try {
    if (kept.shape.matches(id, source) && EntryAccess::of(kept.entry).has_current_definition()) {
      replace_values(source, kept);
    } else {
      build_anew(id, source, kept);
    }
  } catch (const QZX_memory_alloc&) {
    throw;
  } catch (const qz_EXCEPTION_base& failure) {
    throw LineFault{LineRule::kRefusedValue, library_text(failure), place_};
  }
  return kept.entry;
}

// What the general parser read may be large, and matches no shape: it shares one entry, behind the others.
KeptEntry& EntryBuilder::kept_entry(std::uint32_t id, const LineFields& source) {
  if (!source.attributes.is_read() || source.has_bytes) return *kept_.back();
  std::unique_ptr<KeptEntry>& kept = kept_[id % kKeptEntries];
  if (kept == nullptr) kept = std::make_unique<KeptEntry>();
  return *kept;
}

void EntryBuilder::replace_values(const LineFields& source, KeptEntry& kept) {
  kept.shape.forget();
  kept.entry.SetLogLevel(source.level);
  set_time(source, kept.entry);
  std::size_t index = 0;
  for (const LineAttribute& attribute : source.attributes.read()) {
    add_value(attribute, kept.shape.attribute(index++), kept.entry);
  }
  kept.shape.complete();
}

void EntryBuilder::build_anew(std::uint32_t id, const LineFields& source, KeptEntry& kept) {
  kept.shape.begin(id, source.time != nullptr);
  kept.entry.ClearAttribs();
  set_id(id, source, kept.entry);
  kept.entry.SetLogLevel(source.level);
  set_time(source, kept.entry);
  names_in_bytes_.clear();
  source.bytes.for_each([&](const LineAttribute& attribute) { add_bytes(attribute, kept.entry); });
  add_attributes(source, kept);
  if (!source.has_bytes) kept.shape.complete();
}

// Before the texts of these names, which they stand for.
void EntryBuilder::add_bytes(const LineAttribute& attribute, qz_LOG_LogEntry& entry) {
  place_ = attribute.place;
  const auto wrong = [&attribute](const std::string& text) {
    return LineFault{LineRule::kBadBytes, about(attribute.name.data()) + text, attribute.place};
  };
  qz_AttributeType type = TypeUnknown;
  const int state = check_defined(attribute, entry, type);
  if (!is_text_type(type)) throw wrong("'bytes' holds texts, not values of type " + type_name(type));
  if (state == 0) throw given_twice(attribute);
  if (attribute.value.kind != JsonKind::kText) {
    throw wrong("'bytes' takes a text, not " + std::string(kind_name(attribute.value.kind)));
  }
  if (!decode_base64(attribute.value.text, bytes_)) throw wrong("the text in 'bytes' is not base64");
  if (bytes_.find('\0') != std::string::npos) throw wrong("the bytes hold a zero byte, which no text can");
  names_in_bytes_.emplace_back(attribute.name);
  EntryAccess::of(entry).add_stored_text(attribute.name.data(), bytes_.c_str(), bytes_.size(), false);
}

void EntryBuilder::add_attributes(const LineFields& source, KeptEntry& kept) {
  TimeFields time_fields(source.time != nullptr);
  unsigned expected = source.time != nullptr ? std::size(kTimeFields) : 0;
  source.attributes.for_each([&](const LineAttribute& attribute) {
    const std::string_view name = attribute.name;
    EntryAttribute target;
    const int state = check_defined(attribute, kept.entry, target.type);
    if (std::erase(names_in_bytes_, name) != 0) {
      text_of(attribute, target.type, "a text");
      return;
    }
    if (state == 0 && !time_fields.take(name)) throw given_twice(attribute);
    target.position = EntryAccess::of(kept.entry).find_own_position(name.data());
    target.expected = expected;
    if (state != 0) ++expected;
    add_value(attribute, target, kept.entry);
    kept.shape.add(name, target);
  });
}

void EntryBuilder::add_value(const LineAttribute& source, const EntryAttribute& attribute, qz_LOG_LogEntry& entry) {
  place_ = source.place;
  const Target target{source, attribute, entry};
  const qz_AttributeType type = attribute.type;
  if (type == TypeBool) {
    add_bool(target);
  } else if (type >= TypeUInt1 && type <= TypeSInt4) {
    add_integer(target);
  } else if (type == TypeFloat) {
    target.add<TypeFloat>(&qz_LOG_LogEntry::AddAttribFloat8, number_of(source, type));
  } else if (is_text_type(type)) {
    add_text(source, attribute, entry);
  } else if (type >= TypeDate && type <= TypeTimestamp) {
    add_time(target);
  } else {
    throw LineFault{LineRule::kUnsupportedType,
                    about(target.name()) + "nothing can be put into an attribute of type " + type_name(type),
                    source.place};
  }
}

void EntryBuilder::add_text(const LineAttribute& source, const EntryAttribute& attribute, qz_LOG_LogEntry& entry) {
  const qz_AttributeType type = attribute.type;
  const char* const name = source.name.data();
  std::string_view text = text_of(source, type, "a text");
  if (!encoder_.is_utf8() && !encoder_.convert(text)) {
    throw LineFault{LineRule::kRefusedValue, about(name) + "cannot be converted to " + encoder_.name(), source.place};
  }
  // No UTF-8 text has more characters than bytes.
  const bool is_short = text.size() <= static_cast<std::size_t>(text_limit(static_cast<unsigned char>(type)));
  const bool counts_bytes = type <= TypeChar2K || encoder_.is_utf8();
  if (is_short && counts_bytes && attribute.position != _qz_LOG_log_entry_imp::kNoPosition) {
    EntryAccess::of(entry).add_own_text(attribute.position, attribute.expected, text.data(), text.size());
  } else if (!is_short && text.find('\\') != std::string_view::npos) {
    EntryAccess::of(entry).add_stored_text(name, text.data(), text.size(), true);
  } else if (type <= TypeChar2K) {
    entry.AddAttribStr(name, text.data());
  } else {
    entry.AddAttribMBStr(name, text.data());
  }
}

}  // namespace qzlog
