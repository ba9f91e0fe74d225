#ifndef QZLOG_TOOLS_SYSLOG_SYSLOG_ENTRY_H
#define QZLOG_TOOLS_SYSLOG_SYSLOG_ENTRY_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// What a message of syslog has of an entry.
enum class SyslogFound {
  kLine,     ///< its line
  kOmitted,  ///< it was too long for the message
  kBroken,   ///< structured data of a qzlog sink, which are not whole
  kNothing,  ///< it is no message of a qzlog sink
};

/// Looks for the line of the entry in a message, without its line feed, as a qz_LOG_SyslogSink sent it and servers of
/// syslog pass it on or write it to files: as RFC 5424 has it, with or without the priority in front; or with the
/// structured data at its end, whatever stands before. The case of the parameter's name and the order of parameters do
/// not matter. `line` becomes the line, and is of no use when there is none.
SyslogFound find_syslog_entry(std::string_view message, std::string& line);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSLOG_SYSLOG_ENTRY_H
