#ifndef QZLOG_TOOLS_REPORT_COMMAND_MESSAGE_H
#define QZLOG_TOOLS_REPORT_COMMAND_MESSAGE_H

#include <string_view>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// Says something on stderr behind "qzlog: error:" or "qzlog: warning:", in colour where stderr shows it.
void print_command_message(qzlog_compiler::Severity severity, std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_COMMAND_MESSAGE_H
