#ifndef QZLOG_TOOLS_CHECK_SYSLOG_CHECK_H
#define QZLOG_TOOLS_CHECK_SYSLOG_CHECK_H

#include "tools/check/check_report.h"
#include "tools/definitions/entry_view.h"

namespace qzlog_tool {

/// Reports attributes of `model` that become the same parameter in messages of syslog as another one of an event, or
/// have none of their own. `standard` is null when the model is that of the standard definitions.
void check_syslog_names(const qzlog_compiler::DefinitionModel& model, const qzlog_compiler::DefinitionModel* standard,
                        CheckReport& report);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHECK_SYSLOG_CHECK_H
