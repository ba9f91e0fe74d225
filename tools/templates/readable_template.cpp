#include "tools/templates/readable_template.h"

#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/templates/icu_pattern.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::StoredTemplate;
using qzlog_compiler::TemplateForm;
using qzlog_compiler::TemplatePart;

std::vector<TemplatePart> narrow_parts(const StoredTemplate& cut) {
  std::vector<TemplatePart> parts;
  for (const TemplatePart& part : cut.parts) {
    if (!part.is_reference() || qzlog_compiler::is_known_format(part.format)) parts.push_back(part);
  }
  return parts;
}

std::optional<std::vector<TemplatePart>> icu_parts(const StoredTemplate& cut) {
  const std::vector<const TemplatePart*> references = shown_references(cut);
  if (references.size() > qzlog_compiler::kMaximumIcuReferences) return std::nullopt;
  const PatternReading reading = read_icu_pattern(cut, "root");
  if (!reading.refusal.empty()) return std::nullopt;
  std::vector<TemplatePart> parts;
  for (const PatternPart& part : reading.parts) {
    const bool is_reference = part.kind == PatternPart::Kind::kReference;
    parts.push_back(is_reference ? *references[part.reference] : TemplatePart{.text = part.text});
  }
  return parts;
}

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

std::optional<std::vector<TemplatePart>> shown_parts(std::string_view stored, TemplateForm form) {
  const StoredTemplate cut = qzlog_compiler::cut_template(stored, form);
  if (!cut.failure.empty()) return std::nullopt;
  return form == TemplateForm::kNarrow ? narrow_parts(cut) : icu_parts(cut);
}

std::optional<std::string> readable_template(std::string_view stored, TemplateForm form,
                                             const AttributeLookup& lookup) {
  const auto parts = shown_parts(stored, form);
  return parts ? std::optional(join(*parts, lookup)) : std::nullopt;
}

}  // namespace qzlog_tool
