#ifndef QZLOG_TOOLS_LOGS_EVENT_NAME_H
#define QZLOG_TOOLS_LOGS_EVENT_NAME_H

#include <string_view>

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// The name of a line's event: as the definitions have it that its entry was read against; where the library could not
/// read it from them, `known`, what else is known of them; else as the line says it. Empty where nobody knows one.
/// Valid as long as the line and `known`.
inline std::string_view event_name(const qz_LOG_EntryLine& line, std::string_view known) {
  const std::string_view defined = line.GetEntry().GetEventName();
  if (!defined.empty()) return defined;
  return !known.empty() ? known : line.GetName();
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_EVENT_NAME_H
