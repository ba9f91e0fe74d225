#include "tools/compiler/ldf_json.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tools/compiler/attribute_type.h"
#include "tools/compiler/ldf_format.h"
#include "tools/compiler/ldf_text.h"
#include "tools/compiler/utf8_text.h"

namespace qzlog_compiler {
namespace {

using Json = nlohmann::ordered_json;

std::string line_of(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

void add_text(Json& json, const std::string& key, std::string_view text, std::string_view stored, bool regular) {
  json[key] = text;
  if (!regular || !is_utf8(text)) json[key + "_hex"] = hexadecimal_bytes(stored);
}

/// Leaves out a text that a damage has cut.
void add_text(Json& json, const std::string& key, const LdfText& text) {
  if (text.whole) add_text(json, key, text.text(), text.stored, text.is_regular());
}

Json damage_json(const LdfDamage& damage) {
  Json json = {{"offset", damage.offset}, {"reason", damage.reason}};
  if (!damage.detail.empty()) json["detail"] = damage.detail;
  return json;
}

Json header_json(const LdfSurvey& survey) {
  const LdfHeader& header = survey.header();
  Json json = {{"format_bytes", hexadecimal_bytes(header.format_bytes)}};
  const std::string_view tag = header.version_tag;
  const bool regular = tag.find_first_not_of('\0', header.version().size()) == std::string_view::npos;
  add_text(json, "version", header.version(), tag, regular);
  json["global_count"] = header.global_count;
  json["global_offset"] = header.global_offset;
  json["entry_count"] = header.entry_count;
  json["entry_map_offset"] = header.entry_map_offset;
  return json;
}

Json attribute_json(const LdfAttributeRecord& attribute) {
  const auto type = static_cast<qz_AttributeType>(attribute.type_code & ldf::kTypeCodeMask);
  Json json = {{"offset", attribute.offset}};
  add_text(json, "name", attribute.name);
  json["type"] = short_type_name(type);
  json["type_code"] = attribute.type_code;
  add_text(json, "redirect", attribute.redirect);
  return json;
}

Json pair_json(const LdfSurvey& survey, std::size_t index) {
  const LdfSurveyedPair& pair = survey.pairs()[index];
  Json json = {{"offset", survey.pair_offset(index)}, {"id", pair.id}, {"record_offset", pair.record_offset}};
  if (pair.replaced) json["replaced"] = true;
  return json;
}

Json selector_message_json(const LdfSelectorRecord& message) {
  Json json = {{"offset", message.offset}, {"index", message.index}, {"value", message.value}};
  add_text(json, "message_id", message.id);
  add_text(json, "message", message.text);
  return json;
}

Json entry_json(const LdfSurvey& survey, const LdfSurveyedPair& pair) {
  const LdfEntryRecord record = survey.entry(pair);
  Json json = {{"offset", record.offset}, {"size", record.size}, {"id", pair.id}};
  if (pair.wrong_id) json["stored_id"] = record.id;
  if (pair.replaced) json["replaced"] = true;
  if (record.has_numbers()) {
    json["word"] = record.word;
    json["mask"] = record.mask;
  }
  add_text(json, "message_id", record.message_id);
  add_text(json, "message", record.message);
  add_text(json, "selector", record.selector);
  json["attributes"] = Json::array();
  for (const LdfAttributeRecord& attribute : record.attributes) {
    json["attributes"].push_back(attribute_json(attribute));
  }
  json["selector_messages"] = Json::array();
  for (const LdfSelectorRecord& message : record.selector_messages) {
    json["selector_messages"].push_back(selector_message_json(message));
  }
  if (const auto damage = survey.damage_of(pair, record)) json["damage"] = damage_json(*damage);
  return json;
}

/// Writes `"NAME": [...]` with one line for each of the `count` items; an item without a value is left out.
template <class Item>
void write_list(const char* name, std::size_t count, Item item, const char* end, std::ostream& out) {
  out << "  \"" << name << "\": [";
  const char* separator = "\n";
  for (std::size_t i = 0; i < count; ++i) {
    const Json json = item(i);
    if (json.is_null()) continue;
    out << separator << "    " << line_of(json);
    separator = ",\n";
  }
  out << (*separator == ',' ? "\n  ]" : "]") << end;
}

}  // namespace

void write_json(const LdfSurvey& survey, std::ostream& out) {
  out << "{\n  \"file_size\": " << survey.bytes().size() << ",\n  \"header\": " << line_of(header_json(survey))
      << ",\n";
  write_list(
      "globals", survey.globals().size(), [&](std::size_t i) { return attribute_json(survey.globals()[i]); }, ",\n",
      out);
  write_list(
      "entry_map", survey.pairs().size(), [&](std::size_t i) { return pair_json(survey, i); }, ",\n", out);
  const auto entry = [&](std::size_t i) {
    const LdfSurveyedPair& pair = survey.pairs()[i];
    return pair.unread || pair.shared ? Json() : entry_json(survey, pair);
  };
  write_list("entries", survey.pairs().size(), entry, ",\n", out);
  write_list(
      "damages", survey.damages().size(), [&](std::size_t i) { return damage_json(survey.damages()[i]); }, ",\n", out);
  out << "  \"damage_count\": " << survey.damage_count() << "\n}\n";
}

}  // namespace qzlog_compiler
