#ifndef QZLOG_TOOLS_SYSTEM_HOST_NAME_H
#define QZLOG_TOOLS_SYSTEM_HOST_NAME_H

#include <string>

namespace qzlog_tool {

/// The name of this host.
std::string host_name();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_HOST_NAME_H
