#ifndef QZLOG_TOOLS_RENDER_LINE_ERRORS_H
#define QZLOG_TOOLS_RENDER_LINE_ERRORS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/render/entry_error.h"
#include "tools/report/finding.h"
#include "tools/system/buffered_output.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

/// A line of entries as errors show it.
struct ErrorLine {
  std::string_view file;
  std::uint64_t number;
  std::string_view text;

  static ErrorLine of(const qz_LOG_EntryLine& line) {
    return {line.GetFile(), line.GetLine(), {line.GetSource(), line.GetSourceLength()}};
  }
};

/// Says on stderr what is wrong with lines and files, behind the messages before it.
class LineErrors {
 public:
  /// What the arguments refer to has to outlive this object.
  LineErrors(BufferedOutput& output, ProgressLine& progress) : output_(output), progress_(progress) {}

  void report(const ErrorLine& line, qzlog_compiler::AnyRule rule, const std::string& text);
  /// What is wrong with a file, or not as expected.
  void report(qzlog_compiler::Severity severity, const std::string& text);

  /// How many lines were reported.
  std::uint64_t count() const noexcept { return count_; }

 private:
  void begin();

  BufferedOutput& output_;
  ProgressLine& progress_;
  const bool colour_ = stderr_has_colour();
  std::uint64_t count_ = 0;
};

/// The row of one of the reader's rules.
const qzlog_compiler::RuleInfo& reader_rule(std::string_view name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LINE_ERRORS_H
