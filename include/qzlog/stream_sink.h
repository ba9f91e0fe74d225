#ifndef QZLOG_STREAM_SINK_H
#define QZLOG_STREAM_SINK_H

#include <memory>
#include <string>

#include "qzlog/export.h"
#include "qzlog/sink.h"

namespace qzlog {
class LineSink;
}  // namespace qzlog

/// What a qz_LOG_StreamSink is made with.
struct qz_LOG_StreamSinkSettings {
  enum Form {
    kJson,  ///< JSON Lines, see qz_LOG_LogEntry::ToJson
    kText   ///< rendered messages, see qz_LOG_TextSink
  };

  Form form = kJson;
  /// Of kText, see qz_LOG_TextSinkSettings.
  std::string format = "{time} {level} {id} {name} [{pid}:{tid}] {message}";
  /// Lines on a terminal are coloured by their level, unless TERM is unset or "dumb" or NO_COLOR is set and not empty.
  bool colour = true;
  /// That Write waits for a reader who does not read: 0 to 60000. While he does not, only the first line is waited for.
  unsigned longest_wait_milliseconds = 1000;
};

/// Entries as lines to an open descriptor: standard output, a pipe, a socket, a terminal, a file.
///
///   qz_LOG_StreamSinkSettings settings;
///   settings.form = qz_LOG_StreamSinkSettings::kText;
///   qz_LOG_StreamSink sink(STDERR_FILENO, false, settings);
///   sink.Write(entry);
///
/// Each line is one write, so that lines of several threads are never mixed, nor, up to PIPE_BUF bytes in a pipe, those
/// of several processes. A line that was written in part (a full disk, a reader who stopped) and not completed in time
/// has failed; a line break ends it before the next one. What failed is told of in a line of its own as soon as lines
/// are taken again: {"lost":[{"id":1001,"level":3,"count":12,"since":"2026-11-21T08:15:30.000000000Z"}]}, or as text in
/// the place of the message.
///
/// A pipe without a reader makes Write fail and is no signal to the program, whatever it does with SIGPIPE. A terminal
/// that is stopped, and a pipe that others fill at the same moment, may be waited for longer.
class QZLOG_EXPORT qz_LOG_StreamSink : public qz_LOG_Sink {
 public:
  /// The descriptor stays open as long as the sink lives, and is closed with it when it is `owned`. Throws
  /// QZX_logging_illegal_argument, naming the setting ("descriptor: 7 is not open for writing"), and QZX_memory_alloc;
  /// the descriptor then stays the caller's.
  qz_LOG_StreamSink(int descriptor, bool owned,
                    const qz_LOG_StreamSinkSettings& settings = qz_LOG_StreamSinkSettings());
  ~qz_LOG_StreamSink() override;

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  const std::unique_ptr<qzlog::LineSink> lines_;
};

#endif  // QZLOG_STREAM_SINK_H
