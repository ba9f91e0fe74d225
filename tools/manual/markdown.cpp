#include "tools/manual/markdown.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace qzlog_tool {

namespace {

using Block = MarkdownBlock;
using Span = MarkdownSpan;

constexpr std::string_view kFence = "```";
constexpr std::string_view kComment = "<!--";
constexpr std::string_view kBlank = " \t";

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

/// "-" or "1." where a line begins an item, else empty.
std::string_view item_mark(std::string_view line) {
  const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
  const std::size_t size = digits > 0 ? digits + 1 : 1;
  const bool has_sign = line.size() > size && line[size - 1] == (digits > 0 ? '.' : '-');
  return has_sign && line[size] == ' ' ? line.substr(0, size) : std::string_view();
}

int heading_level(std::string_view line) {
  const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
  return level > 0 && line.size() > level && line[level] == ' ' ? static_cast<int>(level) : 0;
}

/// The cells between the lines of "| a | b |"; "\|" stands for a line of the text's own.
std::vector<std::string> cells_of(std::string_view line) {
  std::vector<std::string> cells;
  std::string cell;
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '\\' && line.substr(i + 1, 1) == "|") {
      cell += line[++i];
    } else if (line[i] == '|') {
      cells.emplace_back(trimmed(std::exchange(cell, {})));
    } else {
      cell += line[i];
    }
  }
  if (!trimmed(cell).empty()) cells.emplace_back(trimmed(cell));
  return cells;
}

bool is_ruler(std::string_view line) { return line.find_first_not_of("|-: ") == std::string_view::npos; }

class PageReader {
 public:
  explicit PageReader(std::string_view page) : rest_(page) {}

  std::vector<Block> read() {
    while (!rest_.empty()) take(next_line());
    return std::move(blocks_);
  }

 private:
  std::string_view next_line() {
    const std::size_t end = rest_.find('\n');
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
    return line;
  }

  void take(std::string_view whole_line) {
    const std::string_view line = trimmed(whole_line);
    if (line.starts_with(kFence)) {
      take_code(whole_line.find(kFence));
    } else if (line.empty()) {
      continues_ = false;
    } else if (line.starts_with(kComment)) {
      continues_ = false;
      for (std::string_view end = line; end.find("-->") == std::string_view::npos && !rest_.empty();) end = next_line();
    } else if (const int level = heading_level(line)) {
      add({.kind = Block::Kind::kHeading, .text = std::string(trimmed(line.substr(line.find(' ')))), .level = level},
          false);
    } else if (line.front() == '|') {
      take_row(line);
    } else {
      take_text(line);
    }
  }

  void take_code(std::size_t indentation) {
    std::string text;
    while (!rest_.empty()) {
      const std::string_view line = next_line();
      if (trimmed(line).starts_with(kFence)) break;
      const std::size_t own = std::min(indentation, std::min(line.find_first_not_of(' '), line.size()));
      text.append(line.substr(own)).append("\n");
    }
    if (!text.empty()) text.pop_back();
    add({.kind = Block::Kind::kCode, .text = std::move(text)}, false);
  }

  void take_row(std::string_view line) {
    if (!continues_ || blocks_.back().kind != Block::Kind::kTable) add({.kind = Block::Kind::kTable}, true);
    if (!is_ruler(line) || blocks_.back().rows.empty()) blocks_.back().rows.push_back(cells_of(line));
  }

  void take_text(std::string_view line) {
    const std::string_view mark = item_mark(line);
    if (!mark.empty()) {
      const std::string_view text = trimmed(line.substr(mark.size()));
      add({.kind = Block::Kind::kItem, .text = std::string(text), .mark = std::string(mark)}, true);
    } else if (continues_ && blocks_.back().kind != Block::Kind::kTable) {
      blocks_.back().text.append(" ").append(line);
    } else {
      add({.kind = Block::Kind::kParagraph, .text = std::string(line)}, true);
    }
  }

  void add(Block block, bool may_continue) {
    blocks_.push_back(std::move(block));
    continues_ = may_continue;
  }

  std::string_view rest_;
  std::vector<Block> blocks_;
  bool continues_ = false;  ///< whether the next line may belong to the last block
};

class SpanReader {
 public:
  explicit SpanReader(std::string_view text) : rest_(text) {}

  std::vector<Span> read() {
    while (!rest_.empty()) {
      if (!take_code() && !take_emphasis("**", Span::Style::kBold) && !take_emphasis("*", Span::Style::kItalic) &&
          !take_link() && !take_power() && !take_escape()) {
        add(Span::Style::kPlain, rest_.substr(0, 1));
        rest_.remove_prefix(1);
      }
    }
    return std::move(spans_);
  }

 private:
  /// What stands between the marks at the beginning of the rest, which goes on behind them.
  std::optional<std::string_view> take_between(std::string_view open, std::string_view close) {
    if (!rest_.starts_with(open)) return std::nullopt;
    const std::size_t end = rest_.find(close, open.size());
    if (end == std::string_view::npos || end == open.size()) return std::nullopt;
    const std::string_view text = rest_.substr(open.size(), end - open.size());
    rest_.remove_prefix(end + close.size());
    return text;
  }

  bool take_code() {
    for (const std::string_view mark : {"``", "`"}) {
      const auto text = take_between(mark, mark);
      if (!text) continue;
      add(Span::Style::kCode, mark.size() > 1 ? trimmed(*text) : *text);
      return true;
    }
    return false;
  }

  bool take_emphasis(std::string_view mark, Span::Style style) {
    if (rest_.size() <= mark.size() || kBlank.find(rest_[mark.size()]) != std::string_view::npos) return false;
    const auto text = take_between(mark, mark);
    if (!text) return false;
    for (Span& span : parse_spans(*text)) add(span.style == Span::Style::kPlain ? style : span.style, span.text);
    return true;
  }

  bool take_link() {
    const std::size_t middle = rest_.find("](");
    if (rest_.front() != '[' || middle == std::string_view::npos) return false;
    const std::size_t end = rest_.find(')', middle);
    if (end == std::string_view::npos || rest_.substr(1, middle - 1).find('[') != std::string_view::npos) return false;
    for (Span& span : parse_spans(rest_.substr(1, middle - 1))) add(span.style, span.text);
    rest_.remove_prefix(end + 1);
    return true;
  }

  bool take_power() {
    const auto text = take_between("<sup>", "</sup>");
    if (text) add(Span::Style::kPlain, "^" + std::string(*text));
    return text.has_value();
  }

  bool take_escape() {
    if (rest_.size() < 2 || rest_.front() != '\\' ||
        std::string_view("\\|*_`[]<").find(rest_[1]) == std::string_view::npos)
      return false;
    add(Span::Style::kPlain, rest_.substr(1, 1));
    rest_.remove_prefix(2);
    return true;
  }

  void add(Span::Style style, std::string_view text) {
    if (spans_.empty() || spans_.back().style != style) spans_.push_back({style, ""});
    spans_.back().text += text;
  }

  std::string_view rest_;
  std::vector<Span> spans_;
};

}  // namespace

std::vector<MarkdownBlock> parse_markdown(std::string_view page) { return PageReader(page).read(); }

std::vector<MarkdownSpan> parse_spans(std::string_view text) { return SpanReader(text).read(); }

std::string plain_text(std::string_view text) {
  std::string result;
  for (const MarkdownSpan& span : parse_spans(text)) result += span.text;
  return result;
}

}  // namespace qzlog_tool
