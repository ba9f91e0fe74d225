#include "tools/compiler/text/line_cut.h"

#include <algorithm>

namespace qzlog_compiler {
namespace {

constexpr std::string_view kEllipsis = "\u2026";

bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }

}  // namespace

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string cut_line(std::string text, std::size_t columns) {
  if (columns == 0 || text.size() <= columns || character_count(text) <= columns) return text;
  std::size_t end = 0;
  for (std::size_t count = 0; end < text.size(); ++end) {
    if (begins_character(text[end]) && ++count == columns) break;
  }
  text.resize(end);
  return text.append(kEllipsis);
}

}  // namespace qzlog_compiler
