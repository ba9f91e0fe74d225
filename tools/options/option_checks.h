#ifndef QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H
#define QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H

#include <string>

namespace qzlog_tool {

/// A check for options that name something: an empty name (a variable that was not set) must not pass for no option.
inline std::string check_not_empty(const std::string& text) { return text.empty() ? "the name is empty" : ""; }

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_OPTION_CHECKS_H
