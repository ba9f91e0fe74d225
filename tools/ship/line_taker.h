#ifndef QZLOG_TOOLS_SHIP_LINE_TAKER_H
#define QZLOG_TOOLS_SHIP_LINE_TAKER_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/ship/file_progress.h"

namespace qzlog_tool {

/// Whether a line is to be sent.
struct LineVerdict {
  bool is_wanted = true;
  std::string fault = {};  ///< not empty: why nobody can tell
};

/// Takes what is read from logs.
class LineTaker {
 public:
  virtual ~LineTaker() = default;

  /// Whether the lines of a block are wanted, one for each line feed; empty: all are. Each line is asked about once.
  virtual std::vector<LineVerdict> judge(std::string_view block) = 0;
  /// A line without its end, not blank. False where it takes no more now: the line is then given again.
  virtual bool take(std::string_view line, const LineVerdict& verdict, const ReadLine& at) = 0;
  /// Told of what is no line: it is longer than may be.
  virtual bool take_long_line(const ReadLine& at) = 0;
  /// Asked within a line that is read for long: true where the command is to end.
  virtual bool must_end() { return false; }
  /// Told that something is not as expected.
  virtual void warn(const std::string& text) = 0;
  /// Told that something cannot be read now; once for each text.
  virtual void complain(const std::string& text) = 0;
  /// Told that files of a series are gone before they were read.
  virtual void miss(const std::string& text) = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_LINE_TAKER_H
