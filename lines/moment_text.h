#ifndef QZLOG_LINES_MOMENT_TEXT_H
#define QZLOG_LINES_MOMENT_TEXT_H

#include <cstddef>

namespace qzlog {

/// The length of "2026-11-21T08:15:30".
constexpr std::size_t kMomentText = 19;

/// Writes a moment, in seconds since 1970-01-01 00:00:00 GMT, as RFC 3339 does, up to the fraction and the zone, and
/// returns the end; no terminator. Moments outside the years 0 to 9999, which have no such text, become the first or
/// the last of these.
char* write_moment(char* target, long long unix_seconds);

}  // namespace qzlog

#endif  // QZLOG_LINES_MOMENT_TEXT_H
