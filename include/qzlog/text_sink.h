#ifndef QZLOG_TEXT_SINK_H
#define QZLOG_TEXT_SINK_H

#include <memory>
#include <string>

#include "qzlog/export.h"
#include "qzlog/file_sink.h"
#include "qzlog/sink.h"

namespace qzlog {
class LineSink;
class TextForm;
}  // namespace qzlog

/// What a qz_LOG_TextSink makes of an entry.
struct qz_LOG_TextSinkSettings {
  /// A line: texts and fields in braces; "{{" and "}}" are braces. There are
  ///   {time}        the entry's time, or that of writing when it has none: 2026-11-21T08:15:30Z
  ///   {time:local}  the same on the local clock: 2026-11-21 09:15:30
  ///   {written}     the time of writing: 2026-11-21T08:15:30.123456Z
  ///   {level}       0 to 9
  ///   {level:name}  debug (0, 1), info (2, 3), notice (4), warning (5, 6), error (7), critical (8), alert (9)
  ///   {id} {name}   the event's ID and its name, "-" where the definitions do not know it
  ///   {pid} {tid}   the process and the thread that write
  ///   {message}     the readable message, as qz_LOG_LogEntry::FormatMessage gives it
  /// Up to 1024 bytes without control characters.
  std::string format = "{time} {level} {id} {name} [{pid}:{tid}] {message}";
};

/// Entries as readable messages, one on a line, to a descriptor or to a file or series of files.
///
///   qz_LOG_FileSinkSettings file;
///   file.path = "/var/log/storage.txt";
///   qz_LOG_TextSinkSettings text;
///   text.format = "{time:local} {level:name}: {message}";
///   qz_LOG_TextSink sink(file, text);
///   sink.Write(entry);
///
/// Messages are rendered when they are written, with the process's settings, in its code page. Line breaks in them are
/// written as \n and \r, zero bytes as \0, and in UTF-8 other control characters but the tab as \x1B, so that no
/// message can pretend to be a line of its own or command a terminal. The line of a message that cannot be rendered
/// says so and why: "(this message cannot be rendered: REASON)".
class QZLOG_EXPORT qz_LOG_TextSink : public qz_LOG_Sink {
 public:
  /// To an open descriptor, as qz_LOG_StreamSink writes to it, with its default settings and exceptions. A format that
  /// cannot be throws QZX_logging_illegal_argument: "format: unknown field '{tine}' ... at character 1".
  qz_LOG_TextSink(int descriptor, bool owned, const qz_LOG_TextSinkSettings& settings = qz_LOG_TextSinkSettings());
  /// To files, with the guarantees and exceptions of qz_LOG_FileSink, but that kShared, the default, is kWrite: lines
  /// of text have no numbers by which a later open could tell which of them are in the file. `lost_event_id` has to be
  /// 0.
  explicit qz_LOG_TextSink(const qz_LOG_FileSinkSettings& file,
                           const qz_LOG_TextSinkSettings& settings = qz_LOG_TextSinkSettings());
  ~qz_LOG_TextSink() override;

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
  const qzlog::TextForm* form_;  // of lines_
  const unsigned closing_wait_;
};

#endif  // QZLOG_TEXT_SINK_H
