#ifndef QZLOG_SINKS_LEVEL_PRIORITY_H
#define QZLOG_SINKS_LEVEL_PRIORITY_H

namespace qzlog {

/// What the system's logs call a level: 7 is a debug message, 6 information, 5 a notice, 4 a warning, 3 an error, 2
/// critical, 1 an alert; see level_name(). Levels above 9, which no entry has, are as 9.
constexpr unsigned level_priority(unsigned level) {
  constexpr unsigned kPriorities[] = {7, 7, 6, 6, 5, 4, 4, 3, 2, 1};
  return kPriorities[level < 9 ? level : 9];
}

}  // namespace qzlog

#endif  // QZLOG_SINKS_LEVEL_PRIORITY_H
