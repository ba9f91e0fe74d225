#include "tools/manual/roff.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMaximumLine = 79;

/// What roff would replace by a typographic character or take for syntax.
constexpr std::array<std::pair<char, const char*>, 7> kEscapes = {{
    {'\\', "\\(rs"},
    {'-', "\\-"},
    {'\'', "\\(aq"},
    {'`', "\\(ga"},
    {'^', "\\(ha"},
    {'~', "\\(ti"},
    {'"', "\\(dq"},
}};

std::string escaped(char character) {
  for (const auto& [plain, escape] : kEscapes) {
    if (character == plain) return escape;
  }
  return std::string(1, character);
}

std::string escaped_code(char32_t code) { return "\\[u" + qzlog_compiler::hexadecimal(code, 4) + ']'; }

// A line that begins with a full stop is a request; one with an apostrophe would be, were it not escaped.
const char* guard_of(std::string_view line) { return line.substr(0, 1) == "." ? "\\&" : ""; }

}  // namespace

std::string roff_part(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    const qzlog_compiler::Utf8Character character = qzlog_compiler::decode_utf8(text, i);
    result += character.size > 1 ? escaped_code(character.code) : escaped(text[i]);
    i += std::max<std::size_t>(character.size, 1);
  }
  return result;
}

std::string roff_text(std::string_view text) {
  std::string result;
  for (;;) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    result += guard_of(line) + roff_part(line);
    if (end == std::string_view::npos) return result;
    result += '\n';
    text.remove_prefix(end + 1);
  }
}

std::string in_capitals(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return result;
}

std::string roff_bold(std::string_view text) { return "\\fB" + roff_text(text) + "\\fR"; }
std::string roff_italic(std::string_view text) { return "\\fI" + roff_text(text) + "\\fR"; }

std::string roff_filled(std::string_view roff) {
  std::istringstream words{std::string(roff)};
  std::string result;
  std::size_t line_size = 0;
  for (std::string word; words >> word;) {
    const std::string shown = guard_of(word) + word;
    const bool fits = line_size + 1 + shown.size() <= kMaximumLine;
    if (!result.empty()) result += fits ? ' ' : '\n';
    line_size = fits && !result.empty() ? line_size + 1 + shown.size() : shown.size();
    result += shown;
  }
  return result;
}

std::string roff_sentence(std::string_view text) {
  return roff_filled(roff_text(text) + (text.ends_with('.') ? "" : "."));
}

std::string roff_literal(std::string_view text) { return ".RS 2\n.nf\n" + roff_text(text) + "\n.fi\n.RE\n"; }

}  // namespace qzlog_tool
