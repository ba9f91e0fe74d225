#ifndef QZLOG_LINES_LEVEL_NAME_H
#define QZLOG_LINES_LEVEL_NAME_H

#include <string_view>

namespace qzlog {

/// What the levels 0 to 9 are called. One above, which no entry has, is called as 9 is.
constexpr std::string_view level_name(unsigned level) {
  constexpr std::string_view kNames[] = {"debug",   "debug",   "info",  "info",     "notice",
                                         "warning", "warning", "error", "critical", "alert"};
  return kNames[level < 9 ? level : 9];
}

/// The characters of the longest of them.
constexpr unsigned kLongestLevelName = 8;

}  // namespace qzlog

#endif  // QZLOG_LINES_LEVEL_NAME_H
