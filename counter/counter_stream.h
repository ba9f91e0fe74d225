#ifndef QZLOG_COUNTER_COUNTER_STREAM_H
#define QZLOG_COUNTER_COUNTER_STREAM_H

#include "foundation/file_handle.h"

/// A counter file, as far as it could be opened.
struct _qz_LOG_EntryCounterStream {
  qzlog::FileHandle file;  ///< unbuffered, closed in programs that are started; null when it could not be opened
  bool is_writable;        ///< open for update, else for reading only
  bool exists;             ///< also when it could not be opened
};

namespace qzlog {

using CounterStream = _qz_LOG_EntryCounterStream;

/// Opens a file for update; one that may not be updated for reading only; one that is missing is made. Nothing that a
/// file holds is ever dropped. The rights that count are those of the effective user. Does not wait for a pipe's
/// writer. QZX_memory_alloc without memory for the stream.
CounterStream open_counter_stream(const char* path);
/// The same without a stream, for update alone: -1, with errno, where that may not be. Closed in programs that are
/// started.
int open_counter_for_update(const char* path);

}  // namespace qzlog

#endif  // QZLOG_COUNTER_COUNTER_STREAM_H
