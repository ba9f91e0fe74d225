#include "tools/compiler/message/message_references.h"

#include <utility>

#include "tools/compiler/message/message_text.h"
#include "tools/compiler/message/stored_template.h"

namespace qzlog_compiler {

std::vector<WrittenReference> written_references(const MessageText& message) {
  std::vector<WrittenReference> references;
  if (message.raw) {
    for (TemplatePart& part : find_references(message.written, RenderingPath::kNarrow)) {
      references.push_back({std::move(part.text), part.offset});
    }
    return references;
  }
  std::vector<MessageFinding> ignored;
  for (MessagePart& part : parse_message_text(message.written, ignored).parts) {
    if (part.is_placeholder()) references.push_back({std::move(part.text), part.offset});
  }
  return references;
}

}  // namespace qzlog_compiler
