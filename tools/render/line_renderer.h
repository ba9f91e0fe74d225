#ifndef QZLOG_TOOLS_RENDER_LINE_RENDERER_H
#define QZLOG_TOOLS_RENDER_LINE_RENDERER_H

#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/options/line_code_page.h"

namespace qzlog_tool {

/// Makes readable messages from lines of entries.
class LineRenderer {
 public:
  /// Messages are converted to `code_page`, which has to outlive this object; null writes them as the library returns
  /// them.
  explicit LineRenderer(const LineCodePage* code_page) : code_page_(code_page) {}

  /// The message, valid until the next call. Throws EntryError for an entry that has none.
  std::string_view render(const qz_LOG_EntryLine& line);
  /// What a line says that tells of entries that were lost or held back, valid as long.
  std::string_view tell_loss(const qz_LOG_EntryLine& line);

 private:
  const LineCodePage* code_page_;
  std::string message_;
  std::string converted_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LINE_RENDERER_H
