#include "tools/templates/readable_template.h"

#include <string_view>
#include <vector>

#include "tools/compiler/model/attribute_type.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::TemplatePart;

std::string default_formats_of(const std::string& name, const AttributeLookup& lookup) {
  const auto standard = qzlog_compiler::find_standard_field(name);
  const auto type = standard ? standard : lookup(name);
  return type ? std::string(qzlog_compiler::default_formats(*type)) : "";
}

/// Whether a date, a blank and a time begin here, all of one time stamp.
bool is_time_stamp(const std::vector<TemplatePart>& parts, std::size_t i) {
  if (i + 2 >= parts.size() || !parts[i + 2].is_reference()) return false;
  const TemplatePart& date = parts[i];
  const TemplatePart& time = parts[i + 2];
  return !parts[i + 1].is_reference() && parts[i + 1].text == " " && date.format == 'D' && time.format == 'T' &&
         date.text == time.text;
}

std::string join(const std::vector<TemplatePart>& parts, const AttributeLookup& lookup) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!parts[i].is_reference()) {
      text += parts[i].text;
      continue;
    }
    const TemplatePart& reference = parts[i];
    const std::string formats = default_formats_of(reference.text, lookup);
    if (formats == "DT" && is_time_stamp(parts, i)) {
      text += '{' + reference.text + '}';
      i += 2;
    } else {
      const bool is_default = formats == std::string_view(&reference.format, 1);
      text += '{' + reference.text + (is_default ? "" : std::string(":") + reference.format) + '}';
    }
  }
  return text;
}

}  // namespace

std::optional<std::string> readable_template(const qzlog_compiler::TemplateJudgement& judged,
                                             const AttributeLookup& lookup) {
  return judged.shown ? std::optional(join(*judged.shown, lookup)) : std::nullopt;
}

}  // namespace qzlog_tool
