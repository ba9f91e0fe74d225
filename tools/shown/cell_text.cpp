#include "tools/shown/cell_text.h"

#include <algorithm>

#include "tools/compiler/text/display_width.h"
#include "tools/compiler/text/text_scan.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::has_line_break;
using qzlog_compiler::is_printable_ascii;

constexpr std::string_view kEllipsis = "\u2026";

struct Step {
  std::size_t bytes = 1;
  std::size_t columns = 1;
};

Step step_at(std::string_view text, std::size_t offset) {
  const auto byte = static_cast<unsigned char>(text[offset]);
  if (byte < 0x80) return {1, byte < ' ' || byte == 0x7F ? 0u : 1u};
  const std::size_t size = qzlog_compiler::decode_utf8(text, offset).size;
  if (size == 0) return {};
  return {size, qzlog_compiler::display_width(text.substr(offset, size))};
}

/// The first bytes of the text that take no more than so many columns.
std::string_view first_columns(std::string_view text, std::size_t columns) {
  std::size_t end = 0;
  for (std::size_t taken = 0; end < text.size();) {
    const Step step = step_at(text, end);
    taken += step.columns;
    if (taken > columns) break;
    end += step.bytes;
  }
  return text.substr(0, end);
}

void append_without_line_breaks(std::string_view text, std::string& out) {
  for (const char character : text) {
    if (character == '\n') {
      out += "\\n";
    } else if (character == '\r') {
      out += "\\r";
    } else {
      out += character;
    }
  }
}

void append_for_terminal(std::string_view text, std::string& out) {
  while (!text.empty()) {
    const std::size_t special = std::min(text.find_first_of("\n\r\t"), text.size());
    append_terminal_text(text.substr(0, special), out);
    if (special == text.size()) return;
    out += text[special] == '\n' ? "\\n" : text[special] == '\r' ? "\\r" : "\\t";
    text.remove_prefix(special + 1);
  }
}

}  // namespace

void append_safely(std::string_view value, CellSafety safety, std::string& out) {
  if (safety == CellSafety::kTerminal && !is_printable_ascii(value)) {
    append_for_terminal(value, out);
  } else if (has_line_break(value)) {
    append_without_line_breaks(value, out);
  } else {
    out += value;
  }
}

std::size_t cell_columns(std::string_view text) {
  if (is_printable_ascii(text)) return text.size();
  std::size_t columns = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const Step step = step_at(text, offset);
    columns += step.columns;
    offset += step.bytes;
  }
  return columns;
}

void append_cell(std::string_view value, const CellLayout& layout, std::string& out) {
  if (layout.is_plain()) {
    out += value;
    return;
  }
  std::size_t columns = cell_columns(value);
  const bool is_cut = columns > layout.most_columns;
  if (is_cut) {
    value = first_columns(value, layout.most_columns == 0 ? 0 : layout.most_columns - 1);
    columns = cell_columns(value) + (layout.most_columns == 0 ? 0 : 1);
  }
  const std::size_t blanks = layout.columns - std::min(layout.columns, columns);
  const std::size_t before = layout.alignment == CellAlignment::kLeft    ? 0
                             : layout.alignment == CellAlignment::kRight ? blanks
                                                                         : blanks / 2;
  out.append(before, ' ').append(value);
  if (is_cut && layout.most_columns > 0) out += kEllipsis;
  out.append(blanks - before, ' ');
}

// What stands at the left and is not cut stays where it is.
void lay_out_ascii(const CellLayout& layout, std::size_t begin, std::string& out) {
  const std::size_t size = out.size() - begin;
  if (layout.alignment == CellAlignment::kLeft && size <= layout.most_columns) {
    out.append(layout.columns - std::min(layout.columns, size), ' ');
    return;
  }
  const std::string value = out.substr(begin);
  out.resize(begin);
  append_cell(value, layout, out);
}

}  // namespace qzlog_tool
