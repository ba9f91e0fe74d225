#include "tools/compiler/model/model_json.h"

#include <nlohmann/json.hpp>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"

namespace qzlog_compiler {
namespace {

using Json = nlohmann::ordered_json;

void add_line(Json& json, SourcePosition position) {
  if (position.known()) json["line"] = position.line;
}

template <typename Item, typename Convert>
Json list(const std::vector<Item>& items, Convert convert) {
  Json json = Json::array();
  for (const Item& item : items) json.push_back(convert(item));
  return json;
}

Json attribute_json(const AttributeDefinition& attribute) {
  Json json = {{"name", attribute.name}, {"type", short_type_name(attribute.type)}};
  if (!find_attribute_type(short_type_name(attribute.type))) json["type_code"] = static_cast<unsigned>(attribute.type);
  json["redirect"] = attribute.redirect;
  json["sensitive"] = sensitivity_name(attribute.sensitivity);
  add_line(json, attribute.position);
  return json;
}

Json message_json(const MessageText& message) {
  Json json = {{"text", message.written}, {"raw", message.raw}, {"template", message.stored}};
  add_line(json, message.position);
  return json;
}

Json selector_message_json(const SelectorMessage& message) {
  return {{"index", message.index},
          {"value", message.value},
          {"message_id", message.id},
          {"message", message_json(message.message)}};
}

Json selector_json(const Selector& selector) {
  if (selector.attribute.empty() && selector.messages.empty()) return nullptr;
  Json json = {{"attribute", selector.attribute}, {"messages", list(selector.messages, selector_message_json)}};
  add_line(json, selector.position);
  return json;
}

Json entry_json(const EntryDefinition& entry) {
  Json json = {{"id", entry.id},
               {"name", entry.name},
               {"summary", entry.summary},
               {"mask", entry.mask},
               {"word", entry.word},
               {"message_id", entry.message_id},
               {"message", message_json(entry.message)},
               {"attributes", list(entry.attributes, attribute_json)},
               {"selector", selector_json(entry.selector)}};
  add_line(json, entry.position);
  return json;
}

}  // namespace

nlohmann::ordered_json to_json(const DefinitionModel& model) {
  return {{"version", model.version},
          {"globals", list(model.globals, attribute_json)},
          {"entries", list(model.entries, entry_json)}};
}

std::string json_text(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace qzlog_compiler
