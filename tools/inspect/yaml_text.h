#ifndef QZLOG_TOOLS_INSPECT_YAML_TEXT_H
#define QZLOG_TOOLS_INSPECT_YAML_TEXT_H

#include <string>
#include <string_view>

namespace qzlog_compiler {

/// A text as a double-quoted scalar on one line that YAML reads back byte for byte. `text` is well-formed UTF-8.
std::string yaml_quoted(std::string_view text);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_YAML_TEXT_H
