#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_ICU_PATTERN_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_ICU_PATTERN_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/compiler/message/stored_template.h"

namespace qzlog_compiler {

/// A piece of a message as ICU reads its pattern.
struct PatternPart {
  enum class Kind { kText, kReference, kArgument };

  Kind kind = Kind::kText;
  std::string text;           ///< what is shown, quotes undone; of an argument its place in the pattern
  std::size_t reference = 0;  ///< which of the template's references, those that the library leaves out not counted
};

/// A reference that ICU never replaces by a value.
struct HiddenReference {
  std::size_t reference = 0;  ///< as above
  bool in_argument = false;   ///< part of an argument, as its style may be; else in quoted text

  friend bool operator==(const HiddenReference&, const HiddenReference&) = default;
};

/// What comes of the pattern that the library builds from a template.
enum class PatternOutcome {
  kApplies,
  kTooDeep,       ///< the library does not give it to ICU
  kRefused,       ///< the library throws
  kInapplicable,  ///< ICU takes it, and cannot apply it to some values: the library ends the process
};

struct PatternReading {
  std::vector<PatternPart> parts;       ///< empty when it is too deep or refused
  std::vector<HiddenReference> hidden;  ///< in their order
  PatternOutcome outcome = PatternOutcome::kApplies;
  std::string error = {};  ///< ICU's name for it, where there is one
};

/// The references that the library shows, in their order.
std::vector<const TemplatePart*> shown_references(const StoredTemplate& cut);

/// Reads the pattern of a template that was cut for the ICU path, has no failure and no more references than the path
/// takes. The types of the attributes are taken to fit the formats. `locale` as ICU names it. An argument that ICU
/// cannot apply counts wherever it stands, in a message that few values select, too, but not within an argument that
/// nobody gives. Throws std::bad_alloc, also where
/// ICU makes do without the memory that it has not got.
PatternReading read_icu_pattern(const StoredTemplate& cut, const std::string& locale);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_ICU_PATTERN_H
