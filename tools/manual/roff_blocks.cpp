#include "tools/manual/roff_blocks.h"

#include <algorithm>
#include <numeric>
#include <sstream>

#include "tools/compiler/text/display_width.h"
#include "tools/manual/roff.h"

namespace qzlog_tool {

namespace {

using Kind = MarkdownBlock::Kind;
using Row = std::vector<std::string>;
using Style = MarkdownSpan::Style;

constexpr std::size_t kTableWidth = 66;  // what a terminal of 80 columns leaves
constexpr std::size_t kWidestBeforeLast = 36;
constexpr std::size_t kGap = 2;

/// The names of sections are in capitals, as on other pages, unless a name stands in one.
std::string heading(const MarkdownBlock& block) {
  if (block.level > 2) return ".SS " + roff_text(plain_text(block.text)) + '\n';
  const std::string text = plain_text(block.text);
  const bool has_name = block.text.find('`') != std::string::npos;
  return ".SH " + roff_text(has_name ? text : in_capitals(text)) + '\n';
}

std::vector<std::size_t> widths_of(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < std::min(widths.size(), row.size()); ++i) {
      widths[i] = std::max(widths[i], qzlog_compiler::display_width(plain_text(row[i])));
    }
  }
  return widths;
}

std::size_t sum_of(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

/// The lines that a cell takes, one at least.
Row wrapped(const std::string& text, std::size_t width) {
  Row lines(1);
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    std::string& line = lines.back();
    const std::size_t needed = qzlog_compiler::display_width(line) + 1 + qzlog_compiler::display_width(word);
    if (line.empty()) {
      line = word;
    } else if (needed <= width) {
      line += ' ' + word;
    } else {
      lines.push_back(word);
    }
  }
  return lines;
}

/// The last column goes on in further lines where it is wider than here.
std::string aligned(const std::vector<Row>& rows, const std::vector<std::size_t>& widths) {
  const std::size_t before_last = sum_of(widths) - widths.back();
  std::string text;
  for (const Row& row : rows) {
    std::string line;
    std::size_t end = 0;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
      line += i < row.size() ? plain_text(row[i]) : "";
      end += widths[i] + kGap;
      line.append(end - qzlog_compiler::display_width(line), ' ');
    }
    for (const std::string& part : wrapped(row.size() < widths.size() ? "" : plain_text(row.back()), widths.back())) {
      text += line + part;
      text.erase(text.find_last_not_of(' ') + 1);
      text += '\n';
      line.assign(before_last, ' ');
    }
  }
  text.pop_back();
  return roff_literal(text);
}

/// The first cell is what the others are told of; of several each but the last has its column's name in front.
std::string listed(const std::vector<Row>& rows) {
  const Row& header = rows.front();
  std::string roff;
  for (std::size_t at = header.front().empty() ? 1 : 0; at < rows.size(); ++at) {
    std::string told;
    for (std::size_t i = 1; i < rows[at].size(); ++i) {
      if (rows[at][i].empty()) continue;
      const bool has_name = at > 0 && header.size() > 2 && i < header.size() && !header[i].empty();
      told += (told.empty() ? "" : "; ") + (has_name ? header[i] + ": " : "") + rows[at][i];
    }
    roff += ".TP\n" + (at > 0 ? roff_spans(rows[at].front()) : roff_italic(plain_text(header.front()))) + '\n';
    roff += (told.empty() ? "\\&" : roff_paragraph(told)) + '\n';
  }
  return roff;
}

std::string table(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths = widths_of(rows);
  const std::size_t before_last = sum_of(widths) - widths.back();
  if (sum_of(widths) > kTableWidth && (widths.size() < 3 || before_last > kWidestBeforeLast)) return listed(rows);
  widths.back() = std::min(widths.back(), kTableWidth - before_last);
  return aligned(rows, widths);
}

std::string item(const MarkdownBlock& block) {
  const bool numbered = block.mark != "-";
  return ".IP " + (numbered ? block.mark + " 4" : std::string("\\(bu 2")) + '\n' + roff_paragraph(block.text) + '\n';
}

std::string shown_block(const MarkdownBlock& block) {
  switch (block.kind) {
    case Kind::kHeading:
      return heading(block);
    case Kind::kItem:
      return item(block);
    case Kind::kCode:
      return roff_literal(block.text);
    case Kind::kTable:
      return table(block.rows);
    default:
      return roff_paragraph(block.text) + '\n';
  }
}

/// Whether what is shown so begins a paragraph by itself.
bool begins_paragraph(std::string_view roff) {
  return roff.starts_with(".S") || roff.starts_with(".TP") || roff.starts_with(".IP");
}

}  // namespace

std::string roff_spans(std::string_view text) {
  std::string roff;
  for (const MarkdownSpan& span : parse_spans(text)) {
    if (span.style == Style::kPlain) {
      roff += roff.empty() ? roff_text(span.text) : roff_part(span.text);
    } else {
      roff += span.style == Style::kItalic ? roff_italic(span.text) : roff_bold(span.text);
    }
  }
  return roff;
}

std::string roff_paragraph(std::string_view text) { return roff_filled(roff_spans(text)); }

std::string roff_blocks(const std::vector<MarkdownBlock>& blocks) {
  std::string roff;
  bool is_first = true;
  for (const MarkdownBlock& block : blocks) {
    const std::string shown = shown_block(block);
    if (!is_first && !begins_paragraph(shown)) roff += ".PP\n";
    roff += shown;
    is_first = block.kind == Kind::kHeading;
  }
  return roff;
}

}  // namespace qzlog_tool
