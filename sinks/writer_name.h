#ifndef QZLOG_SINKS_WRITER_NAME_H
#define QZLOG_SINKS_WRITER_NAME_H

#include <string>

namespace qzlog {

/// The name of this machine with letters, digits, "-", "." and "_"; "localhost" where it has none. std::bad_alloc.
std::string host_name();

/// A name that no writer of lines has had: HOST/PID/START, where START are nanoseconds since 1970, later for each
/// writer of the process. std::bad_alloc.
std::string new_writer_name();

/// START of such a name.
unsigned long long writer_start(const std::string& writer);

}  // namespace qzlog

#endif  // QZLOG_SINKS_WRITER_NAME_H
