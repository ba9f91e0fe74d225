#include "tools/diff/text_diff.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/templates/reference_comparison.h"

namespace qzlog_compiler {
namespace {

using qzlog_tool::Reference;
using qzlog_tool::ReferenceDifference;

constexpr char kDefaultFormat = '\0';

/// References that the library leaves out of messages are left out here: the compiler writes them to keep a text's end.
std::vector<TemplatePart> parts_that_count(std::string_view stored, RenderingPath form) {
  std::vector<TemplatePart> parts = cut_template(stored, form).parts;
  std::erase_if(parts, [](const TemplatePart& part) { return part.is_reference() && !is_known_format(part.format); });
  for (TemplatePart& part : parts) part.format = canonical_format(part.format);
  return parts;
}

/// Replaces the format that the attribute's type asks for.
std::vector<TemplatePart> without_default_formats(std::vector<TemplatePart> parts, const AttributeLookup& types) {
  for (TemplatePart& part : parts) {
    if (!part.is_reference()) continue;
    const std::optional<qz_AttributeType> type = types(part.text);
    if (type && default_formats(*type) == std::string_view(&part.format, 1)) part.format = kDefaultFormat;
  }
  return parts;
}

bool same_parts(const std::vector<TemplatePart>& a, const std::vector<TemplatePart>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const TemplatePart& x, const TemplatePart& y) {
    return x.kind == y.kind && x.text == y.text && x.format == y.format;
  });
}

std::vector<Reference> references(const std::vector<TemplatePart>& parts) {
  std::vector<Reference> found;
  for (const TemplatePart& part : parts) {
    if (part.is_reference()) found.push_back({part.text, part.format});
  }
  return found;
}

/// None when the texts refer to the same, be it another number of times.
std::optional<DiffRule> compare_references(const std::vector<TemplatePart>& before,
                                           const std::vector<TemplatePart>& after) {
  bool same_formats = true;
  for (const ReferenceDifference& difference : qzlog_tool::compare_references(references(before), references(after))) {
    if (difference.elsewhere == ReferenceDifference::Elsewhere::kNothing) return DiffRule::kTextReferencesChanged;
    same_formats = same_formats && difference.elsewhere == ReferenceDifference::Elsewhere::kSameFormat;
  }
  return same_formats ? std::nullopt : std::optional(DiffRule::kTextFormatsChanged);
}

std::string without_white_space(std::string text) {
  static constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
  std::erase_if(text, [](char c) { return kWhiteSpace.find(c) != std::string_view::npos; });
  return text;
}

/// Compares two stored texts that are not the same bytes. None: only formats differ that followed the types.
std::optional<DiffRule> compare_stored(const TextSide& before, const TextSide& after) {
  bool same_shown = true;
  bool same_formats = true;
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    const std::vector<TemplatePart> a = parts_that_count(before.text->stored, form);
    const std::vector<TemplatePart> b = parts_that_count(after.text->stored, form);
    same_formats = same_formats && same_parts(a, b);
    const std::vector<TemplatePart> plain_a = without_default_formats(a, before.types);
    const std::vector<TemplatePart> plain_b = without_default_formats(b, after.types);
    same_shown = same_shown && same_parts(plain_a, plain_b);
    if (const std::optional<DiffRule> rule = compare_references(plain_a, plain_b)) return rule;
  }
  if (!same_shown) return DiffRule::kTextChanged;
  return same_formats ? std::optional(DiffRule::kTextNotationChanged) : std::nullopt;
}

}  // namespace

std::optional<TextChange> compare_texts(const TextSide& before, const TextSide& after) {
  const MessageText& a = *before.text;
  const MessageText& b = *after.text;
  const bool both_written = !a.raw && !b.raw;
  const bool same_notation = a.raw == b.raw || !a.position.known() || !b.position.known();
  if (both_written ? a.written == b.written : same_notation && a.stored == b.stored) return std::nullopt;
  const std::optional<DiffRule> found =
      a.stored == b.stored ? std::optional(DiffRule::kTextNotationChanged) : compare_stored(before, after);
  if (!found && !both_written) return std::nullopt;
  TextChange change{found.value_or(DiffRule::kTextNotationChanged), both_written ? a.written : a.stored,
                    both_written ? b.written : b.stored};
  const bool only_white_space =
      change.rule == DiffRule::kTextChanged && without_white_space(change.before) == without_white_space(change.after);
  if (only_white_space) change.rule = DiffRule::kTextWhiteSpaceChanged;
  return change;
}

}  // namespace qzlog_compiler
