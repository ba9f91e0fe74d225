#ifndef QZLOG_SINKS_SYSLOG_SEVERITY_H
#define QZLOG_SINKS_SYSLOG_SEVERITY_H

namespace qzlog {

/// What syslog and journald call severity or priority, where 0 is the most important, by level, where 9 is: 7 debug, 6
/// informational, 5 notice, 4 warning, 3 error, 2 critical, 1 alert. A level above 9, which no entry has, counts as 9.
constexpr unsigned syslog_severity(unsigned level) {
  constexpr unsigned char kSeverities[] = {7, 7, 6, 6, 5, 4, 4, 3, 2, 1};
  return kSeverities[level < 9 ? level : 9];
}

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_SEVERITY_H
