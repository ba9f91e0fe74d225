#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_REFERENCES_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_REFERENCES_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// A reference to an attribute where the author wrote it.
struct WrittenReference {
  std::string name;
  std::size_t offset = 0;  ///< in the text as it was written, in bytes
};

/// The placeholders of a message, or the references of one that is a template, in their order.
std::vector<WrittenReference> written_references(const MessageText& message);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_MESSAGE_REFERENCES_H
