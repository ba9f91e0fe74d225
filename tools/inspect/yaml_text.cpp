#include "tools/inspect/yaml_text.h"

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

/// What YAML does not allow in a source, takes for a line break, or drops as a byte order mark.
bool needs_code(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code & ~1U) == 0x2028 || code == 0xFEFF ||
         (code & ~1U) == 0xFFFE;
}

std::string escape(char32_t code) {
  switch (code) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    default:
      break;
  }
  if (!needs_code(code)) return "";
  return code < 0x100 ? "\\x" + hexadecimal(code, 2) : "\\u" + hexadecimal(code, 4);
}

}  // namespace

std::string yaml_quoted(std::string_view text) {
  std::string out = "\"";
  for (std::size_t offset = 0; offset < text.size();) {
    const Utf8Character character = decode_utf8(text, offset);
    const std::string escaped = escape(character.code);
    out += escaped.empty() ? text.substr(offset, character.size) : escaped;
    offset += character.size;
  }
  return out += '"';
}

}  // namespace qzlog_compiler
