#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_REFERENCE_FORMATS_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_REFERENCE_FORMATS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/logattrib.h"
#include "tools/compiler/message/message_text.h"

namespace qzlog_compiler {

/// The type of the attribute that a name refers to, none when nothing defines it. `TypeUnknown` for an attribute whose
/// type is in error already: references to it are then not checked further.
using AttributeLookup = std::function<std::optional<qz_AttributeType>(std::string_view name)>;

/// The format characters of a placeholder: one, or two for a time stamp (date, a blank, time). What is wrong with the
/// placeholder is added to `findings`; the result is then of no use.
std::string resolve_formats(const MessagePart& placeholder, const AttributeLookup& lookup,
                            std::vector<MessageFinding>& findings);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_REFERENCE_FORMATS_H
