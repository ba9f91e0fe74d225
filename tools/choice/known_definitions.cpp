#include "tools/choice/known_definitions.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

template <class Value>
void add_once(const Value& value, std::vector<Value>& values) {
  if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
}

}  // namespace

void KnownDefinitions::add(const qzlog_compiler::DefinitionModel& model) {
  for (const qzlog_compiler::AttributeDefinition& global : model.globals) add_attribute(global, "the globals");
  for (const qzlog_compiler::EntryDefinition& entry : model.entries) {
    KnownEvent& event = events_[entry.id];
    if (!entry.name.empty()) add_once(entry.name, event.names);
    add_once(entry.mask, event.masks);
    const std::string place = "entry " + std::to_string(entry.id);
    for (const qzlog_compiler::AttributeDefinition& attribute : entry.attributes) add_attribute(attribute, place);
  }
}

void KnownDefinitions::add_attribute(const qzlog_compiler::AttributeDefinition& attribute, const std::string& place) {
  KnownAttribute& known = attributes_[attribute.name];
  known.types.add(attribute.type);
  known.places.emplace(attribute.type, place);
}

const KnownAttribute* KnownDefinitions::find_attribute(std::string_view name) const {
  const auto found = attributes_.find(name);
  return found != attributes_.end() ? &found->second : nullptr;
}

const KnownEvent* KnownDefinitions::find_event(std::uint32_t id) const {
  const auto found = events_.find(id);
  return found != events_.end() ? &found->second : nullptr;
}

std::string_view KnownDefinitions::find_name(std::uint32_t id) const {
  const KnownEvent* const event = find_event(id);
  return event != nullptr && !event->names.empty() ? std::string_view(event->names.front()) : std::string_view();
}

std::vector<std::string_view> KnownDefinitions::attribute_names() const {
  std::vector<std::string_view> names;
  for (const auto& [name, known] : attributes_) names.push_back(name);
  return names;
}

std::vector<std::string_view> KnownDefinitions::event_names() const {
  std::vector<std::string_view> names;
  for (const auto& [id, event] : events_) names.insert(names.end(), event.names.begin(), event.names.end());
  return names;
}

bool KnownDefinitions::knows_all_names() const {
  return std::all_of(events_.begin(), events_.end(), [](const auto& event) { return !event.second.names.empty(); });
}

}  // namespace qzlog_tool
