#ifndef QZLOG_LINES_LINE_PARSER_H
#define QZLOG_LINES_LINE_PARSER_H

#include <string>
#include <string_view>

#include "lines/line_fields.h"
#include "lines/plain_line.h"

namespace qzlog {

/// Where the texts of one line are put that are not read quickly.
struct LineTexts {
  std::string key;
  std::string value;  // of no member below
  std::string symbolic_id;
  std::string time;
  std::string writer;
  std::string written;
  std::string definitions;
  std::string name;
  AttributeTexts attribute;
  AttributeTexts bytes;
};

/// Reads lines of JSON, one entry each. Whatever is none throws LineFault.
class LineParser {
 public:
  /// Replaces `fields`, whose texts are valid until the next call; `line` has to stay as long.
  void parse(std::string_view line, LineFields& fields);
  /// The same, without the short cut for plain lines.
  void parse_any(std::string_view line, LineFields& fields);

 private:
  PlainLineScanner plain_;
  LineTexts texts_;
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_PARSER_H
