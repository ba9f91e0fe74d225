#ifndef QZLOG_TOOLS_RENDER_LINE_RENDERER_H
#define QZLOG_TOOLS_RENDER_LINE_RENDERER_H

#include <optional>
#include <string>
#include <string_view>

#include "qzlog/logentry.h"
#include "tools/render/entry_builder.h"
#include "tools/render/json_entry.h"
#include "tools/render/render_filter.h"

namespace qzlog_tool {

/// In which code page texts go into the library and come out of it.
struct RenderCodePages {
  const LineCodePage* attributes = nullptr;  ///< null: UTF-8
  const LineCodePage* messages = nullptr;    ///< null: messages are written as the library returns them
};

/// Makes a readable message from a line of JSON.
class LineRenderer {
 public:
  /// A null filter lets every entry through. What the arguments point to has to outlive this object.
  LineRenderer(const EntryNames* names, const RenderCodePages& code_pages, const RenderFilter* filter)
      : builder_(names, code_pages.attributes), message_code_page_(code_pages.messages), filter_(filter) {}

  /// The message, valid until the next call; nothing for an entry that the filter refuses.
  /// LineReader::kPaddingBytes readable bytes have to follow `line`. Throws EntryError for a line that has none.
  std::optional<std::string_view> render(std::string_view line);

  /// The entry of the last message.
  const qz_LOG_LogEntry& entry() const noexcept { return *entry_; }
  /// Whether its line gave a time.
  bool has_time() const noexcept { return has_time_; }

 private:
  JsonEntryParser parser_;
  EntryBuilder builder_;
  const LineCodePage* message_code_page_;
  const RenderFilter* filter_;
  const qz_LOG_LogEntry* entry_ = nullptr;  // the builder's
  bool has_time_ = false;
  std::string message_;
  std::string converted_;
};

/// True for a line of nothing but blanks, tabs and a carriage return.
inline bool is_blank(std::string_view line) {
  return line.empty() || (line.front() <= ' ' && line.find_first_not_of(" \t\r") == std::string_view::npos);
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LINE_RENDERER_H
