#ifndef QZLOG_TOOLS_LOGS_WRITTEN_MOMENT_H
#define QZLOG_TOOLS_LOGS_WRITTEN_MOMENT_H

#include <optional>

namespace qzlog_tool {

/// The moment of a text as lines have it (RFC 3339), or with GMT behind it, in seconds since 1970-01-01 00:00:00 GMT; a
/// fraction is dropped. Nothing for a text that names no moment, as one without a zone.
std::optional<long long> written_moment(const char* text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_WRITTEN_MOMENT_H
