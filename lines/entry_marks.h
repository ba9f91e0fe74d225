#ifndef QZLOG_LINES_ENTRY_MARKS_H
#define QZLOG_LINES_ENTRY_MARKS_H

#include "definitions/attribute_name.h"
#include "definitions/ldf_def.h"

namespace qzlog {

/// What becomes of an attribute's value where entries leave the process.
enum class Sensitivity {
  kKeep,
  kHash,  ///< a text of "sha256:" and the first 16 hexadecimal digits of its SHA-256 takes its place
  kDrop,  ///< it is left out
};

/// What definitions say of entries beside their messages. Compiled files do not hold it: no event has a name, and every
/// attribute is kept.
inline const char* find_event_name(const _qz_LOG_log_definition& /*definition*/) { return nullptr; }
inline bool has_sensitive_attributes(const _qz_LOG_log_definition& /*definition*/) { return false; }
inline Sensitivity sensitivity_of(const _qz_LOG_log_definition& /*definition*/, const KnownName* /*name*/) {
  return Sensitivity::kKeep;
}

/// The same for one entry.
struct EntryMarks {
  const char* event_name = nullptr;  ///< null when it has none
  /// Null when all attributes are kept.
  Sensitivity (*sensitivity)(const _qz_LOG_log_definition& definition, const KnownName* name) = nullptr;
};

inline EntryMarks marks_of(const _qz_LOG_log_definition& definition) {
  return {find_event_name(definition), has_sensitive_attributes(definition) ? &sensitivity_of : nullptr};
}

}  // namespace qzlog

#endif  // QZLOG_LINES_ENTRY_MARKS_H
