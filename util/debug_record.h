#ifndef QZLOG_UTIL_DEBUG_RECORD_H
#define QZLOG_UTIL_DEBUG_RECORD_H

#include "foundation/atomic_word.h"
#include "qzlog/debug_log.h"

namespace qzlog {

/// Whether a record of `level` would be written now.
inline bool debug_log_wants(unsigned level) {
  const unsigned current = load_word(debug_log_level);
  return (level <= current && current != 0) || level == 9;
}

}  // namespace qzlog

/// Writes a record whose format begins with "%s:%d ": the source unit's name and the line, passed explicitly because
/// operators search for some of them. A macro, so that nothing is evaluated unless the record is wanted.
#define QZ_DEBUG_RECORD_AT(level, source, line, format, ...)                                                    \
  do {                                                                                                          \
    if (qzlog::debug_log_wants(level)) LogDebugMessage(level, format, source, line __VA_OPT__(, ) __VA_ARGS__); \
  } while (false)

/// The same with the line of the call.
#define QZ_DEBUG_RECORD(level, source, format, ...) \
  QZ_DEBUG_RECORD_AT(level, source, __LINE__, format __VA_OPT__(, ) __VA_ARGS__)

#endif  // QZLOG_UTIL_DEBUG_RECORD_H
