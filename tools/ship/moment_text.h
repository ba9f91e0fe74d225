#ifndef QZLOG_TOOLS_SHIP_MOMENT_TEXT_H
#define QZLOG_TOOLS_SHIP_MOMENT_TEXT_H

#include <chrono>
#include <string>

namespace qzlog_tool {

/// RFC 3339 in UTC, with milliseconds.
std::string moment_text(std::chrono::system_clock::time_point moment);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_MOMENT_TEXT_H
