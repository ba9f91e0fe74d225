#ifndef QZLOG_TOOLS_DEFINITIONS_MESSAGE_PATH_OPTION_H
#define QZLOG_TOOLS_DEFINITIONS_MESSAGE_PATH_OPTION_H

#include <string>

#include "tools/compiler/message/message_lowering.h"

namespace CLI {
class App;
}  // namespace CLI

namespace qzlog_tool {

/// Adds the option --path, which takes "icu", "narrow" or "both"; what `path` holds is the default.
void add_message_path_option(CLI::App& command, std::string& path, const std::string& help);

/// The path of one of these names.
qzlog_compiler::RenderingPaths message_path_of(const std::string& name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_MESSAGE_PATH_OPTION_H
