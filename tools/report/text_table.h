#ifndef QZLOG_TOOLS_REPORT_TEXT_TABLE_H
#define QZLOG_TOOLS_REPORT_TEXT_TABLE_H

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <limits>
#include <string>
#include <vector>

namespace qzlog_compiler {

using TextRow = std::vector<std::string>;

/// One text of a megabyte must not widen every row.
inline constexpr std::size_t kWidestColumn = 40;
/// For columns whose texts are short, or last.
inline constexpr std::size_t kAnyWidth = std::numeric_limits<std::size_t>::max();

/// Rows in aligned columns. Each is made twice, so that memory holds one at a time.
struct TextTable {
  TextRow titles;  ///< one that begins with '>' makes its column flush right; when all are empty, no line shows them
  std::size_t row_count = 0;
  /// As many cells as there are titles, UTF-8 without control characters.
  std::function<TextRow(std::size_t row)> row;
  /// A cell of more characters moves its own row only.
  std::size_t widest_column = kWidestColumn;
};

/// Writes titles and rows, nothing where there are no rows. Each line begins with `indent` blanks and is cut to
/// `columns` characters, 0 for not at all.
void write_text_table(const TextTable& table, std::size_t indent, std::size_t columns, std::ostream& out);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_TEXT_TABLE_H
