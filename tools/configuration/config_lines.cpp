#include "tools/configuration/config_lines.h"

#include <algorithm>

#include "config/configuration_format.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kLineBreaks = "\n\r";
constexpr std::string_view kDelimiters = " \t=";

bool is_line_break(char character) { return kLineBreaks.find(character) != std::string_view::npos; }

/// In characters from 1. Of what is no UTF-8 each byte is one.
std::uint32_t column_of(std::string_view line, std::size_t offset) {
  std::uint32_t column = 1;
  for (std::size_t at = 0; at < offset; ++column) {
    at += std::max<std::size_t>(qzlog_compiler::decode_utf8(line, at).size, 1);
  }
  return column;
}

}  // namespace

// A line ends with one or two line break characters, of whichever kind; one that the file's end follows is not reported
// to the library's reader.
std::optional<ConfigLine> ConfigLines::next() {
  const std::size_t end = std::min(content_.find_first_of(kLineBreaks, begin_), content_.size());
  const std::string_view text = content_.substr(begin_, end - begin_);
  if (text.size() > static_cast<std::size_t>(qzlog::kMostConfigurationLineBytes)) {
    end_ = End::kLongLine;
    return std::nullopt;
  }
  ConfigLine line = cut(text);
  if (end + 1 >= content_.size()) {
    end_ = line.words.empty() ? End::kWhole : End::kLastLine;
    return std::nullopt;
  }
  const std::size_t following = end + (is_line_break(content_[end + 1]) ? 2 : 1);
  const std::string_view breaks = content_.substr(end, following - end);
  number_ += static_cast<std::uint64_t>(std::count(breaks.begin(), breaks.end(), '\n'));
  begin_ = following;
  return line;
}

/// A null byte ends what is seen of a line.
ConfigLine ConfigLines::cut(std::string_view line) const {
  ConfigLine result{number_, {}};
  line = line.substr(0, line.find('\0'));
  for (std::size_t begin = 0;;) {
    begin = line.find_first_not_of(kDelimiters, begin);
    if (begin == std::string_view::npos) return result;
    const std::size_t end = std::min(line.find_first_of(kDelimiters, begin), line.size());
    result.words.push_back({line.substr(begin, end - begin), {number_, column_of(line, begin)}});
    begin = end;
  }
}

}  // namespace qzlog_tool
