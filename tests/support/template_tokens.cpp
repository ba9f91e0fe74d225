#include "tests/support/template_tokens.h"

#include <gtest/gtest.h>
#include <unicode/unistr.h>

namespace qz_test {

PlainToken text_token(const std::string& text) { return {kTextToken, text}; }
PlainToken format_token(char format) { return {kFormatToken, std::string(1, format)}; }
PlainToken name_token(const std::string& name) { return {kNameToken, name}; }

std::ostream& operator<<(std::ostream& stream, const PlainToken& token) {
  return stream << "{" << token.type << " " << testing::PrintToString(token.text) << "}";
}

namespace {

std::string utf8(const std::u16string& text) {
  std::string bytes;
  icu::UnicodeString(text.data(), static_cast<int>(text.size())).toUTF8String(bytes);
  return bytes;
}

}  // namespace

WideResult oracle_wide_cut(const std::u16string& text) {
  WideResult result;
  std::vector<WideToken>& tokens = result.tokens;
  std::size_t start = 0;
  std::size_t pos = 0;
  int state = 0;
  while (pos < text.size()) {
    std::size_t p = pos;
    while (p < text.size() && text[p] != u'%') ++p;
    if (p == text.size()) break;
    const char16_t next = p + 1 < text.size() ? text[p + 1] : char16_t{0xFFFF};
    if (next == u'%') {
      tokens.push_back({kTextToken, u"%"});
      start = pos = p + 2;
    } else if (state == 0) {
      if (p != start) tokens.push_back({kTextToken, text.substr(start, p - start)});
      tokens.push_back({kFormatToken, std::u16string(1, static_cast<char16_t>(next & 0xFF))});
      state = 1;
      pos = p + 1;
    } else if (state == 1) {
      state = 2;
      start = pos = p + 1;
    } else {
      state = 0;
      if (p != start) {
        const std::u16string name = text.substr(start, p - start);
        if (utf8(name).size() > 2 * (p - start + 1)) {
          result.end = TokensEnd::kNameTooLong;
          return result;
        }
        tokens.push_back({kNameToken, name});
      }
      start = pos = p + 1;
    }
  }
  if (pos != start) tokens.push_back({kTextToken, text.substr(start, pos - start)});
  return result;
}

PlainToken plain(const WideToken& token) {
  if (token.type == kFormatToken) return format_token(static_cast<char>(token.text[0]));
  return token.type == kTextToken ? text_token(utf8(token.text)) : name_token(utf8(token.text).c_str());
}

PlainResult oracle_wide_tokens(const std::u16string& text) {
  const WideResult cut = oracle_wide_cut(text);
  PlainResult result;
  result.end = cut.end;
  for (const WideToken& token : cut.tokens) result.tokens.push_back(plain(token));
  return result;
}

PlainResult oracle_narrow_tokens(const std::string& text) {
  PlainResult result;
  PlainTokens& tokens = result.tokens;
  std::size_t start = 0;
  std::size_t pos = 0;
  int state = 0;
  while (pos < text.size()) {
    const std::size_t p = pos;
    if (text[p] != '%') {
      pos = p + 1;
    } else if (p + 1 != text.size() && text[p + 1] == '%') {
      tokens.push_back(text_token(std::string(37, '\0')));
      start = pos = p + 2;
    } else if (state == 0) {
      if (p != start) tokens.push_back(text_token(text.substr(start, p - start).c_str()));
      if (p + 1 == text.size()) {
        result.end = TokensEnd::kIndexOutOfBounds;
        return result;
      }
      tokens.push_back(format_token(text[p + 1]));
      state = 1;
      pos = p + 1;
    } else if (state == 1) {
      state = 2;
      start = pos = p + 1;
    } else {
      state = 0;
      if (p != start) tokens.push_back(name_token(text.substr(start, p - start).c_str()));
      start = pos = p + 1;
    }
  }
  if (start != text.size()) tokens.push_back(text_token(text.substr(start).c_str()));
  return result;
}

}  // namespace qz_test
