#ifndef QZLOG_SINKS_SYSLOG_FACILITY_H
#define QZLOG_SINKS_SYSLOG_FACILITY_H

#include <string_view>

namespace qzlog {

/// The names of syslog's facilities, each at its number.
inline constexpr std::string_view kSyslogFacilities[] = {"kern",   "user",   "mail",   "daemon", "auth",     "syslog",
                                                         "lpr",    "news",   "uucp",   "cron",   "authpriv", "ftp",
                                                         "ntp",    "audit",  "alert",  "clock",  "local0",   "local1",
                                                         "local2", "local3", "local4", "local5", "local6",   "local7"};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_FACILITY_H
