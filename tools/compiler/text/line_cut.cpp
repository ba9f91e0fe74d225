#include "tools/compiler/text/line_cut.h"

#include <algorithm>

#include "tools/compiler/text/display_width.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::string_view kEllipsis = "\u2026";

bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }

struct Step {
  std::size_t bytes = 1;
  std::size_t columns = 1;
};

Step step_at(std::string_view text, std::size_t offset) {
  const std::size_t size = decode_utf8(text, offset).size;
  return size == 0 ? Step{} : Step{size, display_width(text.substr(offset, size))};
}

}  // namespace

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::size_t column_count(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const Step step = step_at(text, offset);
    columns += step.columns;
    offset += step.bytes;
  }
  return columns;
}

// No character has more columns than bytes.
std::string cut_line(std::string text, std::size_t columns) {
  if (columns == 0 || text.size() <= columns || column_count(text) <= columns) return text;
  std::size_t end = 0;
  for (std::size_t taken = 0;;) {
    const Step step = step_at(text, end);
    taken += step.columns;
    if (taken >= columns) break;
    end += step.bytes;
  }
  text.resize(end);
  return text.append(kEllipsis);
}

}  // namespace qzlog_compiler
