#include "tools/render/entry_builder.h"

#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

#include "qzlog/qz_time.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/render/entry_error.h"
#include "tools/render/library_call.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;
// Enough for the IDs that most logs repeat, and little memory.
constexpr std::size_t kKeptEntries = 64;

// What SetTimestamp sets along with the time. An entry that was written elsewhere brings its own values: they win.
constexpr std::string_view kTimeFields[] = {"TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE"};

struct IntegerType {
  std::int64_t minimum;
  std::int64_t maximum;
  void (*add)(qz_LOG_LogEntry& entry, const char* name, std::int64_t value);
};

template <class Value, void (qz_LOG_LogEntry::*kAdd)(const char*, Value)>
constexpr IntegerType integer_type() {
  // `char` is 8 bits with a sign to the library, on every host.
  using Limits = std::numeric_limits<std::conditional_t<std::is_same_v<Value, char>, signed char, Value>>;
  return {Limits::min(), Limits::max(), [](qz_LOG_LogEntry& entry, const char* name, std::int64_t value) {
            (entry.*kAdd)(name, static_cast<Value>(value));
          }};
}

constexpr IntegerType kIntegerTypes[] = {
    integer_type<unsigned char, &qz_LOG_LogEntry::AddAttrib1u>(),  integer_type<char, &qz_LOG_LogEntry::AddAttrib1>(),
    integer_type<unsigned short, &qz_LOG_LogEntry::AddAttrib2u>(), integer_type<short, &qz_LOG_LogEntry::AddAttrib2>(),
    integer_type<unsigned int, &qz_LOG_LogEntry::AddAttrib4u>(),   integer_type<int, &qz_LOG_LogEntry::AddAttrib4>(),
};
constexpr qz_AttributeType kFirstIntegerType = TypeUInt1;

std::string type_name(qz_AttributeType type) { return std::string(qzlog_compiler::short_type_name(type)); }

std::string about(const char* name) { return "attribute " + quoted(name) + ": "; }

EntryError wrong_kind(const char* name, qz_AttributeType type, std::string_view wanted, JsonKind kind) {
  return {EntryRule::kWrongKind,
          about(name) + type_name(type) + " takes " + std::string(wanted) + ", not " + std::string(kind_name(kind))};
}

void add_bool(const JsonValue& value, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry) {
  if (value.kind != JsonKind::kBool) throw wrong_kind(name, type, "true or false", value.kind);
  entry.AddAttribBool(name, value.truth);
}

void add_integer(const JsonValue& value, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry) {
  const IntegerType& range = kIntegerTypes[type - kFirstIntegerType];
  const bool is_large = value.kind == JsonKind::kLargeInteger;
  if (!is_large && value.kind != JsonKind::kInteger) throw wrong_kind(name, type, "an integer", value.kind);
  if (is_large || value.integer < range.minimum || value.integer > range.maximum) {
    throw EntryError{EntryRule::kOutOfRange,
                     about(name) + (is_large ? std::to_string(value.large_integer) : std::to_string(value.integer)) +
                         " does not fit " + type_name(type) + " (" + std::to_string(range.minimum) + " to " +
                         std::to_string(range.maximum) + ")"};
  }
  range.add(entry, name, value.integer);
}

double number_of(const JsonValue& value, qz_AttributeType type, const char* name) {
  switch (value.kind) {
    case JsonKind::kFloat:
      return value.number;
    case JsonKind::kInteger:
      return static_cast<double>(value.integer);
    case JsonKind::kLargeInteger:
      return static_cast<double>(value.large_integer);
    default:
      throw wrong_kind(name, type, "a number", value.kind);
  }
}

// A text without a zone names no moment, so only what qz_Time reads as GMT is taken. `name` is null for the entry's
// time.
qz_Time parse_time(const char* text, const char* name) {
  qz_Time time;
  time.set_GMT_time_mode(false);
  if (!time.set_to_string_value(text) || !time.is_GMT_time_mode()) {
    throw EntryError{EntryRule::kBadTime, (name != nullptr ? about(name) : "'time': ") + quoted(text) +
                                              " is not a date and time with its zone, such as 2026-11-21T08:15:30Z or "
                                              "2026-11-21T09:15:30.5+01:00"};
  }
  return time;
}

std::string_view text_of(const JsonAttribute& attribute, qz_AttributeType type, std::string_view wanted) {
  const JsonValue& value = attribute.value;
  if (value.kind != JsonKind::kText) throw wrong_kind(attribute.name.data(), type, wanted, value.kind);
  if (attribute.may_hold_nul) c_text(value.text);
  return value.text;
}

void add_time(const JsonAttribute& attribute, qz_AttributeType type, qz_LOG_LogEntry& entry) {
  const char* const name = attribute.name.data();
  const std::string_view text = text_of(attribute, type, "a text with a date and time");
  entry.AddAttribTime(name, parse_time(text.data(), name));
}

void set_time(const char* text, qz_LOG_LogEntry& entry) {
  const qz_Time time = parse_time(text, nullptr);
  try {
    entry.SetTimestamp(time, true);
  } catch (const QZX_logging_all& failure) {
    throw EntryError{EntryRule::kTimeGlobals, library_text(failure) +
                                                  "; a 'time' needs the definitions TIMEZONE_DIFFERENCE (SInt2) and "
                                                  "DAYLIGHT_SAVING_ACTIVE (Bool), best as globals"};
  }
}

void set_id(std::uint32_t id, qz_LOG_LogEntry& entry) {
  const auto failed = [id](EntryRule rule, const qz_EXCEPTION_base& failure) {
    return EntryError{rule, "entry ID " + std::to_string(id) + ": " + library_text(failure)};
  };
  try {
    entry.SetEntryID(id);
  } catch (const QZX_logging_entry_type_not_found& failure) {
    throw failed(EntryRule::kUnknownId, failure);
  } catch (const QZX_logging_invalid_definition& failure) {
    throw failed(EntryRule::kBadDefinitionFile, failure);
  }
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

EntryBuilder::EntryBuilder(const EntryNames* names, const LineCodePage* text_code_page)
    : names_(names), text_code_page_(text_code_page), kept_(kKeptEntries + 1) {
  kept_.back() = std::make_unique<KeptEntry>();
}

std::uint32_t EntryBuilder::find_id(const JsonEntry& source) {
  if (source.name.empty()) return source.id;
  if (names_ == nullptr) {
    throw EntryError{EntryRule::kUnknownName,
                     "the name " + quoted(source.name) + " needs a definition source: compiled files hold only IDs"};
  }
  name_ = source.name;
  const auto found = names_->find(name_);
  if (found == names_->end()) {
    throw EntryError{EntryRule::kUnknownName, "the definitions have no entry " + quoted(source.name)};
  }
  return found->second;
}

const qz_LOG_LogEntry& EntryBuilder::build(const JsonEntry& source) {
  const std::uint32_t id = find_id(source);
  KeptEntry& kept = kept_entry(id, source);
  if (kept.shape.matches(id, source)) {
    replace_values(source, kept);
  } else {
    build_anew(id, source, kept);
  }
  return kept.entry;
}

// What the general parser read may be large, and matches no shape: it shares one entry, behind the others.
KeptEntry& EntryBuilder::kept_entry(std::uint32_t id, const JsonEntry& source) {
  if (!source.attributes.is_read()) return *kept_.back();
  std::unique_ptr<KeptEntry>& kept = kept_[id % kKeptEntries];
  if (kept == nullptr) kept = std::make_unique<KeptEntry>();
  return *kept;
}

void EntryBuilder::replace_values(const JsonEntry& source, KeptEntry& kept) {
  kept.shape.forget();
  kept.entry.SetLogLevel(source.level);
  if (source.time != nullptr) set_time(source.time, kept.entry);
  call_for_entry(EntryRule::kRefusedValue, [&] {
    std::size_t index = 0;
    for (const JsonAttribute& attribute : source.attributes.read()) {
      add_value(attribute, kept.shape.type(index++), kept.entry);
    }
  });
  kept.shape.complete();
}

void EntryBuilder::build_anew(std::uint32_t id, const JsonEntry& source, KeptEntry& kept) {
  kept.shape.begin(id, source.time != nullptr);
  kept.entry.ClearAttribs();
  set_id(id, kept.entry);
  kept.entry.SetLogLevel(source.level);
  if (source.time != nullptr) set_time(source.time, kept.entry);
  call_for_entry(EntryRule::kRefusedValue, [&] { add_attributes(source, kept); });
  kept.shape.complete();
}

void EntryBuilder::add_attributes(const JsonEntry& source, KeptEntry& kept) {
  TimeFields time_fields(source.time != nullptr);
  source.attributes.for_each([&](const JsonAttribute& attribute) {
    const std::string_view name = attribute.name;
    if (attribute.may_hold_nul) c_text(name);
    qz_AttributeType type = TypeUnknown;
    const int state = kept.entry.CheckAttribute(name.data(), type);
    if (state < 0) {
      throw EntryError{EntryRule::kUnknownAttribute, "attribute " + quoted(name) + " is not defined for entry ID " +
                                                         std::to_string(kept.entry.GetEntryID())};
    }
    if (state == 0 && !time_fields.take(name)) {
      throw EntryError{EntryRule::kDuplicateAttribute, "attribute " + quoted(name) + " is given twice"};
    }
    add_value(attribute, type, kept.entry);
    kept.shape.add(name, type);
  });
}

void EntryBuilder::add_value(const JsonAttribute& attribute, qz_AttributeType type, qz_LOG_LogEntry& entry) {
  const char* const name = attribute.name.data();
  if (type == TypeBool) {
    add_bool(attribute.value, type, name, entry);
  } else if (type >= TypeUInt1 && type <= TypeSInt4) {
    add_integer(attribute.value, type, name, entry);
  } else if (type == TypeFloat) {
    entry.AddAttribFloat8(name, number_of(attribute.value, type, name));
  } else if (type >= TypeChar32 && type <= TypeMBChar2K) {
    add_text(text_of(attribute, type, "a text"), type, name, entry);
  } else if (type >= TypeDate && type <= TypeTimestamp) {
    add_time(attribute, type, entry);
  } else {
    throw EntryError{EntryRule::kUnsupportedType,
                     about(name) + "nothing can be put into an attribute of type " + type_name(type)};
  }
}

void EntryBuilder::add_text(std::string_view text, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry) {
  const char* stored = text.data();
  if (text_code_page_ != nullptr) {
    if (!text_code_page_->from_utf8(text.data(), text.size(), converted_)) {
      throw EntryError{EntryRule::kRefusedValue, about(name) + "cannot be converted to " + text_code_page_->name()};
    }
    stored = converted_.c_str();
  }
  if (type <= TypeChar2K) {
    entry.AddAttribStr(name, stored);
  } else {
    entry.AddAttribMBStr(name, stored);
  }
}

}  // namespace qzlog_tool
