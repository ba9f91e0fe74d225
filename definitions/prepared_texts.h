#ifndef QZLOG_DEFINITIONS_PREPARED_TEXTS_H
#define QZLOG_DEFINITIONS_PREPARED_TEXTS_H

#include <string_view>

#include "definitions/prepared_message.h"

namespace qzlog {

/// What was prepared from message texts, by their contents: definitions with the same text share it, and one that is
/// read again, from whatever file, finds it. The process keeps it within DefinitionMemory; what was not asked for
/// longest goes first. Any thread.
class PreparedTexts {
 public:
  /// None when it was not kept. std::bad_alloc without memory. `content` is all that the prepared form was made of.
  static PreparedMessageRef find(MessagePath path, std::string_view content);
  /// Keeps it, unless one is kept already. std::bad_alloc, with nothing changed, without memory.
  static void keep(MessagePath path, std::string_view content, const PreparedMessage& prepared);
  /// Drops what there is no memory for any more.
  static void fit_memory();
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_PREPARED_TEXTS_H
