#ifndef QZLOG_TOOLS_SYSTEM_PROCESS_START_H
#define QZLOG_TOOLS_SYSTEM_PROCESS_START_H

namespace qzlog_tool {

/// To be called before anything else: gives the process what every part of it relies on, whatever it was started with.
/// Each standard descriptor that is closed becomes one that can neither be read nor written, so that no file which is
/// opened later gets its number and the texts that go there. A file that would grow beyond the limit for files is an
/// error of the write, not a signal.
void prepare_process() noexcept;

/// Has the C library read the time zone now. Without memory for it the C library takes another zone, without a word and
/// for as long as the process lives; the process ends then, as where memory runs out. Returns 0, or the errno of what
/// kept it from reading the zone's file, with which it is the same.
int read_time_zone() noexcept;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_PROCESS_START_H
