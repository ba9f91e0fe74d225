#include "tools/shown/line_format.h"

#include <algorithm>
#include <optional>

#include "sinks/brace_format.h"
#include "tools/compiler/text/number_text.h"
#include "tools/options/option_error.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kOption = "--format";
constexpr std::string_view kNoValue = "-";
constexpr std::string_view kDigits = "0123456789";

bool is_control(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte < 0x20 && byte != '\t') || byte == 0x7F;
}

/// What stands between braces: "attribute:Free:>8" is a name and a layout.
struct FieldParts {
  std::string_view name;
  std::optional<std::string_view> layout;
};

// Names with a colon in them are longer than the text before the colon, and are tried first.
FieldParts cut_field(std::string_view content) {
  constexpr std::string_view kNamesWithColon[] = {"attribute:", "time:local", "level:name"};
  std::size_t from = 0;
  for (const std::string_view name : kNamesWithColon) {
    if (content.starts_with(name)) from = name.size();
  }
  const std::size_t colon = content.find(':', from);
  if (colon == std::string_view::npos) return {content, std::nullopt};
  return {content.substr(0, colon), content.substr(colon + 1)};
}

std::optional<CellAlignment> alignment_of(char character) {
  if (character == '<') return CellAlignment::kLeft;
  if (character == '>') return CellAlignment::kRight;
  if (character == '^') return CellAlignment::kCentre;
  return std::nullopt;
}

/// A number of columns, "" for none; nothing when it is too large.
bool read_columns(std::string_view digits, std::size_t& columns) {
  if (digits.empty()) return true;
  const auto number = qzlog_compiler::parse_number(digits, 0, static_cast<std::int64_t>(LineFormat::kMostColumns));
  if (number) columns = static_cast<std::size_t>(*number);
  return number.has_value();
}

/// None for a text that is no layout.
std::optional<CellLayout> read_layout(std::string_view text) {
  CellLayout layout;
  if (text.empty()) return std::nullopt;
  if (const auto alignment = alignment_of(text.front())) {
    layout.alignment = *alignment;
    text.remove_prefix(1);
  }
  const std::size_t point = std::min(text.find_first_not_of(kDigits), text.size());
  if (!read_columns(text.substr(0, point), layout.columns)) return std::nullopt;
  if (point == text.size()) return layout.columns > 0 ? std::optional(layout) : std::nullopt;
  const std::string_view most = text.substr(point + 1);
  const bool is_limit =
      text[point] == '.' && !most.empty() && most.find_first_not_of(kDigits) == std::string_view::npos;
  if (!is_limit || !read_columns(most, layout.most_columns)) return std::nullopt;
  return layout;
}

/// Fields of ASCII's letters, digits and their like.
bool is_ascii(ShownField field) {
  switch (field) {
    case ShownField::kLevel:
    case ShownField::kLevelName:
    case ShownField::kId:
    case ShownField::kMask:
    case ShownField::kSeq:
    case ShownField::kLine:
      return true;
    default:
      return false;
  }
}

/// Fields without line breaks. A locale may write times with other characters than those of ASCII.
bool is_safe(ShownField field) {
  return is_ascii(field) || field == ShownField::kTime || field == ShownField::kLocalTime ||
         field == ShownField::kWritten;
}

}  // namespace

/// Makes pieces of what split_format finds.
class LineFormat::Parts {
 public:
  Parts(std::string_view format, const ShownEvents& events, std::vector<Piece>& pieces)
      : format_(format), events_(events), pieces_(pieces) {
    pieces_.emplace_back();
  }

  void take_text(std::string_view text, std::size_t place) {
    const auto control = static_cast<std::size_t>(std::find_if(text.begin(), text.end(), is_control) - text.begin());
    if (control < text.size()) refuse(place + control, "a control character");
    pieces_.back().text += text;
  }
  void take_field(std::string_view content, std::size_t place) {
    const FieldParts parts = cut_field(content);
    std::optional<FieldChoice> choice = find_field(parts.name, events_);
    if (!choice) {
      const UnknownField unknown = describe_unknown_field(parts.name, events_);
      refuse_option(kOption, format_, place + 1, unknown.reason, unknown.hint);
    }
    Piece& piece = pieces_.back();
    piece.choice = std::move(*choice);
    piece.has_field = true;
    piece.is_safe = is_safe(piece.choice.field);
    piece.is_ascii = is_ascii(piece.choice.field);
    if (parts.layout) piece.layout = layout_of(*parts.layout, place + 2 + parts.name.size());
    pieces_.emplace_back();
  }
  [[noreturn]] void refuse(std::size_t place, const char* reason) const {
    refuse_option(kOption, format_, place, reason);
  }

 private:
  CellLayout layout_of(std::string_view text, std::size_t place) const {
    if (const std::optional<CellLayout> layout = read_layout(text)) return *layout;
    refuse_option(kOption, format_, place, "no layout of a field",
                  "write '<40', '>8' or '^20' for columns and a side, '.60' for columns at most, '<40.40' for both");
  }

  std::string_view format_;
  const ShownEvents& events_;
  std::vector<Piece>& pieces_;
};

LineFormat::LineFormat(std::string_view format, const ShownEvents& events) {
  if (format.empty()) refuse_option(kOption, format, 0, "the format is empty");
  if (format.size() > kMostBytes) {
    refuse_option(kOption, format, kMostBytes, "the format is longer than " + std::to_string(kMostBytes) + " bytes");
  }
  Parts parts(format, events, pieces_);
  qzlog::split_format(format, parts);
}

void LineFormat::append(const ShownLine& shown, bool for_terminal, FieldValues& values, std::string& out) {
  for (const Piece& piece : pieces_) {
    out += piece.text;
    if (piece.has_field) append_value(piece, shown, for_terminal, values, out);
  }
}

// Most values have no layout, and most of these no line break; most of those that have one are numbers and levels.
void LineFormat::append_value(const Piece& piece, const ShownLine& shown, bool for_terminal, FieldValues& values,
                              std::string& out) {
  if (piece.layout.is_plain() && piece.choice.field == ShownField::kMessage) {
    return append_safely(shown.message, CellSafety::kLine, out);
  }
  if (piece.layout.is_plain() ? piece.is_safe : piece.is_ascii) {
    const std::size_t begin = out.size();
    if (!values.append(piece.choice, shown, out)) out += kNoValue;
    if (!piece.layout.is_plain()) lay_out_ascii(piece.layout, begin, out);
    return;
  }
  value_.clear();
  if (!values.append(piece.choice, shown, value_)) value_ = kNoValue;
  if (piece.layout.is_plain()) return append_safely(value_, CellSafety::kLine, out);
  safe_.clear();
  append_safely(value_, for_terminal ? CellSafety::kTerminal : CellSafety::kLine, safe_);
  append_cell(safe_, piece.layout, out);
}

bool LineFormat::shows_message() const {
  return std::any_of(pieces_.begin(), pieces_.end(),
                     [](const Piece& piece) { return piece.has_field && piece.choice.field == ShownField::kMessage; });
}

std::vector<std::string> LineFormat::remarks() const {
  if (std::none_of(pieces_.begin(), pieces_.end(), [](const Piece& piece) { return piece.has_field; })) {
    return {"no field stands in it in braces: all lines are the same; forms such as json are asked for by --output"};
  }
  std::vector<FieldChoice> choices;
  for (const Piece& piece : pieces_) choices.push_back(piece.choice);
  return remarks_of_hidden(choices);
}

}  // namespace qzlog_tool
