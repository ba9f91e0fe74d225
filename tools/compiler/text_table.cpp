#include "tools/compiler/text_table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "tools/compiler/ldf_text.h"

namespace qzlog_compiler {
namespace {

/// One text of a megabyte must not widen every row.
constexpr std::size_t kWidestColumn = 40;

}  // namespace

TextTable::TextTable(std::vector<std::string> titles) {
  for (std::string& title : titles) {
    flush_right_.push_back(title.front() == '>');
    if (flush_right_.back()) title.erase(0, 1);
  }
  rows_.push_back(std::move(titles));
}

void TextTable::add_row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

void TextTable::write(std::size_t indent, std::size_t columns, std::ostream& out) const {
  std::vector<std::size_t> widths(flush_right_.size(), 0);
  for (const std::vector<std::string>& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t width = character_count(row[i]);
      if (width <= kWidestColumn) widths[i] = std::max(widths[i], width);
    }
  }
  for (const std::vector<std::string>& row : rows_) {
    std::string line(indent, ' ');
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - std::min(widths[i], character_count(row[i])), ' ');
      line += flush_right_[i] ? padding + row[i] : row[i] + padding;
      line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << cut_line(std::move(line), columns) << '\n';
  }
}

}  // namespace qzlog_compiler
