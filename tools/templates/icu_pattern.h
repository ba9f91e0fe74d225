#ifndef QZLOG_TOOLS_TEMPLATES_ICU_PATTERN_H
#define QZLOG_TOOLS_TEMPLATES_ICU_PATTERN_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/compiler/message/stored_template.h"

namespace qzlog_tool {

/// A piece of a message as ICU reads its pattern.
struct PatternPart {
  enum class Kind { kText, kReference, kArgument };

  Kind kind = Kind::kText;
  std::string text;           ///< what is shown, quotes undone; of an argument its place in the pattern
  std::size_t reference = 0;  ///< which of the template's references, those that the library leaves out not counted
};

/// What ICU makes of the pattern that the library builds from a template.
struct PatternReading {
  std::vector<PatternPart> parts;   ///< empty when ICU refuses the pattern
  std::vector<std::size_t> hidden;  ///< references that ICU takes for quoted text or for part of an argument
  std::string refusal;              ///< why ICU refuses the pattern, or cannot apply it; else empty
};

/// The references that the library shows, in their order.
std::vector<const qzlog_compiler::TemplatePart*> shown_references(const qzlog_compiler::StoredTemplate& cut);

/// Reads the pattern of a template that was cut for the ICU path and has no failure. `locale` as ICU names it. Throws
/// std::bad_alloc, also where ICU makes do without the memory that it has not got.
PatternReading read_icu_pattern(const qzlog_compiler::StoredTemplate& cut, const std::string& locale);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_ICU_PATTERN_H
