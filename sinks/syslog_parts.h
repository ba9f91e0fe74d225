#ifndef QZLOG_SINKS_SYSLOG_PARTS_H
#define QZLOG_SINKS_SYSLOG_PARTS_H

#include <cstddef>
#include <string>
#include <vector>

#include "lines/line_writer.h"
#include "qzlog/logentry.h"
#include "sinks/loss_table.h"

namespace qzlog {

/// What of a message of syslog follows from its entry alone, and the memory that it takes, to be used again.
struct SyslogParts {
  unsigned id = 0;
  unsigned level = 0;
  std::string event;                        ///< its name, "-" without one
  std::string entry;                        ///< its line behind the head (LineEnvelope), as it stands in a parameter
  std::string parameters;                   ///< of its attributes: ` Name="vol1" Free="0"`
  std::vector<std::size_t> parameter_ends;  ///< where they end in it
  std::string text;                         ///< the readable message, in UTF-8 and on one line
  bool is_rendered = true;                  ///< false: the text says why not

  /// Memory for making them.
  std::string line;
  std::string key;
  std::string value;
  std::string message;

  void clear();
};

enum class SyslogData { kEntry, kNone };

/// Throws what making a line and a message throw.
void make_syslog_parts(const qz_LOG_LogEntry& entry, const MessageChoice& choice, SyslogData data, SyslogParts& parts);

/// Of a message that tells of entries which are not there. std::bad_alloc.
void make_syslog_parts(ToldOf kind, const LossTable::Row& row, SyslogData data, SyslogParts& parts);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_PARTS_H
