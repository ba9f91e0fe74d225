#ifndef QZLOG_TOOLS_LOGS_EVENT_NAME_H
#define QZLOG_TOOLS_LOGS_EVENT_NAME_H

#include <string_view>

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// The name of a line's event: as the definitions have it that its entry was read against, else as the line says it;
/// empty where neither knows one. Valid as long as the line.
inline std::string_view event_name(const qz_LOG_EntryLine& line) {
  const char* const defined = line.GetEntry().GetEventName();
  return *defined != '\0' ? defined : line.GetName();
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_EVENT_NAME_H
