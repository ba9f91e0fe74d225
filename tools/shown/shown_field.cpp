#include "tools/shown/shown_field.h"

#include <algorithm>
#include <iterator>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

struct FieldName {
  std::string_view name;
  ShownField field;
};

// The two with a colon are those of formats of sinks.
constexpr FieldName kFields[] = {
    {"message", ShownField::kMessage},
    {"time", ShownField::kTime},
    {"time:local", ShownField::kLocalTime},
    {"level", ShownField::kLevel},
    {"level_name", ShownField::kLevelName},
    {"level:name", ShownField::kLevelName},
    {"id", ShownField::kId},
    {"name", ShownField::kName},
    {"summary", ShownField::kSummary},
    {"mask", ShownField::kMask},
    {"writer", ShownField::kWriter},
    {"host", ShownField::kHost},
    {"pid", ShownField::kPid},
    {"seq", ShownField::kSeq},
    {"written", ShownField::kWritten},
    {"definitions", ShownField::kDefinitions},
    {"file", ShownField::kFile},
    {"line", ShownField::kLine},
};

constexpr std::string_view kAttributePrefix = "attribute:";

}  // namespace

std::optional<FieldChoice> find_field(std::string_view name, const ShownEvents& events) {
  if (name.starts_with(kAttributePrefix)) {
    const std::string_view attribute = name.substr(kAttributePrefix.size());
    if (!events.has_attribute(attribute)) return std::nullopt;
    return FieldChoice{ShownField::kAttribute, std::string(name), std::string(attribute)};
  }
  const auto* const found =
      std::find_if(std::begin(kFields), std::end(kFields), [&](const FieldName& each) { return each.name == name; });
  if (found != std::end(kFields)) return FieldChoice{found->field, std::string(name), "", events.has_attribute(name)};
  if (!events.has_attribute(name)) return std::nullopt;
  return FieldChoice{ShownField::kAttribute, std::string(name), std::string(name)};
}

std::vector<std::string_view> field_names() {
  std::vector<std::string_view> names;
  for (const FieldName& each : kFields) names.push_back(each.name);
  return names;
}

std::vector<std::string> remarks_of_hidden(const std::vector<FieldChoice>& choices) {
  std::vector<std::string> remarks;
  for (const FieldChoice& choice : choices) {
    if (!choice.hides_attribute) continue;
    const auto is_hidden = [&](const FieldChoice& other) { return other.attribute == choice.name; };
    if (std::any_of(choices.begin(), choices.end(), is_hidden)) continue;
    remarks.push_back("'" + choice.name + "' is the field; the attribute of that name is 'attribute:" + choice.name +
                      "'");
  }
  return remarks;
}

UnknownField describe_unknown_field(std::string_view name, const ShownEvents& events) {
  std::vector<std::string_view> candidates = events.attribute_names();
  if (name.starts_with(kAttributePrefix)) {
    name.remove_prefix(kAttributePrefix.size());
    return {"the definitions have no attribute " + qzlog_compiler::quoted(name),
            qzlog_compiler::did_you_mean(name, candidates)};
  }
  const std::vector<std::string_view> fields = field_names();
  candidates.insert(candidates.begin(), fields.begin(), fields.end());
  std::string all = "fields are ";
  for (const std::string_view field : fields) all.append(field == fields.front() ? "" : ", ").append(field);
  const std::string question = qzlog_compiler::did_you_mean(name, candidates);
  return {"unknown field " + qzlog_compiler::quoted(name),
          question.empty() ? all + ", and the names of attributes" : question};
}

}  // namespace qzlog_tool
