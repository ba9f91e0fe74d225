#ifndef QZLOG_TOOLS_OPTIONS_LOCALE_NAMES_H
#define QZLOG_TOOLS_OPTIONS_LOCALE_NAMES_H

#include <string>
#include <vector>

namespace qzlog_tool {

/// The names of all locales that the library has ("de_DE"), in its order.
std::vector<std::string> locale_names();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_LOCALE_NAMES_H
