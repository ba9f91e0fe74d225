#include "tools/inspect/ldf_json.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "definitions/definition_format.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/finding_json.h"
#include "tools/report/json_stream.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kHexadecimalPiece = std::size_t{1} << 15;

/// Piece by piece: twice the bytes of a file could be too much to hold.
void add_hexadecimal(JsonObjectStream& json, const std::string& key, std::string_view bytes) {
  std::ostream& out = json.member(key);
  out << '"';
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kHexadecimalPiece))) {
    out << hexadecimal_bytes(bytes.substr(0, kHexadecimalPiece));
  }
  out << '"';
}

void add_text(JsonObjectStream& json, const std::string& key, std::string_view text, std::string_view stored,
              bool regular) {
  json.text(key, text);
  if (!regular || !is_utf8(text)) add_hexadecimal(json, key + "_hex", stored);
}

/// Leaves out a text that a damage has cut.
void add_text(JsonObjectStream& json, const std::string& key, const LdfText& text) {
  if (text.whole) add_text(json, key, text.text(), text.stored, text.is_regular());
}

void write_damage(const LdfDamage& damage, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", damage.offset);
  json.text("reason", damage.reason);
  if (!damage.detail.empty()) json.text("detail", damage.detail);
  json.end();
}

void write_header(const LdfHeader& header, std::ostream& out) {
  JsonObjectStream json(out);
  add_hexadecimal(json, "format_bytes", header.format_bytes);
  const std::string_view tag = header.version_tag;
  const bool regular = tag.find_first_not_of('\0', header.version().size()) == std::string_view::npos;
  add_text(json, "version", header.version(), tag, regular);
  json.number("global_count", header.global_count);
  json.number("global_offset", header.global_offset);
  json.number("entry_count", header.entry_count);
  json.number("entry_map_offset", header.entry_map_offset);
  json.end();
}

void write_attribute(const LdfAttributeRecord& attribute, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", attribute.offset);
  add_text(json, "name", attribute.name);
  json.text("type", short_type_name(static_cast<qz_AttributeType>(attribute.type_code & qzlog::ldf::kTypeCodeMask)));
  json.number("type_code", attribute.type_code);
  add_text(json, "redirect", attribute.redirect);
  json.end();
}

void write_pair(const LdfSurvey& survey, std::size_t index, std::ostream& out) {
  const LdfSurveyedPair& pair = survey.pairs()[index];
  JsonObjectStream json(out);
  json.number("offset", survey.pair_offset(index));
  json.number("id", pair.id);
  json.number("record_offset", pair.record_offset);
  if (pair.replaced) json.boolean("replaced", true);
  json.end();
}

void write_selector_message(const LdfSelectorRecord& message, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", message.offset);
  json.number("index", message.index);
  json.number("value", message.value);
  add_text(json, "message_id", message.id);
  add_text(json, "message", message.text);
  json.end();
}

/// The record is read once for what it is and once for each of its lists, so that memory holds none of them.
class EntryWriter {
 public:
  EntryWriter(const LdfSurvey& survey, const LdfSurveyedPair& pair, std::ostream& out)
      : survey_(survey), pair_(pair), record_(survey.read_entry(pair)), json_(out) {}

  void write() {
    write_fixed_part();
    JsonListStream attributes(json_.member("attributes"));
    survey_.read_entry(pair_, {[&](const auto& item) { write_attribute(item, attributes.item()); }, {}});
    attributes.end();
    JsonListStream messages(json_.member("selector_messages"));
    survey_.read_entry(pair_, {{}, [&](const auto& item) { write_selector_message(item, messages.item()); }});
    messages.end();
    if (const auto damage = survey_.damage_of(pair_, record_)) write_damage(*damage, json_.member("damage"));
    json_.end();
  }

 private:
  void write_fixed_part() {
    json_.number("offset", record_.offset);
    json_.number("size", record_.size);
    json_.number("id", pair_.id);
    if (pair_.wrong_id) json_.number("stored_id", record_.id);
    if (pair_.replaced) json_.boolean("replaced", true);
    if (record_.has_numbers()) {
      json_.number("word", record_.word);
      json_.number("mask", record_.mask);
    }
    add_text(json_, "message_id", record_.message_id);
    add_text(json_, "message", record_.message);
    add_text(json_, "selector", record_.selector);
  }

  const LdfSurvey& survey_;
  const LdfSurveyedPair& pair_;
  const LdfEntryRecord record_;
  JsonObjectStream json_;
};

void write_event(const LdfNamedEvent& event, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", event.offset);
  json.number("id", event.id);
  add_text(json, "name", event.name, event.name, true);
  add_text(json, "summary", event.summary, event.summary, true);
  json.end();
}

void write_marked_attribute(const LdfMarkedAttribute& marked, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", marked.offset);
  if (!marked.is_global()) json.number("entry", marked.entry_id);
  add_text(json, "attribute", marked.name, marked.name, true);
  json.text("sensitive", sensitivity_name(sensitivity_of_mark(marked.mark)));
  json.number("mark", marked.mark);
  json.end();
}

/// Nothing but its place of a damaged one.
void write_names(const LdfNames& names, std::ostream& out) {
  JsonObjectStream json(out);
  json.number("offset", names.begin);
  if (names.has_trailer) json.number("version", names.version);
  if (names.damage) {
    write_damage(*names.damage, json.member("damage"));
  } else {
    JsonListStream events(json.member("events"));
    for (const LdfNamedEvent& event : names.events) write_event(event, events.item());
    events.end();
    JsonListStream marks(json.member("sensitive"));
    for (const LdfMarkedAttribute& marked : names.marks) write_marked_attribute(marked, marks.item());
    marks.end();
    json.number("unknown_parts", names.unknown_part_count);
  }
  json.end();
}

template <class WriteItems>
void add_list(JsonObjectStream& json, const char* name, WriteItems write_items) {
  JsonListStream list(json.member(name), kResultListLayout);
  write_items(list);
  list.end();
}

}  // namespace

void write_json(const LdfSurvey& survey, std::span<const Finding> findings, std::ostream& out) {
  JsonObjectStream json(out, kResultLayout);
  qzlog_tool::add_json_beginning(findings, json);
  json.number("file_size", survey.bytes().size());
  write_header(survey.header(), json.member("header"));
  const auto globals = [&](JsonListStream& list) {
    survey.read_globals([&](const LdfAttributeRecord& global) { write_attribute(global, list.item()); });
  };
  const auto pairs = [&](JsonListStream& list) {
    for (std::size_t i = 0; i < survey.pairs().size(); ++i) write_pair(survey, i, list.item());
  };
  const auto entries = [&](JsonListStream& list) {
    for (const LdfSurveyedPair& pair : survey.pairs()) {
      if (!pair.unread && !pair.shared) EntryWriter(survey, pair, list.item()).write();
    }
  };
  add_list(json, "globals", globals);
  add_list(json, "entry_map", pairs);
  add_list(json, "entries", entries);
  if (survey.names()) write_names(*survey.names(), json.member("names"));
  json.number("damage_count", survey.damage_count());
  json.end();
  out << '\n';
}

}  // namespace qzlog_compiler
