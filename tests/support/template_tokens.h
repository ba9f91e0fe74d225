#ifndef QZLOG_TESTS_SUPPORT_TEMPLATE_TOKENS_H
#define QZLOG_TESTS_SUPPORT_TEMPLATE_TOKENS_H

#include <ostream>
#include <string>
#include <vector>

namespace qz_test {

/// The grammar of templates once more, written down slowly: character by character, without sharing anything with the
/// library and the compiler, which are compared with it.

inline constexpr int kTextToken = 0;
inline constexpr int kFormatToken = 1;
inline constexpr int kNameToken = 2;

/// A token in a form that can be compared and printed: its type and its text in UTF-8 (a format: one byte).
struct PlainToken {
  int type;
  std::string text;
  bool operator==(const PlainToken& other) const { return type == other.type && text == other.text; }
};
using PlainTokens = std::vector<PlainToken>;

PlainToken text_token(const std::string& text);
PlainToken format_token(char format);
PlainToken name_token(const std::string& name);
std::ostream& operator<<(std::ostream& stream, const PlainToken& token);

/// How cutting a template ended.
enum class TokensEnd { kDone, kIndexOutOfBounds, kNameTooLong };
struct PlainResult {
  PlainTokens tokens;
  TokensEnd end = TokensEnd::kDone;
};

/// A token of a template in UTF-16 as it is cut, its text in UTF-16 (a format: one unit).
struct WideToken {
  int type;
  std::u16string text;
};
struct WideResult {
  std::vector<WideToken> tokens;
  TokensEnd end = TokensEnd::kDone;
};

WideResult oracle_wide_cut(const std::u16string& text);
PlainToken plain(const WideToken& token);

PlainResult oracle_wide_tokens(const std::u16string& text);
PlainResult oracle_narrow_tokens(const std::string& text);

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_TEMPLATE_TOKENS_H
