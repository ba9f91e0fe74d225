#ifndef QZLOG_LINES_ENTRY_MARKS_H
#define QZLOG_LINES_ENTRY_MARKS_H

#include "config/loaded_names.h"
#include "definitions/attribute_name.h"
#include "definitions/ldf_def.h"

namespace qzlog {

/// What definitions say of an entry beside its message.
struct EntryMarks {
  const KnownName* event_name = nullptr;  ///< null when it has none
  /// Null when all attributes are kept.
  Sensitivity (*sensitivity)(const _qz_LOG_log_definition& definition, const KnownName* name) = nullptr;
};

inline EntryMarks marks_of(const _qz_LOG_log_definition& definition) {
  return {find_event_name(definition), definition.may_have_marks() ? &sensitivity_of : nullptr};
}

}  // namespace qzlog

#endif  // QZLOG_LINES_ENTRY_MARKS_H
