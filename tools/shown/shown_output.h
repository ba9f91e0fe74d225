#ifndef QZLOG_TOOLS_SHOWN_SHOWN_OUTPUT_H
#define QZLOG_TOOLS_SHOWN_SHOWN_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/options/line_code_page.h"
#include "tools/shown/presentation.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// A presentation on its way out: in colour, and in the reader's code page.
class ShownOutput {
 public:
  /// Null for UTF-8. What the arguments refer to has to outlive it.
  ShownOutput(Presentation& presentation, BufferedOutput& output, bool colour, const LineCodePage* code_page)
      : presentation_(presentation), output_(output), colour_(colour), code_page_(code_page) {}

  bool shows_message() const { return presentation_.shows_message(); }

  /// Once, before the first line. Throws as below.
  void write_heading();
  /// Throws what BufferedOutput throws, and CommandError (cannot run) for a line that cannot be converted.
  void write(const ShownLine& shown);

 private:
  /// Valid until the next call.
  std::string_view in_code_page(std::string_view text);

  Presentation& presentation_;
  BufferedOutput& output_;
  bool colour_;
  const LineCodePage* code_page_;
  std::string text_;
  std::string converted_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOWN_OUTPUT_H
