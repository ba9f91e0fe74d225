#include "tools/shown/shown_events.h"

#include <algorithm>

#include "tools/compiler/text/display_width.h"

namespace qzlog_tool {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;

void ShownEvents::add(const DefinitionModel& model) {
  add(model.globals, globals_);
  for (const EntryDefinition& entry : model.entries) {
    ShownEvent& event = events_[entry.id];
    if (!entry.name.empty()) event.summaries.try_emplace(entry.name, entry.summary);
    widest_name_ = std::max(widest_name_, qzlog_compiler::display_width(entry.name));
    widest_id_ = std::max(widest_id_, std::to_string(entry.id).size());
    add(entry.attributes, event.attributes);
  }
}

void ShownEvents::add(const std::vector<AttributeDefinition>& attributes, std::vector<std::string>& names) {
  const auto known = static_cast<std::ptrdiff_t>(names.size());
  for (const AttributeDefinition& attribute : attributes) {
    attributes_.try_emplace(attribute.name, attribute.type);
    const auto end = names.begin() + known;
    if (std::find(names.begin(), end, attribute.name) == end) names.push_back(attribute.name);
  }
}

qz_AttributeType ShownEvents::type_of(std::string_view name) const {
  const auto found = attributes_.find(name);
  return found != attributes_.end() ? found->second : TypeUnknown;
}

std::vector<std::string_view> ShownEvents::attribute_names() const {
  std::vector<std::string_view> names;
  names.reserve(attributes_.size());
  for (const auto& [name, type] : attributes_) names.push_back(name);
  return names;
}

}  // namespace qzlog_tool
