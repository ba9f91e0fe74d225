#ifndef QZLOG_TOOLS_DIFF_TEXT_DIFF_H
#define QZLOG_TOOLS_DIFF_TEXT_DIFF_H

#include <optional>
#include <string>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/diff/diff_rules.h"

namespace qzlog_compiler {

/// A message text and what its references mean.
struct TextSide {
  const MessageText* text;
  AttributeLookup types;
};

struct TextChange {
  DiffRule rule;
  std::string before;  ///< as written where both sides were, else as stored
  std::string after;
};

/// The one rule that says best how a text changed. That a placeholder's default format followed its attribute's type is
/// no change of the text.
std::optional<TextChange> compare_texts(const TextSide& before, const TextSide& after);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_TEXT_DIFF_H
