#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_LOWERING_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_LOWERING_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "message/template_limits.h"
#include "tools/compiler/message/message_text.h"
#include "tools/compiler/message/reference_formats.h"

namespace qzlog_compiler {

/// What the ICU path takes in one message.
inline constexpr std::size_t kMaximumIcuReferences = qzlog::kMostTemplateArguments;

/// The rendering path, or both, that a stored text is written for.
enum class RenderingPaths { kIcu, kNarrow, kBoth };

struct LoweredMessage {
  std::string stored;
  std::vector<MessageFinding> findings;
};

/// Writes the template that renders as the text stands on the path asked for. What the path cannot show is an error,
/// and so is what no path can show. For `kBoth`, what one path cannot show is a warning and the template serves the
/// other path; where both could show the text but not from one template, that is a warning and the template serves the
/// ICU path. `stored` is empty after an error.
LoweredMessage lower_message(std::string_view text, const AttributeLookup& lookup, RenderingPaths path);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_LOWERING_H
