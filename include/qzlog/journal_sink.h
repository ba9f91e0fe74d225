#ifndef QZLOG_JOURNAL_SINK_H
#define QZLOG_JOURNAL_SINK_H

#include <memory>
#include <string>

#include "qzlog/export.h"
#include "qzlog/sink.h"

namespace qzlog {
class JournalForm;
class LineSink;
}  // namespace qzlog

/// What a qz_LOG_JournalSink is made with.
struct qz_LOG_JournalSinkSettings {
  /// The product's name, by which journald's catalog tells its events from those of others; "": entries have no
  /// MESSAGE_ID. Without control characters.
  std::string product;
  /// Of journald, "" being the system's: up to 64 letters, digits and ":", "-", "_", ".", "@".
  std::string journal_namespace;
  /// Of journald, in place of that of the namespace: up to 107 bytes.
  std::string socket_path;
  /// That Write waits for journald when it does not read: 0 to 60000. While it does not, only the first entry is waited
  /// for.
  unsigned longest_wait_milliseconds = 1000;
};

/// Entries to the systemd journal, by journald's own protocol.
///
///   qz_LOG_JournalSinkSettings settings;
///   settings.product = "storage";
///   qz_LOG_JournalSink sink(settings);
///   sink.Write(entry);
///
///   $ journalctl QZLOG_NAME=DISK_FULL QZ_NAME=vol1
///
/// An entry has these fields:
///
///   QZLOG_ENTRY   its line of JSON, with writer, number and time as qz_LOG_FileSink gives them: what readers read back
///   MESSAGE       the readable message in UTF-8, in one line as qz_LOG_TextSink has it, rendered with the process's
///                 settings
///   PRIORITY      7 (debug) for the levels 0 and 1, 6 (info) for 2 and 3, 5 (notice) for 4, 4 (warning) for 5 and 6, 3
///                 (error) for 7, 2 (critical) for 8, 1 (alert) for 9
///   MESSAGE_ID    the first 128 bits of the SHA-256 of PRODUCT/ID, as hexadecimal digits
///   QZLOG_ID, QZLOG_NAME, QZLOG_LEVEL
///   QZ_NAME       for each attribute: its name in capital letters, with "_" for what is neither letter nor digit
///
/// What lines do not show of sensitive attributes no field shows. An entry goes in one datagram, a large one in a
/// sealed memory file. When journald is restarted the next entry finds it again. What journald did not take is told of,
/// as soon as it takes entries again, by a message whose QZLOG_ENTRY has the member "lost". What journald itself drops
/// (its RateLimitBurst=) it takes without a word to the sink.
///
/// A process made by fork may go on using the sink, as a writer of its own.
class QZLOG_EXPORT qz_LOG_JournalSink : public qz_LOG_Sink {
 public:
  /// Throws QZX_logging_illegal_argument, naming the setting ("journal_namespace: ..."),
  /// QZX_logging_file_operation_failed when nobody listens at the socket, and QZX_memory_alloc.
  explicit qz_LOG_JournalSink(const qz_LOG_JournalSinkSettings& settings = qz_LOG_JournalSinkSettings());
  ~qz_LOG_JournalSink() override;

  /// How many messages could not be rendered. Their entries count as written.
  unsigned long long GetRenderFailures() const noexcept;

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  std::unique_ptr<qzlog::LineSink> lines_;
  const qzlog::JournalForm* form_;  // of lines_
};

#endif  // QZLOG_JOURNAL_SINK_H
