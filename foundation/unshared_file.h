#ifndef QZLOG_FOUNDATION_UNSHARED_FILE_H
#define QZLOG_FOUNDATION_UNSHARED_FILE_H

#include "foundation/file_handle.h"

namespace qzlog {

/// Opens a file for reading as QZ_fopen(path, "rb") does; null when that fails. QZX_memory_alloc without memory.
///
/// The stream's position belongs to the process. The one of a descriptor belongs to the open file, which a process and
/// those that it forks have in common: each would read on where another has stopped. Such a stream has no fileno, and
/// is closed in programs that the process executes. `descriptor` gets the one that it reads from, for pread, as long as
/// the stream is open; null for nobody who asks.
FileHandle open_unshared(const char* path, int* descriptor = nullptr);

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_UNSHARED_FILE_H
