#ifndef QZLOG_TOOLS_COMPILER_SCALAR_POSITION_H
#define QZLOG_TOOLS_COMPILER_SCALAR_POSITION_H

#include <string_view>

#include "tools/compiler/yaml_tree.h"

namespace qzlog_compiler {

/// The place in the source of the byte `offset` of a scalar's text, seen through quotes and escapes.
/// The beginning of the scalar where the text runs over more than one line or stands in a block.
SourcePosition position_in_scalar(std::string_view source, const YamlNode& scalar, std::size_t offset);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SCALAR_POSITION_H
