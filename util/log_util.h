#ifndef QZLOG_UTIL_LOG_UTIL_H
#define QZLOG_UTIL_LOG_UTIL_H

#include "qzlog/log_util.h"

/// Makes a path absolute and resolves ".", ".." and doubled slashes; a slash at the end stays. 1, with the result in
/// `full` (room for 4097 bytes), or -1, with `full` untouched, when the path or the result is longer than 4096
/// characters or the working directory, which a relative path needs, is not known.
int _get_fullpath(char* full, const char* path);

#endif  // QZLOG_UTIL_LOG_UTIL_H
