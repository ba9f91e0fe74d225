#ifndef QZLOG_TOOLS_MANUAL_SHELL_QUOTING_H
#define QZLOG_TOOLS_MANUAL_SHELL_QUOTING_H

#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// The texts with a separator between them.
inline std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
  std::string result;
  for (const std::string& text : texts) {
    if (!result.empty()) result += separator;
    result += text;
  }
  return result;
}

/// A word for bash and zsh: in single quotes.
inline std::string shell_quoted(std::string_view text) {
  std::string result = "'";
  for (const char character : text) result += character == '\'' ? "'\\''" : std::string(1, character);
  return result + "'";
}

/// The text with a backslash before each of some characters.
inline std::string with_backslashes(std::string_view text, std::string_view characters) {
  std::string result;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) result += '\\';
    result += character;
  }
  return result;
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_SHELL_QUOTING_H
