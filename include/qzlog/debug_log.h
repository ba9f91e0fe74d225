#ifndef QZLOG_DEBUG_LOG_H
#define QZLOG_DEBUG_LOG_H

#include "qzlog/export.h"
#include "qzlog/version.h"

/// The library's own trace: the file "zrk_debug.log" in the working directory, opened, appended to and closed for every
/// record, so that a crash loses nothing and several processes can share the file. Failures to write it are ignored.
///
/// Levels: 1 errors and rejected arguments, 2 configuration changes, 3 lookups, 9 written even when the trace is off.

/// The current level, 0 (off) to 9. Read and written atomically by the library; callers use the functions below. A
/// program that declares it without this header reaches it too, unless it has a variable of that name.
extern QZLOG_EXPORT unsigned debug_log_level QZLOG_SYMBOL(debug_log_level);

/// Appends one record "YYYY/MM/DD HH:MM:SS(pid=P)(tid=T):" + the formatted text when `level` is at most the current
/// level and the trace is on, or when `level` is 9. The record has no line break of its own: end `format` with "\n".
/// Never throws. Any thread; records of different threads may interleave.
QZLOG_EXPORT void LogDebugMessage(unsigned level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Sets the level; a value outside 0 to 9 is ignored. Meant for start-up, safe from any thread.
QZLOG_EXPORT void EnableDebugLog(int level);

/// The current level.
QZLOG_EXPORT unsigned GetDebugLogLevel();

#endif  // QZLOG_DEBUG_LOG_H
