#include "tools/templates/template_syntax.h"

#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <new>

#include "message/icu_memory.h"
#include "message/pattern_nesting.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/message/template_failure.h"
#include "tools/compiler/model/attribute_type.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::StoredTemplate;
using qzlog_compiler::TemplateForm;
using qzlog_compiler::TemplatePart;

/// The pattern that the library gives to ICU; how a value looks does not matter here.
std::string pattern_of(const StoredTemplate& stored) {
  std::string pattern;
  std::size_t arguments = 0;
  for (const TemplatePart& part : stored.parts) {
    if (!part.is_reference()) {
      pattern += part.text;
    } else if (qzlog_compiler::kFormatCharacters.find(part.format) != std::string_view::npos) {
      pattern += '{' + std::to_string(arguments++) + '}';
    }
  }
  return pattern;
}

}  // namespace

std::string template_syntax_failure(std::string_view stored) {
  const StoredTemplate parts = qzlog_compiler::cut_template(stored, TemplateForm::kIcu);
  if (!parts.failure.empty()) return parts.failure;
  const qzlog::IcuMemory memory;
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString pattern = icu::UnicodeString::fromUTF8(pattern_of(parts));
  icu::MessagePattern parsed(status);
  const bool is_within_limits = qzlog::parse_pattern(pattern, parsed, status);
  if (memory.ran_out(status)) throw std::bad_alloc();
  if (!is_within_limits) return qzlog_compiler::nesting_failure();
  UParseError place;
  const icu::MessageFormat format(pattern, icu::Locale::getRoot(), place, status);
  if (memory.ran_out(status)) throw std::bad_alloc();
  return U_SUCCESS(status) ? "" : "ICU refuses its text; a literal brace is written in apostrophes, '{'";
}

bool loses_its_end(std::string_view stored) { return !stored.empty() && stored.back() != '%'; }

}  // namespace qzlog_catalog
