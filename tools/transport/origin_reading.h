#ifndef QZLOG_TOOLS_TRANSPORT_ORIGIN_READING_H
#define QZLOG_TOOLS_TRANSPORT_ORIGIN_READING_H

#include <functional>
#include <string>
#include <vector>

#include "tools/logs/journal_log.h"
#include "tools/logs/log_reading.h"

namespace qzlog_tool {

/// Reads the entries of a journal; `follow`: those that come, too, until the process is ended. False when it cannot be
/// read.
bool read_journal(const JournalAddress& address, bool follow, const LogReading& reading);

/// Reads the entries in files with messages of syslog, "-" being standard input. `tell` gets a line for each file that
/// says how many messages had none, if any had. False when one cannot be opened or read.
bool read_syslog(const std::vector<std::string>& files, const LogReading& reading,
                 const std::function<void(const std::string&)>& tell);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_ORIGIN_READING_H
