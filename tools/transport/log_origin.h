#ifndef QZLOG_TOOLS_TRANSPORT_LOG_ORIGIN_H
#define QZLOG_TOOLS_TRANSPORT_LOG_ORIGIN_H

#include <optional>
#include <string>

#include "ship/transport.h"
#include "tools/choice/reader_moment.h"
#include "tools/logs/journal_log.h"
#include "tools/transport/transport_url.h"

namespace qzlog_tool {

/// Where entries are read from.
struct LogOrigin {
  enum class Kind {
    kFiles,
    kSyslog,   ///< files with messages of syslog
    kJournal,  ///< of the system
    kReceiver
  };

  Kind kind = Kind::kFiles;
  std::optional<JournalAddress> journal = {};
  std::optional<TransportUrl> url = {};

  /// The operands of the command are files.
  bool has_files() const { return kind == Kind::kFiles || kind == Kind::kSyslog; }
};

/// Of what --from says; empty: files. Throws CommandError (cannot run) for what is no such place.
LogOrigin log_origin(const std::string& from);

/// The forms that a start is written in, for hints and help.
inline constexpr const char* kStartForms = "beginning, now, sequence=N or a time, such as 2026-11-21T08:15:30Z or -2h";

/// Where reading begins: "beginning" (so does an empty text), "now", "sequence=N", or a time as find_moment takes it.
/// Nothing for another text. Group and following are to be added.
std::optional<qzlog_start> parse_start(const std::string& text, const ReaderClock& clock);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_LOG_ORIGIN_H
