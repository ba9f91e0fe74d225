#ifndef QZLOG_TOOLS_CONFIGURATION_CONFIG_FILE_H
#define QZLOG_TOOLS_CONFIGURATION_CONFIG_FILE_H

#include <string>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// A configuration file as it was read, and what is to be said of it.
struct ConfigFile {
  std::string shown_path;
  std::string content;
  bool is_regular = false;  ///< no pipe, no device and not standard input
  std::vector<qzlog_compiler::Finding> findings;
};

/// Reads and checks the file; `section` is the one that is to be there, empty: any. Throws CommandError (cannot run)
/// for a file that cannot be read.
ConfigFile read_config_file(const std::string& path, const std::string& section);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CONFIGURATION_CONFIG_FILE_H
