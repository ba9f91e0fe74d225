#ifndef QZLOG_TOOLS_RENDER_HELD_ERRORS_H
#define QZLOG_TOOLS_RENDER_HELD_ERRORS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/logs/line_reporter.h"
#include "tools/report/finding.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// What is wrong with a line of a block.
struct HeldError {
  std::uint64_t number;
  std::string line;
  std::uint64_t byte;  ///< of the line, as in ErrorLine
  qzlog_compiler::AnyRule rule;
  std::string text;
  std::size_t output_bytes;  ///< of the messages that go before it
};

/// Keeps what is reported of lines, with its place among the messages of an output in memory.
class HeldErrors : public LineReporter {
 public:
  /// `output` has to outlive this object.
  explicit HeldErrors(BufferedOutput& output) : LineReporter(output), output_(output) {}

  void report(const ErrorLine& line, qzlog_compiler::AnyRule rule, const std::string& text) override {
    errors_.push_back({line.number, std::string(line.text), line.byte, rule, text, output_.held_bytes()});
  }
  /// Exchanges what is kept for nothing.
  void take(std::vector<HeldError>& errors) {
    errors.clear();
    errors_.swap(errors);
  }

 private:
  const BufferedOutput& output_;
  std::vector<HeldError> errors_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_HELD_ERRORS_H
