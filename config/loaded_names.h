#ifndef QZLOG_CONFIG_LOADED_NAMES_H
#define QZLOG_CONFIG_LOADED_NAMES_H

#include <string_view>

#include "definitions/ldf_load.h"
#include "qzlog/logcfg.h"

namespace qzlog {

/// The names that the loaded definition files know. Threads and exceptions as for the table's functions.

/// Null for an ID without a name. Valid until the files are replaced or cleared.
inline const char* find_event_name(unsigned int entry_id) {
  return qz_LOG_LogConfig::GetDefinitionTable()->find_event_name(entry_id);
}

/// False, with the ID as it was, for a name that no event has.
inline bool find_event_id(std::string_view name, unsigned int& entry_id) {
  return qz_LOG_LogConfig::GetDefinitionTable()->find_event_id(name, entry_id);
}

inline bool has_event_names() { return qz_LOG_LogConfig::GetDefinitionTable()->has_event_names(); }

/// Of a definition: the event's name, or null, and what becomes of an attribute's value.
/// Without a lock once they were asked for the first time.
inline const KnownName* find_event_name(const _qz_LOG_log_definition& definition) {
  return definition.get_event_name();
}
inline Sensitivity sensitivity_of(const _qz_LOG_log_definition& definition, const KnownName* name) {
  return definition.find_sensitivity(name);
}

}  // namespace qzlog

#endif  // QZLOG_CONFIG_LOADED_NAMES_H
