#include "tools/compiler/source/scalar_position.h"

#include "tools/compiler/text/number_text.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

/// One character of the text as the source writes it. `written` is 0 where the text leaves the line.
struct WrittenCharacter {
  std::size_t written = 0;  ///< bytes in the source
  std::size_t columns = 0;
  std::size_t size = 0;  ///< bytes in the text
};

WrittenCharacter numeric_escape(std::string_view source, std::size_t at, std::size_t digits) {
  const auto code = parse_unsigned(source.substr(at + 2, digits), NumberForm::kHexadecimal);
  return {2 + digits, 2 + digits, utf8_size(static_cast<char32_t>(code.value_or(0)))};
}

WrittenCharacter read_escape(std::string_view source, std::size_t at) {
  switch (source[at + 1]) {
    case 'x':
      return numeric_escape(source, at, 2);
    case 'u':
      return numeric_escape(source, at, 4);
    case 'U':
      return numeric_escape(source, at, 8);
    case 'N':
    case '_':
      return {2, 2, 2};
    case 'L':
    case 'P':
      return {2, 2, 3};
    case '\n':
    case '\r':
      return {};
    default:
      return {2, 2, 1};
  }
}

WrittenCharacter read_character(std::string_view source, std::size_t at, ScalarStyle style) {
  const char first = source[at];
  if (style == ScalarStyle::kDoubleQuoted && first == '\\') return read_escape(source, at);
  if (style == ScalarStyle::kSingleQuoted && first == '\'') return {2, 2, 1};
  const Utf8Character character = decode_utf8(source, at);
  if (is_line_break(character.code)) return {};
  return {character.size, 1, character.size};
}

}  // namespace

ScalarPositions::ScalarPositions(std::string_view source, const YamlNode& scalar) : source_(source), scalar_(scalar) {
  restart();
}

void ScalarPositions::restart() {
  const std::size_t quote = scalar_.style() == ScalarStyle::kPlain ? 0 : 1;
  at_ = scalar_.source_offset() + quote;
  passed_ = 0;
  position_ = scalar_.position();
  position_.column += static_cast<std::uint32_t>(quote);
}

SourcePosition ScalarPositions::find(std::size_t offset) {
  const SourcePosition start = scalar_.position();
  if (scalar_.style() == ScalarStyle::kBlock) return start;
  if (offset < passed_) restart();
  while (passed_ < offset) {
    const WrittenCharacter character = read_character(source_, at_, scalar_.style());
    if (character.written == 0) return start;
    at_ += character.written;
    position_.column += static_cast<std::uint32_t>(character.columns);
    passed_ += character.size;
  }
  // A text that leaves the line right before this byte goes on somewhere else.
  const bool leaves_line = offset < scalar_.text().size() && read_character(source_, at_, scalar_.style()).written == 0;
  return leaves_line ? start : position_;
}

}  // namespace qzlog_compiler
