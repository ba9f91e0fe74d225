#include "tools/compiler/message/template_failure.h"

#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <new>
#include <optional>
#include <utility>

#include "message/icu_memory.h"
#include "message/pattern_nesting.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

std::string reference_failure(const TemplatePart& reference, const AttributeLookup& lookup) {
  const std::optional<qz_AttributeType> standard = find_standard_field(reference.text);
  const std::optional<qz_AttributeType> type = standard ? standard : lookup(reference.text);
  if (!type) return "there is no attribute " + quoted(reference.text);
  if (*type == TypeUnknown || !is_known_format(reference.format)) return "";
  if (accepted_formats(*type).find(reference.format) != std::string_view::npos) return "";
  return "the format '" + std::string(1, reference.format) + "' does not accept " +
         std::string(short_type_name(*type)) + " attributes as " + quoted(reference.text);
}

/// The pattern that the ICU path makes of a template. What a reference asks for beyond its number makes no difference.
std::string icu_pattern(const StoredTemplate& stored, std::size_t& references) {
  std::string pattern;
  for (const TemplatePart& part : stored.parts) {
    if (!part.is_reference()) {
      pattern += part.text;
    } else if (is_known_format(part.format)) {
      pattern += "{" + std::to_string(references++) + "}";
    }
  }
  return pattern;
}

std::string pattern_failure(const StoredTemplate& stored) {
  std::size_t references = 0;
  const std::string pattern = icu_pattern(stored, references);
  if (references > kMaximumIcuReferences) return "it has more than ten references";
  const qzlog::IcuMemory memory;
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  const bool is_within_limits = qzlog::parse_pattern(icu::UnicodeString::fromUTF8(pattern), parsed, status);
  if (memory.ran_out(status)) throw std::bad_alloc();
  if (!is_within_limits) return nesting_failure();
  if (U_FAILURE(status)) return "ICU does not take its braces for a message pattern";
  return parsed.hasNamedArguments() ? "ICU takes a name in braces for an argument that nobody gives" : "";
}

}  // namespace

std::string nesting_failure() {
  return "its arguments and their messages nest deeper than " + std::to_string(qzlog::kMostPatternNesting) + " levels";
}

std::string find_template_failure(std::string_view stored, TemplateForm form, const AttributeLookup& lookup) {
  StoredTemplate cut = cut_template(stored, form);
  for (const TemplatePart& part : cut.parts) {
    if (!part.is_reference()) continue;
    std::string failure = reference_failure(part, lookup);
    if (!failure.empty()) return failure;
  }
  if (!cut.failure.empty()) return std::move(cut.failure);
  return form == TemplateForm::kIcu ? pattern_failure(cut) : "";
}

}  // namespace qzlog_compiler
