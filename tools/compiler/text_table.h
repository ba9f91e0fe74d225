#ifndef QZLOG_TOOLS_COMPILER_TEXT_TABLE_H
#define QZLOG_TOOLS_COMPILER_TEXT_TABLE_H

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace qzlog_compiler {

/// Rows in aligned columns. A title that begins with '>' makes its column flush right.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> titles);

  /// As many cells as there are titles, UTF-8 without control characters.
  void add_row(std::vector<std::string> cells);
  bool empty() const { return rows_.size() < 2; }
  /// Each line begins with `indent` blanks and is cut to `columns` characters, 0 for not at all. A cell of unusual
  /// length moves its own row only.
  void write(std::size_t indent, std::size_t columns, std::ostream& out) const;

 private:
  std::vector<bool> flush_right_;
  std::vector<std::vector<std::string>> rows_;  ///< the first one are the titles
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_TABLE_H
