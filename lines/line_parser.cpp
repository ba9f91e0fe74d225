#include "lines/line_parser.h"

#include <cstddef>
#include <iterator>

#include "lines/envelope_form.h"
#include "lines/json_check.h"
#include "lines/utf8_text.h"

namespace qzlog {

namespace {

// Copied in one piece: a new one would be put together field by field.
constexpr LineFields kNoFields;

/// A member of the line.
struct Member {
  JsonPlace value;
  std::uint32_t place;
  const char* line;
  LineTexts& texts;

  LineFault fault(LineRule rule, std::string text) const { return {rule, std::move(text), place}; }
  std::string kind_text() const { return std::string(kind_name(value.kind())); }

  /// Whether the value is a text; it is then in `text`.
  bool is_text(std::string& text) const {
    if (value.kind() != JsonKind::kText) return false;
    value.value(text);
    return true;
  }
  /// Whether the value is an integer from 0 to `maximum`.
  bool is_unsigned(std::uint32_t maximum, std::uint32_t& number) const {
    const JsonValue integer = value.value(texts.value);
    if (integer.kind != JsonKind::kInteger || integer.integer < 0 || integer.integer > std::int64_t{maximum})
      return false;
    number = static_cast<std::uint32_t>(integer.integer);
    return true;
  }
};

void read_id(const Member& member, LineFields& fields) {
  fields.id_place = member.place;
  if (member.is_text(member.texts.symbolic_id)) {
    fields.symbolic_id = member.texts.symbolic_id;
    if (fields.symbolic_id.empty()) throw member.fault(LineRule::kBadId, "'id' is an empty text");
    return;
  }
  if (!member.is_unsigned(kMaximumId, fields.id)) {
    throw member.fault(LineRule::kBadId, "'id' has to be an integer from 0 to 4294967295 or an entry's name");
  }
}

void read_level(const Member& member, LineFields& fields) {
  if (!member.is_unsigned(kMaximumLevel, fields.level)) {
    throw member.fault(LineRule::kBadLevel, "'level' has to be an integer from 0 to 9");
  }
}

void read_time(const Member& member, LineFields& fields) {
  fields.time_place = member.place;
  if (!member.is_text(member.texts.time)) {
    throw member.fault(LineRule::kBadTime,
                       "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not " + member.kind_text());
  }
  fields.time = c_text(member.texts.time, member.place);
}

void read_attributes(const Member& member, LineFields& fields) {
  if (member.value.kind() != JsonKind::kObject) {
    throw member.fault(LineRule::kBadAttributes, "'attributes' has to be an object, not " + member.kind_text());
  }
  fields.attributes = LineAttributes(member.value, member.line, member.texts.attribute);
}

void read_default(const Member& member, LineFields& fields) {
  const JsonValue value = member.value.value(member.texts.value);
  if (value.kind != JsonKind::kBool) {
    throw member.fault(LineRule::kBadChoice, "'default' has to be true or false, not " + member.kind_text());
  }
  fields.use_default = value.truth;
}

void read_selector(const Member& member, LineFields& fields) {
  if (!member.is_unsigned(kMaximumSelector, fields.selector)) {
    throw member.fault(LineRule::kBadChoice, "'selector' has to be an integer from 0 to 4294967295");
  }
}

void read_bytes(const Member& member, LineFields& fields) {
  if (member.value.kind() != JsonKind::kObject) {
    throw member.fault(LineRule::kBadBytes, "'bytes' has to be an object, not " + member.kind_text());
  }
  fields.has_bytes = true;
  fields.bytes = LineAttributes(member.value, member.line, member.texts.bytes);
}

void read_lost(const Member& member, LineFields& fields) { fields.lost = member.value; }

void read_held(const Member& member, LineFields& fields) {
  fields.lost = member.value;
  fields.is_held = true;
}

void read_seq(const Member& member, LineFields& fields) {
  const JsonValue value = member.value.value(member.texts.value);
  fields.has_seq = true;
  if (value.kind == JsonKind::kLargeInteger) {
    fields.seq = value.large_integer;
  } else if (value.kind == JsonKind::kInteger && value.integer >= 0) {
    fields.seq = static_cast<std::uint64_t>(value.integer);
  } else {
    throw member.fault(LineRule::kBadEnvelope, "'seq' has to be an integer from 0 to 18446744073709551615");
  }
}

std::string_view read_form(const Member& member, std::string& text, bool (*has_form)(std::string_view),
                           const char* wanted) {
  if (!member.is_text(text) || !has_form(text)) throw member.fault(LineRule::kBadEnvelope, wanted);
  return text;
}

void read_writer(const Member& member, LineFields& fields) {
  fields.writer =
      read_form(member, member.texts.writer, is_writer_form, "'writer' has to be a text of the form HOST/PID/START");
}

void read_written(const Member& member, LineFields& fields) {
  fields.written = read_form(member, member.texts.written, is_moment_form,
                             "'written' has to be a text such as \"2026-11-21T08:15:30.123456789Z\"");
}

void read_definitions(const Member& member, LineFields& fields) {
  fields.definitions = read_form(member, member.texts.definitions, is_definitions_form,
                                 "'definitions' has to be a text of 16 hexadecimal digits, or of two such with a plus "
                                 "sign between them");
}

void read_name(const Member& member, LineFields& fields) {
  fields.name = read_form(member, member.texts.name, is_event_name_form, "'name' has to be a text: the event's name");
}

struct Key {
  std::string_view name;
  void (*read)(const Member& member, LineFields& fields);
  bool is_of_entry;  // only
};

constexpr Key kKeys[] = {
    {"id", read_id, true},
    {"lost", read_lost, false},
    {"held", read_held, false},
    {"level", read_level, true},
    {"time", read_time, true},
    {"attributes", read_attributes, true},
    {"default", read_default, true},
    {"selector", read_selector, true},
    {"bytes", read_bytes, true},
    {"seq", read_seq, false},
    {"writer", read_writer, false},
    {"written", read_written, false},
    {"definitions", read_definitions, false},
    {"name", read_name, true},
};
constexpr std::size_t kKeyCount = std::size(kKeys);

std::size_t find_key(std::string_view name, std::size_t place) {
  for (std::size_t index = 0; index < kKeyCount; ++index) {
    if (kKeys[index].name == name) return index;
  }
  throw LineFault{.rule = LineRule::kUnknownKey,
                  .text = "unknown key " + quoted(name) +
                          "; an entry has 'id', 'level', 'time', 'attributes', 'default' and 'selector'",
                  .place = place,
                  .is_of_key = true};
}

/// Which keys a line has.
class SeenKeys {
 public:
  void add(std::size_t key, std::size_t place) {
    if (seen_[key]) {
      throw LineFault{.rule = LineRule::kDuplicateKey,
                      .text = "the key '" + std::string(kKeys[key].name) + "' is given twice",
                      .place = place,
                      .is_of_key = true};
    }
    seen_[key] = true;
  }

  /// An entry, what was lost, or what was held back.
  void require_one_kind() const {
    constexpr std::size_t kId = 0;
    constexpr std::size_t kLost = 1;
    constexpr std::size_t kHeld = 2;
    const std::size_t kind = seen_[kLost] ? kLost : kHeld;
    if (!seen_[kind]) {
      if (!seen_[kId]) throw LineFault{LineRule::kMissingId, "the entry has no 'id'"};
      return;
    }
    for (std::size_t key = 0; key < kKeyCount; ++key) {
      if (!seen_[key] || key == kind || (!kKeys[key].is_of_entry && key != kHeld)) continue;
      throw LineFault{LineRule::kBadLost, "a line with '" + std::string(kKeys[kind].name) +
                                              "' is no entry, and has no '" + std::string(kKeys[key].name) + "'"};
    }
  }

 private:
  bool seen_[kKeyCount] = {};
};

/// The text of `line`, which is right.
JsonPlace checked(std::string_view line) {
  JsonFault fault{};
  if (check_json(line, fault)) return JsonPlace(line);
  throw LineFault{LineRule::kBadJson, std::string("not valid JSON: ") + fault.reason, fault.place, fault.ends_early};
}

}  // namespace

void LineParser::parse(std::string_view line, LineFields& fields) {
  fields = kNoFields;
  if (!plain_.scan(line, fields)) parse_any(line, fields);
}

void LineParser::parse_any(std::string_view line, LineFields& fields) {
  const JsonPlace document = checked(line);
  const auto place_of = [line](JsonPlace value) { return static_cast<std::uint32_t>(value.address() - line.data()); };
  if (document.kind() != JsonKind::kObject) {
    throw LineFault{LineRule::kNotAnObject,
                    "an entry is an object in braces, not " + std::string(kind_name(document.kind())),
                    place_of(document)};
  }
  fields = kNoFields;
  SeenKeys seen;
  document.for_each_member(texts_.key, [&](std::string_view name, JsonPlace value) {
    const std::uint32_t place = place_of(value);
    const std::size_t key = find_key(name, place);
    seen.add(key, place);
    kKeys[key].read({value, place, line.data(), texts_}, fields);
  });
  seen.require_one_kind();
}

}  // namespace qzlog
