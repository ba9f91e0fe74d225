#ifndef QZLOG_TOOLS_SHOWN_LINE_FORMAT_H
#define QZLOG_TOOLS_SHOWN_LINE_FORMAT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/shown/cell_text.h"
#include "tools/shown/field_values.h"
#include "tools/shown/shown_field.h"

namespace qzlog_tool {

/// How a line is put together: "{time} {level_name:<8} {name} {message:.60}". A field in braces may be followed by a
/// colon and its layout: <, > or ^ for left, right or centred, how many columns it takes at least, and behind a point
/// how many at most. "{{" and "}}" are braces.
class LineFormat {
 public:
  static constexpr std::size_t kMostBytes = 4096;
  static constexpr std::size_t kMostColumns = 10000;

  /// Throws CommandError (cannot run) with the place and, where one is near, a suggestion.
  LineFormat(std::string_view format, const ShownEvents& events);

  /// Appends the line without its end; fields that the line does not have as "-". With `for_terminal` columns are
  /// counted of what a terminal gets.
  void append(const ShownLine& shown, bool for_terminal, FieldValues& values, std::string& out);

  bool shows_message() const;
  /// What there is to say of fields that hide attributes of their names, and of a format without a field.
  std::vector<std::string> remarks() const;

 private:
  class Parts;
  /// A text and the field behind it.
  struct Piece {
    std::string text;
    FieldChoice choice;
    CellLayout layout;
    bool has_field = false;
    bool is_safe = false;   ///< values have no line break
    bool is_ascii = false;  ///< and each of their bytes takes a column
  };

  void append_value(const Piece& piece, const ShownLine& shown, bool for_terminal, FieldValues& values,
                    std::string& out);

  std::vector<Piece> pieces_;
  std::string value_;
  std::string safe_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_LINE_FORMAT_H
