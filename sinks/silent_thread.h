#ifndef QZLOG_SINKS_SILENT_THREAD_H
#define QZLOG_SINKS_SILENT_THREAD_H

namespace qzlog {

/// Starts a detached thread that takes no signals, which are the program's. False when there can be none.
bool start_silent_thread(void* (*run)(void*), void* argument) noexcept;

}  // namespace qzlog

#endif  // QZLOG_SINKS_SILENT_THREAD_H
