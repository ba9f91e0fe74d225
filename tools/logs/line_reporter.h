#ifndef QZLOG_TOOLS_LOGS_LINE_REPORTER_H
#define QZLOG_TOOLS_LOGS_LINE_REPORTER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/logs/entry_error.h"
#include "tools/report/finding.h"
#include "tools/system/buffered_output.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

/// A line of entries as errors show it, and the place in it that they are about.
struct ErrorLine {
  std::string_view file;
  std::uint64_t number;
  std::string_view text;
  std::uint64_t byte = 0;  ///< from 1; 0 where the line as a whole is meant

  static ErrorLine of(const qz_LOG_EntryLine& line) {
    return {line.GetFile(), line.GetLine(), {line.GetSource(), line.GetSourceLength()}};
  }
  static ErrorLine of(const qz_LOG_LineError& error) {
    return {error.file, error.line, {error.source, error.source_length}, error.column};
  }

  qzlog_compiler::TextPlace place() const;
};

/// What is said on stderr while lines are read: how far that is, what is wrong with lines and files, and what came of
/// them; behind the messages that go to an output before it.
class LineReporter {
 public:
  /// `output` has to outlive this object.
  explicit LineReporter(BufferedOutput& output) : output_(output) {}
  LineReporter(const LineReporter&) = delete;
  LineReporter& operator=(const LineReporter&) = delete;
  virtual ~LineReporter();

  /// So many lines were read.
  void update(std::uint64_t lines) { progress_.update(lines); }
  /// What is wrong with a line.
  virtual void report(const ErrorLine& line, qzlog_compiler::AnyRule rule, const std::string& text);
  /// What is wrong with a file, or not as expected.
  void report(qzlog_compiler::Severity severity, const std::string& text);
  /// A line about all that was read.
  void summarize(const std::string& text);

  /// How many lines were reported.
  std::uint64_t count() const noexcept { return count_; }

 private:
  void begin();

  BufferedOutput& output_;
  ProgressLine progress_{"lines"};
  const bool colour_ = stderr_has_colour();
  std::uint64_t count_ = 0;
};

/// The row of one of the reader's rules.
const qzlog_compiler::RuleInfo& reader_rule(std::string_view name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LINE_REPORTER_H
