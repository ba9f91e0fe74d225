#include "tools/manual/environment_rows.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

constexpr std::size_t kColumns = 4;
constexpr std::string_view kLibrary = "the library";

}  // namespace

bool EnvironmentRow::is_read_by(std::string_view command) const {
  const std::vector<MarkdownSpan> spans = parse_spans(readers);
  return std::any_of(spans.begin(), spans.end(), [command](const MarkdownSpan& span) {
    return span.style == MarkdownSpan::Style::kCode && (command == span.text || command.starts_with(span.text + ' '));
  });
}

bool EnvironmentRow::is_read_by_library() const { return readers.starts_with(kLibrary); }

std::vector<EnvironmentRow> read_environment(const std::vector<MarkdownBlock>& page) {
  std::vector<EnvironmentRow> rows;
  for (const MarkdownBlock& block : page) {
    if (block.rows.empty() || block.rows.front().front() != "variable") continue;
    for (std::size_t i = 1; i < block.rows.size(); ++i) {
      std::vector<std::string> cells = block.rows[i];
      cells.resize(kColumns);
      rows.push_back({cells[0], cells[1], cells[2], cells[3]});
    }
  }
  return rows;
}

}  // namespace qzlog_tool
