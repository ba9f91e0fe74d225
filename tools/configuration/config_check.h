#ifndef QZLOG_TOOLS_CONFIGURATION_CONFIG_CHECK_H
#define QZLOG_TOOLS_CONFIGURATION_CONFIG_CHECK_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// Finds what the library passes over in a configuration file, or takes for something else than was meant, as far as
/// filters of entries ask for it: other keys, and sections, are the products' own. Errors are lines that are lost and
/// values that are none. `file`: as it is shown. `section`: the one that is to be there; empty: any.
std::vector<qzlog_compiler::Finding> check_config(const std::string& file, std::string_view content,
                                                  std::string_view section = "");

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CONFIGURATION_CONFIG_CHECK_H
