#include "tools/report/text_table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "tools/compiler/text/line_cut.h"

namespace qzlog_compiler {
namespace {

struct Column {
  bool flush_right = false;
  std::size_t width = 0;

  void fit(const std::string& cell, std::size_t widest) {
    const std::size_t cell_width = column_count(cell);
    if (cell_width <= widest) width = std::max(width, cell_width);
  }
};

std::vector<Column> take_columns(TextRow& titles) {
  std::vector<Column> columns;
  for (std::string& title : titles) {
    const bool flush_right = title.starts_with('>');
    if (flush_right) title.erase(0, 1);
    columns.push_back({flush_right, column_count(title)});
  }
  return columns;
}

std::string line_of(const TextRow& row, const std::vector<Column>& columns, std::size_t indent) {
  std::string line(indent, ' ');
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::size_t width = columns[i].width;
    const std::string padding(width - std::min(width, column_count(row[i])), ' ');
    line += columns[i].flush_right ? padding + row[i] : row[i] + padding;
    line += "  ";
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

void write_text_table(const TextTable& table, std::size_t indent, std::size_t columns, std::ostream& out) {
  if (table.row_count == 0) return;
  TextRow titles = table.titles;
  std::vector<Column> fitted = take_columns(titles);
  for (std::size_t i = 0; i < table.row_count; ++i) {
    const TextRow row = table.row(i);
    for (std::size_t cell = 0; cell < row.size(); ++cell) fitted[cell].fit(row[cell], table.widest_column);
  }
  const bool has_titles = std::any_of(titles.begin(), titles.end(), [](const auto& title) { return !title.empty(); });
  if (has_titles) out << cut_line(line_of(titles, fitted, indent), columns) << '\n';
  for (std::size_t i = 0; i < table.row_count; ++i) {
    out << cut_line(line_of(table.row(i), fitted, indent), columns) << '\n';
  }
}

}  // namespace qzlog_compiler
