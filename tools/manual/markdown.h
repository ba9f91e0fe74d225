#ifndef QZLOG_TOOLS_MANUAL_MARKDOWN_H
#define QZLOG_TOOLS_MANUAL_MARKDOWN_H

#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// A part of a page in Markdown, of the forms that our documentation has.
struct MarkdownBlock {
  enum class Kind { kHeading, kParagraph, kItem, kCode, kTable };

  Kind kind;
  std::string text = {};                            ///< lines joined; of code as they stand, the last without its end
  int level = 0;                                    ///< of a heading: 1 for the page's
  std::string mark = {};                            ///< of an item: "-" or "1."
  std::vector<std::vector<std::string>> rows = {};  ///< of a table: cells, the header first
};

/// The parts of a page. Comments are left out.
std::vector<MarkdownBlock> parse_markdown(std::string_view page);

/// A stretch of a paragraph, an item, a heading or a cell.
struct MarkdownSpan {
  enum class Style { kPlain, kCode, kBold, kItalic };

  Style style;
  std::string text;
};

/// Links become their texts, and powers (<sup>) what people type for them.
std::vector<MarkdownSpan> parse_spans(std::string_view text);

/// The texts of the spans.
std::string plain_text(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_MARKDOWN_H
