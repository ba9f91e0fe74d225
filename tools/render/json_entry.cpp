#include "tools/render/json_entry.h"

#include <cstddef>
#include <string>

#include "tools/compiler/text/utf8_text.h"
#include "tools/render/entry_error.h"
#include "tools/system/line_reader.h"

namespace qzlog_tool {

namespace {

using simdjson::dom::element;

static_assert(LineReader::kPaddingBytes >= simdjson::SIMDJSON_PADDING);

std::string kind_text(element value) { return std::string(kind_name(kind_of(value))); }

/// The integer `value` when it is one from 0 to `maximum`.
bool unsigned_value(element value, std::uint64_t maximum, std::uint32_t& number) {
  std::uint64_t wide = 0;
  if (value.get_uint64().get(wide) != simdjson::SUCCESS || wide > maximum) return false;
  number = static_cast<std::uint32_t>(wide);
  return true;
}

void read_id(element value, JsonEntry& entry) {
  if (value.get_string().get(entry.name) == simdjson::SUCCESS) {
    if (entry.name.empty()) throw EntryError{EntryRule::kBadId, "'id' is an empty text"};
    return;
  }
  if (!unsigned_value(value, kMaximumId, entry.id)) {
    throw EntryError{EntryRule::kBadId, "'id' has to be an integer from 0 to 4294967295 or an entry's name"};
  }
}

void read_level(element value, JsonEntry& entry) {
  if (!unsigned_value(value, kMaximumLevel, entry.level)) {
    throw EntryError{EntryRule::kBadLevel, "'level' has to be an integer from 0 to 9"};
  }
}

void read_time(element value, JsonEntry& entry) {
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS) {
    throw EntryError{EntryRule::kBadTime,
                     "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not " + kind_text(value)};
  }
  entry.time = c_text(text);
}

void read_attributes(element value, JsonEntry& entry) {
  simdjson::dom::object attributes;
  if (value.get_object().get(attributes) != simdjson::SUCCESS) {
    throw EntryError{EntryRule::kBadAttributes, "'attributes' has to be an object, not " + kind_text(value)};
  }
  entry.attributes = JsonAttributes(attributes);
}

void read_default(element value, JsonEntry& entry) {
  if (value.get_bool().get(entry.use_default) != simdjson::SUCCESS) {
    throw EntryError{EntryRule::kBadChoice, "'default' has to be true or false, not " + kind_text(value)};
  }
}

void read_selector(element value, JsonEntry& entry) {
  if (!unsigned_value(value, kMaximumSelector, entry.selector)) {
    throw EntryError{EntryRule::kBadChoice, "'selector' has to be an integer from 0 to 4294967295"};
  }
}

struct Key {
  std::string_view name;
  void (*read)(element value, JsonEntry& entry);
};

constexpr Key kKeys[] = {
    {"id", read_id},           {"level", read_level},       {"time", read_time}, {"attributes", read_attributes},
    {"default", read_default}, {"selector", read_selector},
};
constexpr std::size_t kKeyCount = std::size(kKeys);

std::size_t find_key(std::string_view name) {
  for (std::size_t index = 0; index < kKeyCount; ++index) {
    if (kKeys[index].name == name) return index;
  }
  throw EntryError{EntryRule::kUnknownKey, "unknown key " + qzlog_compiler::quoted(name) +
                                               "; an entry has 'id', 'level', 'time', 'attributes', 'default' and "
                                               "'selector'"};
}

// The parser's own words, which are sentences with a point or an exclamation mark.
std::string parser_reason(simdjson::error_code error) {
  std::string text = simdjson::error_message(error);
  while (!text.empty() && (text.back() == '.' || text.back() == '!')) text.pop_back();
  return text;
}

}  // namespace

// The parser finds out what the processor can do when it is first asked for anything, and ends the process where it has
// no memory for that: not while a line is read, where that is an error of the line.
JsonEntryParser::JsonEntryParser() { simdjson::get_active_implementation()->name(); }

JsonEntry JsonEntryParser::parse(std::string_view line) {
  JsonEntry entry;
  if (!plain_.scan(line, entry)) entry = parse_any(line);
  return entry;
}

JsonEntry JsonEntryParser::parse_any(std::string_view line) {
  element document;
  const simdjson::error_code error = parser_.parse(line.data(), line.size(), false).get(document);
  if (error == simdjson::MEMALLOC) {
    // It may take what it could not allocate for there, next time.
    parser_ = simdjson::dom::parser();
    throw EntryError{EntryRule::kOutOfMemory, "no memory for this line"};
  }
  if (error != simdjson::SUCCESS) throw EntryError{EntryRule::kBadJson, "not valid JSON: " + parser_reason(error)};
  simdjson::dom::object fields;
  if (document.get_object().get(fields) != simdjson::SUCCESS) {
    throw EntryError{EntryRule::kNotAnObject, "an entry is an object in braces, not " + kind_text(document)};
  }

  JsonEntry entry;
  bool seen[kKeyCount] = {};
  for (const simdjson::dom::key_value_pair field : fields) {
    const std::size_t key = find_key(field.key);
    if (seen[key]) {
      throw EntryError{EntryRule::kDuplicateKey, "the key '" + std::string(kKeys[key].name) + "' is given twice"};
    }
    seen[key] = true;
    kKeys[key].read(field.value, entry);
  }
  if (!seen[0]) throw EntryError{EntryRule::kMissingId, "the entry has no 'id'"};
  return entry;
}

}  // namespace qzlog_tool
