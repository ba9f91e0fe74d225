#ifndef QZLOG_TOOLS_SHOWN_CELL_TEXT_H
#define QZLOG_TOOLS_SHOWN_CELL_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_tool {

enum class CellAlignment : std::uint8_t { kLeft, kRight, kCentre };

/// How much room a value gets, in columns of a terminal: East Asian wide characters take two, combining and other
/// characters without a width none.
struct CellLayout {
  static constexpr std::size_t kAnyColumns = ~std::size_t{0};

  CellAlignment alignment = CellAlignment::kLeft;
  std::size_t columns = 0;                 ///< filled up with blanks to these
  std::size_t most_columns = kAnyColumns;  ///< cut to these, with an ellipsis at the end

  bool is_plain() const { return columns == 0 && most_columns == kAnyColumns; }
};

/// How values are made safe for the line that they stand on.
enum class CellSafety {
  kLine,      ///< line feeds and carriage returns become "\n" and "\r"
  kTerminal,  ///< also what would command a terminal, and tabs, whose width nobody knows
};

/// Appends a value of any bytes. A byte that is not UTF-8 takes one column.
void append_safely(std::string_view value, CellSafety safety, std::string& out);

/// Appends a value that is safe, laid out.
void append_cell(std::string_view value, const CellLayout& layout, std::string& out);

/// Lays out what stands in `out` from `begin` on, which is printable ASCII.
void lay_out_ascii(const CellLayout& layout, std::size_t begin, std::string& out);

/// The columns of a text of any bytes, which controls take none of.
std::size_t cell_columns(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_CELL_TEXT_H
