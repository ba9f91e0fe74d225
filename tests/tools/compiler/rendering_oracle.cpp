#include "tests/tools/compiler/rendering_oracle.h"

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <vector>

namespace rendering_oracle {
namespace {

struct Token {
  enum class Kind { kText, kFormat, kArgument };
  Kind kind = Kind::kText;
  icu::UnicodeString wide;  // of the ICU tokenizer
  std::string text;         // of the narrow one, and the name of an argument
  char format = '\0';
};

struct Tokens {
  std::vector<Token> list;
  bool failed = false;

  void text(const icu::UnicodeString& wide) {
    if (!wide.isEmpty()) list.push_back({Token::Kind::kText, wide, "", '\0'});
  }
  void text(const std::string& narrow) {
    if (!narrow.empty()) list.push_back({Token::Kind::kText, {}, narrow, '\0'});
  }
  void format(char character) { list.push_back({Token::Kind::kFormat, {}, "", character}); }
  void argument(const std::string& name) { list.push_back({Token::Kind::kArgument, {}, name, '\0'}); }
};

void add_wide_name(const icu::UnicodeString& name, Tokens& tokens) {
  if (name.isEmpty()) return;
  std::string converted;
  name.toUTF8String(converted);
  if (converted.size() > 2 * (static_cast<std::size_t>(name.length()) + 1)) tokens.failed = true;
  tokens.argument(converted);
}

Tokens tokenize_wide(const icu::UnicodeString& text) {
  Tokens tokens;
  int32_t start = 0;
  int32_t pos = 0;
  int state = 0;
  while (pos < text.length()) {
    const int32_t p = text.indexOf(u'%', pos);
    if (p < 0) break;
    const char16_t next = text.charAt(p + 1);
    if (next == u'%') {
      tokens.text(icu::UnicodeString(u'%'));
      start = pos = p + 2;
    } else if (state == 0) {
      tokens.text(icu::UnicodeString(text, start, p - start));
      tokens.format(static_cast<char>(next & 0xFF));
      state = 1;
      pos = p + 1;
    } else if (state == 1) {
      state = 2;
      start = pos = p + 1;
    } else {
      state = 0;
      add_wide_name(icu::UnicodeString(text, start, p - start), tokens);
      start = pos = p + 1;
    }
  }
  tokens.text(icu::UnicodeString(text, start, pos - start));
  return tokens;
}

Tokens tokenize_narrow(const std::string& text) {
  Tokens tokens;
  std::size_t start = 0;
  std::size_t pos = 0;
  int state = 0;
  while (pos < text.size()) {
    const std::size_t p = pos;
    pos = p + 1;
    if (text[p] != '%') continue;
    if (p + 1 != text.size() && text[p + 1] == '%') {
      tokens.text(std::string(37, '\0'));
      start = pos = p + 2;
    } else if (state == 0) {
      tokens.text(text.substr(start, p - start));
      if (p + 1 >= text.size()) {
        tokens.failed = true;
        return tokens;
      }
      tokens.format(text[p + 1]);
      state = 1;
    } else if (state == 1) {
      state = 2;
      start = p + 1;
    } else {
      state = 0;
      if (p != start) tokens.argument(text.substr(start, p - start));
      start = p + 1;
    }
  }
  tokens.text(text.substr(start));
  return tokens;
}

/// Nothing for a reference that fails; "known but dropped" is a null text.
std::optional<const std::string*> find_value(const Values& values, const std::string& name, char format) {
  const bool known_format = std::string("sCPDTfdu").find(format) != std::string::npos;
  const auto attribute = values.find(name);
  if (attribute == values.end()) return std::nullopt;
  if (!known_format) return nullptr;
  const auto text = attribute->second.find(format);
  if (text == attribute->second.end()) return std::nullopt;
  return &text->second;
}

std::optional<std::string> format_pattern(const icu::UnicodeString& pattern,
                                          const std::vector<icu::Formattable>& arguments) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(pattern, icu::Locale::getUS(), status);
  icu::UnicodeString result;
  icu::FieldPosition position;
  format.format(arguments.data(), static_cast<int32_t>(arguments.size()), result, position, status);
  if (U_FAILURE(status)) return std::nullopt;
  std::string text;
  result.toUTF8String(text);
  return text;
}

}  // namespace

std::optional<std::string> render_icu(const std::string& stored, const Values& values) {
  const Tokens tokens = tokenize_wide(icu::UnicodeString(stored.data(), static_cast<int32_t>(stored.size()), "UTF-8"));
  if (tokens.failed) return std::nullopt;
  icu::UnicodeString pattern;
  std::vector<icu::Formattable> arguments;
  for (std::size_t i = 0; i < tokens.list.size(); ++i) {
    const Token& token = tokens.list[i];
    if (token.kind == Token::Kind::kText) pattern.append(token.wide);
    if (token.kind != Token::Kind::kFormat) continue;
    if (i + 1 == tokens.list.size() || tokens.list[i + 1].kind != Token::Kind::kArgument) return std::nullopt;
    const auto value = find_value(values, tokens.list[++i].text, token.format);
    if (!value) return std::nullopt;
    if (*value == nullptr) continue;
    if (arguments.size() == 10) return std::nullopt;
    // Every format's piece begins with a brace and ends with one; texts stand in for numbers and dates.
    pattern.append(u'{').append(static_cast<char16_t>('0' + arguments.size())).append(u'}');
    arguments.emplace_back(icu::UnicodeString::fromUTF8(**value));
  }
  return format_pattern(pattern, arguments);
}

std::optional<std::string> render_narrow(const std::string& stored, const Values& values) {
  const Tokens tokens = tokenize_narrow(stored);
  if (tokens.failed) return std::nullopt;
  std::string result;
  for (std::size_t i = 0; i < tokens.list.size(); ++i) {
    const Token& token = tokens.list[i];
    if (token.kind == Token::Kind::kText) result += token.text.c_str();  // up to the first NUL
    if (token.kind != Token::Kind::kFormat) continue;
    if (i + 1 == tokens.list.size() || tokens.list[i + 1].kind != Token::Kind::kArgument) return std::nullopt;
    const auto value = find_value(values, tokens.list[++i].text, token.format);
    if (!value) return std::nullopt;
    if (*value != nullptr) result += **value;
  }
  return result;
}

}  // namespace rendering_oracle
