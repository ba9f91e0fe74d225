#ifndef QZLOG_TOOLS_TEMPLATES_REFERENCE_COMPARISON_H
#define QZLOG_TOOLS_TEMPLATES_REFERENCE_COMPARISON_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/stored_template.h"
#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// One value in a message.
struct Reference {
  std::string name;
  char format = '\0';
};

/// Those that the library shows on a path, in the order of the template.
std::vector<Reference> references_in(std::string_view stored, qzlog_compiler::RenderingPath form);

/// A reference that one of two texts has and the other has not, or not as often. The formats d and u are one: they show
/// the same.
struct ReferenceDifference {
  enum class Kind { kFormat, kLost, kAdded };
  /// What the other text has of the attribute.
  enum class Elsewhere { kNothing, kOtherFormat, kSameFormat };

  Kind kind = Kind::kLost;
  std::string name;
  char expected = '\0';  ///< the format; of kFormat and kLost
  char found = '\0';     ///< the format; of kFormat and kAdded
  Elsewhere elsewhere = Elsewhere::kNothing;

  friend bool operator==(const ReferenceDifference&, const ReferenceDifference&) = default;
};

/// How what a text refers to differs from what it should refer to, in whatever order. A lost and an added reference to
/// one attribute are one change of its format. By kind, then by name; the same difference comes once.
std::vector<ReferenceDifference> compare_references(const std::vector<Reference>& expected,
                                                    const std::vector<Reference>& found);

/// How the rules and texts of findings call a difference of a translation from its source text. References are written
/// as authors and translators write them: {Name:F}, or %F%Name% in a stored template.
enum class ReferenceNotation { kPlaceholder, kTemplate };
qzlog_compiler::AnyRule rule_of(const ReferenceDifference& difference);
std::string text_of(const ReferenceDifference& difference, ReferenceNotation notation);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_REFERENCE_COMPARISON_H
