#ifndef QZLOG_TOOLS_LOGS_JOURNAL_LOG_H
#define QZLOG_TOOLS_LOGS_JOURNAL_LOG_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/logs/journal_export.h"
#include "tools/system/program_output.h"

namespace qzlog_tool {

/// A journal of the system: "journal", or "journal:NAMESPACE".
struct JournalAddress {
  std::string name_space;  ///< of journald; "" is the system's own

  /// As users write it.
  std::string text() const { return name_space.empty() ? "journal" : "journal:" + name_space; }
};

/// None for what is no such address. Throws CommandError (cannot run) for one whose namespace cannot be.
std::optional<JournalAddress> journal_address(std::string_view text);

/// The lines of the entries that programs have written to a journal (qz_LOG_JournalSink), in the order in which the
/// journal has them, read by journalctl:
///
///   JournalLog log({"storage"});
///   qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(log, "journal:storage");
class JournalLog : public qz_LOG_ByteSource {
 public:
  enum class End {
    kNow,   ///< with the last entry that is there
    kNever  ///< entries that come are waited for
  };

  /// Throws CommandError (cannot run) when journalctl cannot be started, or there is no journal of the namespace.
  explicit JournalLog(const JournalAddress& address, End end = End::kNow);

  /// Throws UnreadableInput, with what journalctl says, when it fails.
  std::size_t Read(char* buffer, std::size_t size) override;

 private:
  ProgramOutput program_;
  JournalExport export_;
  std::string lines_;      // what was read of them,
  std::size_t given_ = 0;  // and how much of that was handed out
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_JOURNAL_LOG_H
