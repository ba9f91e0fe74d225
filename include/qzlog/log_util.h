#ifndef QZLOG_LOG_UTIL_H
#define QZLOG_LOG_UTIL_H

#include "qzlog/export.h"

/// Names of dated text log files ("PREFIX.YYYYMMDD.NNNN"), safe file names, absolute paths and lock names. No state;
/// any thread. A null text where one is needed is reported through the library's assertion and treated as empty (or the
/// operation does nothing). Running out of memory throws QZX_memory_alloc.

/// The name, after "DIRECTORY/" unless `directory` is null. A new text: release it with delete[]. Fields that need more
/// digits than usual get them.
QZLOG_EXPORT char* make_text_log_filename(const char* log_prefix, unsigned short year, unsigned short month,
                                          unsigned short day, unsigned short sequence, const char* directory);

/// 1 when `filename` is `log_prefix` followed by ".", eight digits, "." and four digits, else 0. The fields are stored
/// where the pointers are not null; month and day are not checked to be real ones.
QZLOG_EXPORT int is_a_valid_text_log(const char* filename, const char* log_prefix, unsigned short* year,
                                     unsigned short* month, unsigned short* day, unsigned short* sequence);

/// Replaces in place every character that is not an ASCII letter or digit, "_" or "-" by "_".
QZLOG_EXPORT void remove_pathname_dir_separators(char* pathname);

/// Always 1. `full`, with room for 4097 bytes, receives the absolute path without ".", "..", doubled slashes and
/// slashes at the end; the root directory gives the empty text. A path that is too long to be resolved, or relative to
/// a working directory that is not known, is given as it is, cut to 4096 characters, less slashes at the end. Links are
/// not followed.
QZLOG_EXPORT int get_fullpath(const char* path, char* full);

/// Always 1. `lock_name`, with room for 256 bytes, receives `first`, "_" and `second`, cut to 255 characters.
QZLOG_EXPORT int get_plockname(const char* first, const char* second, char* lock_name);

#endif  // QZLOG_LOG_UTIL_H
