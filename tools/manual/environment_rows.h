#ifndef QZLOG_TOOLS_MANUAL_ENVIRONMENT_ROWS_H
#define QZLOG_TOOLS_MANUAL_ENVIRONMENT_ROWS_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/markdown.h"

namespace qzlog_tool {

/// Environment variables, as a row of docs/environment.md tells them. All texts are Markdown.
struct EnvironmentRow {
  std::string variables;
  std::string readers;
  std::string when;
  std::string effect;

  /// Whether it names the command, or one that it belongs to: "qzlog" stands for all.
  bool is_read_by(std::string_view command) const;
  bool is_read_by_library() const;
};

/// Of all tables of the page whose first column is "variable".
std::vector<EnvironmentRow> read_environment(const std::vector<MarkdownBlock>& page);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_ENVIRONMENT_ROWS_H
