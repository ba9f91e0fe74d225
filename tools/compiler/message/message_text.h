#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_TEXT_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/finding.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {

/// Something to say about a message text, at a byte of the text as it was written.
struct MessageFinding {
  std::size_t offset = 0;
  Severity severity = Severity::kError;
  Rule rule = Rule::kUnbalancedBrace;
  std::string text;
  std::string hint = {};  ///< what to do about it; may be empty
  std::string name = {};  ///< of the attribute that does not exist, for `kUnknownAttribute`
};

/// A piece of a message: literal text, doubled braces undone, or a placeholder.
struct MessagePart {
  enum class Kind { kLiteral, kPlaceholder };

  Kind kind = Kind::kLiteral;
  std::string text;    ///< the literal text, or the placeholder's name
  char format = '\0';  ///< asked for by name; NUL: follows from the type
  std::size_t offset = 0;

  bool is_placeholder() const { return kind == Kind::kPlaceholder; }
};

struct MessageParts {
  std::vector<MessagePart> parts;           ///< no two literals are neighbours, none is empty
  std::size_t leading_percents = 0;         ///< percent signs at the very start
  std::vector<std::size_t> later_percents;  ///< where each further run of percent signs begins
};

/// Cuts a text with `{Name}`, `{Name:F}`, `{{` and `}}` into its parts. Mistakes are added to `findings`.
MessageParts parse_message_text(std::string_view text, std::vector<MessageFinding>& findings);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_TEXT_H
