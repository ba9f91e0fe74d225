#ifndef QZLOG_TOOLS_SHOWN_COLUMN_PRESENTATIONS_H
#define QZLOG_TOOLS_SHOWN_COLUMN_PRESENTATIONS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/shown/cell_text.h"
#include "tools/shown/presentation.h"
#include "tools/shown/shown_field.h"

namespace qzlog_tool {

/// The columns of a table: names of fields and attributes with commas between. Throws CommandError (cannot run) with
/// the place and, where one is near, a suggestion.
std::vector<FieldChoice> read_columns(std::string_view names, const ShownEvents& events);

// What the arguments below refer to has to outlive the presentations.

/// Values with commas between, as RFC 4180 has them: lines end with CR LF, values with quotes, commas and line breaks
/// stand in quotes. What the line does not have is empty. Values stand as they are, whatever a spreadsheet makes of
/// them.
class CsvPresentation : public Presentation {
 public:
  CsvPresentation(std::vector<FieldChoice> columns, const ShownEvents& events, ShownTimes& times)
      : columns_(std::move(columns)), values_(events, times) {}

  bool shows_message() const override;
  void append_heading(std::string& out) override;
  std::size_t append(const ShownLine& shown, std::string& out) override;

 private:
  std::vector<FieldChoice> columns_;
  FieldValues values_;
  std::string value_;
};

/// Values under titles. How wide a column is follows from the definitions, so that a line is shown when it comes: a
/// value that is longer moves the rest of its line; texts are cut instead where the place has a width, and so are
/// lines. Numbers stand on the right.
class TablePresentation : public Presentation {
 public:
  TablePresentation(std::vector<FieldChoice> columns, const ShownPlace& place, const ShownEvents& events,
                    ShownTimes& times);

  bool shows_message() const override;
  void append_heading(std::string& out) override;
  std::size_t append(const ShownLine& shown, std::string& out) override;

  /// The names of columns that the place has no room for, with commas between; "" where it has them all.
  const std::string& left_out() const { return left_out_; }

 private:
  struct Column {
    FieldChoice choice;
    CellLayout layout;
    CellLayout title;
    bool is_text = false;
    std::size_t least = 0;  ///< as narrow as it can be
  };

  void fit(std::size_t columns);
  void leave_out(std::size_t columns);
  bool narrow_widest(bool texts);
  void cut_texts();
  void append_row_cell(std::size_t column, std::string_view value, const CellLayout& layout, std::string& out);
  std::size_t append_row(std::string& out);

  std::vector<Column> columns_;
  std::string left_out_;
  ShownPlace place_;
  FieldValues values_;
  std::string value_;
  std::string safe_;
  std::string row_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_COLUMN_PRESENTATIONS_H
