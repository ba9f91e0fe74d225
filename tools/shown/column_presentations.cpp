#include "tools/shown/column_presentations.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "lines/level_name.h"
#include "tools/options/option_error.h"
#include "tools/shown/csv_value.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kOption = "--columns";
constexpr std::string_view kNoValue = "-";
constexpr std::string_view kGap = "  ";
constexpr std::size_t kWidestName = 40;
constexpr std::size_t kWidestText = 24;
constexpr std::size_t kWidestMessage = 60;     // where something stands behind it
constexpr std::size_t kNarrowestMessage = 16;  // before other texts are made narrower
constexpr std::size_t kNarrowestColumn = 5;

bool has_message(const FieldChoice& choice) { return choice.field == ShownField::kMessage; }

bool is_number(qz_AttributeType type) { return type >= TypeUInt1 && type <= TypeFloat; }

/// Whether what stands in a column can be read when its end is cut off.
bool is_text(const FieldChoice& choice, const ShownEvents& events) {
  switch (choice.field) {
    case ShownField::kMessage:
    case ShownField::kSummary:
    case ShownField::kName:
    case ShownField::kWriter:
    case ShownField::kHost:
    case ShownField::kDefinitions:
    case ShownField::kFile:
      return true;
    case ShownField::kAttribute: {
      const qz_AttributeType type = events.type_of(choice.attribute);
      return type >= TypeChar32 && type <= TypeMBChar2K;
    }
    default:
      return false;
  }
}

/// The characters of the longest value of a type, as far as there is one.
std::size_t columns_of_type(qz_AttributeType type, ShownTimes& times) {
  switch (type) {
    case TypeBool:
      return 5;
    case TypeUInt1:
    case TypeSInt1:
      return 4;
    case TypeUInt2:
    case TypeSInt2:
      return 6;
    case TypeUInt4:
      return 10;
    case TypeSInt4:
      return 11;
    case TypeFloat:
      return 12;
    case TypeDate:
      return 10;
    case TypeTime:
      return 8;
    case TypeTimestamp:
      return times.columns();
    default:
      return kWidestText;
  }
}

std::size_t columns_of(const FieldChoice& choice, const ShownEvents& events, ShownTimes& times) {
  switch (choice.field) {
    case ShownField::kTime:
      return times.columns();
    case ShownField::kWritten:
      return times.columns_with_fraction();
    case ShownField::kLocalTime:
      return 19;
    case ShownField::kLevel:
      return 1;
    case ShownField::kLevelName:
      return qzlog::kLongestLevelName;
    case ShownField::kId:
      return events.widest_id();
    case ShownField::kName:
      return std::min(events.widest_name(), kWidestName);
    case ShownField::kMask:
      return 10;
    case ShownField::kPid:
    case ShownField::kLine:
    case ShownField::kSeq:
      return 8;
    case ShownField::kMessage:
    case ShownField::kSummary:
      return kWidestMessage;
    case ShownField::kAttribute:
      return columns_of_type(events.type_of(choice.attribute), times);
    default:
      return kWidestText;
  }
}

bool is_flush_right(const FieldChoice& choice, const ShownEvents& events) {
  switch (choice.field) {
    case ShownField::kLevel:
    case ShownField::kId:
    case ShownField::kPid:
    case ShownField::kSeq:
    case ShownField::kLine:
      return true;
    case ShownField::kAttribute:
      return is_number(events.type_of(choice.attribute));
    default:
      return false;
  }
}

}  // namespace

std::vector<FieldChoice> read_columns(std::string_view names, const ShownEvents& events) {
  std::vector<FieldChoice> columns;
  for (std::size_t at = 0; at <= names.size();) {
    const std::size_t end = std::min(names.find(',', at), names.size());
    const std::string_view name = names.substr(at, end - at);
    std::optional<FieldChoice> choice = find_field(name, events);
    if (!choice) {
      const UnknownField unknown = describe_unknown_field(name, events);
      refuse_option(kOption, names, at, name.empty() ? "a name is missing" : unknown.reason, unknown.hint);
    }
    columns.push_back(std::move(*choice));
    at = end + 1;
  }
  return columns;
}

bool CsvPresentation::shows_message() const { return std::any_of(columns_.begin(), columns_.end(), has_message); }

void CsvPresentation::append_heading(std::string& out) {
  for (const FieldChoice& column : columns_) {
    if (&column != &columns_.front()) out += ',';
    append_csv(column.name, out);
  }
  out += kCsvEnd;
}

std::size_t CsvPresentation::append(const ShownLine& shown, std::string& out) {
  const std::size_t begin = out.size();
  for (const FieldChoice& column : columns_) {
    if (&column != &columns_.front()) out += ',';
    if (has_message(column)) {
      append_csv(shown.message, out);
      continue;
    }
    value_.clear();
    values_.append(column, shown, value_);
    append_csv(value_, out);
  }
  // An empty line would be no record.
  if (out.size() == begin) out += "\"\"";
  out += kCsvEnd;
  return 0;
}

TablePresentation::TablePresentation(std::vector<FieldChoice> columns, const ShownPlace& place,
                                     const ShownEvents& events, ShownTimes& times)
    : place_(place), values_(events, times) {
  for (FieldChoice& choice : columns) {
    Column column;
    const std::size_t values = columns_of(choice, events, times);
    column.is_text = is_text(choice, events);
    column.layout.columns = std::max(values, cell_columns(choice.name));
    column.least = column.is_text ? std::min(kNarrowestColumn, column.layout.columns) : values;
    if (is_flush_right(choice, events)) column.layout.alignment = CellAlignment::kRight;
    column.choice = std::move(choice);
    columns_.push_back(std::move(column));
  }
  if (place.columns > 0) fit(place.columns);
  for (Column& column : columns_) column.title = column.layout;
  if (place.columns > 0) cut_texts();
  // Nothing stands behind the last column.
  Column& last = columns_.back();
  if (last.layout.alignment == CellAlignment::kLeft) last.layout.columns = last.title.columns = 0;
}

/// Gives the messages what is left. Where that is too little, texts become narrower, then the titles of what is none,
/// whose values stay whole.
void TablePresentation::fit(std::size_t columns) {
  leave_out(columns);
  std::size_t sum = kGap.size() * (columns_.size() - 1);
  for (Column& column : columns_) {
    if (has_message(column.choice)) column.layout.columns = kNarrowestMessage;
    sum += column.layout.columns;
  }
  while (sum > columns && (narrow_widest(true) || narrow_widest(false))) --sum;
  const auto message =
      std::find_if(columns_.begin(), columns_.end(), [](const Column& column) { return has_message(column.choice); });
  if (message != columns_.end() && sum < columns) message->layout.columns += columns - sum;
}

/// Leaves out the last columns that have no room even when they are narrow; messages stay longest.
void TablePresentation::leave_out(std::size_t columns) {
  std::size_t sum = 0;
  for (const Column& column : columns_) sum += column.least + kGap.size();
  while (sum > columns + kGap.size() && columns_.size() > 1) {
    const auto is_other = [](const Column& column) { return !has_message(column.choice); };
    const auto other = std::find_if(columns_.rbegin(), columns_.rend(), is_other);
    const auto out = other == columns_.rend() ? columns_.end() - 1 : other.base() - 1;
    sum -= out->least + kGap.size();
    left_out_.insert(0, out->choice.name + (left_out_.empty() ? "" : ", "));
    columns_.erase(out);
  }
}

/// Takes a column from the widest of the texts, or of the others. False where none of them can be narrower.
bool TablePresentation::narrow_widest(bool texts) {
  Column* widest = nullptr;
  for (Column& column : columns_) {
    if (column.is_text != texts || column.layout.columns <= column.least) continue;
    if (widest == nullptr || column.layout.columns >= widest->layout.columns) widest = &column;
  }
  if (widest == nullptr) return false;
  --widest->layout.columns;
  return true;
}

/// Other values move the rest of their line, of which the end is cut off.
void TablePresentation::cut_texts() {
  for (Column& column : columns_) {
    column.title.most_columns = column.title.columns;
    if (column.is_text) column.layout.most_columns = column.layout.columns;
  }
}

bool TablePresentation::shows_message() const {
  return std::any_of(columns_.begin(), columns_.end(), [](const Column& column) { return has_message(column.choice); });
}

void TablePresentation::append_heading(std::string& out) {
  row_.clear();
  for (std::size_t index = 0; index < columns_.size(); ++index)
    append_row_cell(index, columns_[index].choice.name, columns_[index].title, row_);
  append_row(out);
}

std::size_t TablePresentation::append(const ShownLine& shown, std::string& out) {
  row_.clear();
  for (std::size_t index = 0; index < columns_.size(); ++index) {
    value_.clear();
    if (!values_.append(columns_[index].choice, shown, value_)) value_ = kNoValue;
    append_row_cell(index, value_, columns_[index].layout, row_);
  }
  return append_row(out);
}

void TablePresentation::append_row_cell(std::size_t column, std::string_view value, const CellLayout& layout,
                                        std::string& out) {
  if (column > 0) out += kGap;
  safe_.clear();
  append_safely(value, place_.is_terminal ? CellSafety::kTerminal : CellSafety::kLine, safe_);
  append_cell(safe_, layout, out);
}

/// Without blanks at its end, and no wider than the place. Returns its bytes without the line end.
std::size_t TablePresentation::append_row(std::string& out) {
  row_.erase(row_.find_last_not_of(' ') + 1);
  const std::size_t begin = out.size();
  append_cell(row_, {CellAlignment::kLeft, 0, place_.columns > 0 ? place_.columns : CellLayout::kAnyColumns}, out);
  const std::size_t size = out.size() - begin;
  out += '\n';
  return size;
}

}  // namespace qzlog_tool
