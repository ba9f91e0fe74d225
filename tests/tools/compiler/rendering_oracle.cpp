#include "tests/tools/compiler/rendering_oracle.h"

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <vector>

#include "tests/support/template_tokens.h"

namespace rendering_oracle {
namespace {

using qz_test::kFormatToken;
using qz_test::kNameToken;
using qz_test::kTextToken;
using qz_test::oracle_narrow_tokens;
using qz_test::oracle_wide_cut;
using qz_test::plain;
using qz_test::PlainResult;
using qz_test::PlainToken;
using qz_test::TokensEnd;
using qz_test::WideResult;
using qz_test::WideToken;

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
  const icu::UnicodeString wide(stored.data(), static_cast<int32_t>(stored.size()), "UTF-8");
  const WideResult cut = oracle_wide_cut(std::u16string(wide.getBuffer(), static_cast<std::size_t>(wide.length())));
  if (cut.end != TokensEnd::kDone) return std::nullopt;
  icu::UnicodeString pattern;
  std::vector<icu::Formattable> arguments;
  for (std::size_t i = 0; i < cut.tokens.size(); ++i) {
    const WideToken& token = cut.tokens[i];
    if (token.type == kTextToken) pattern.append(token.text.data(), static_cast<int32_t>(token.text.size()));
    if (token.type != kFormatToken) continue;
    if (i + 1 == cut.tokens.size() || cut.tokens[i + 1].type != kNameToken) return std::nullopt;
    const auto value = find_value(values, plain(cut.tokens[++i]).text, plain(token).text[0]);
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
  const PlainResult cut = oracle_narrow_tokens(stored);
  if (cut.end != TokensEnd::kDone) return std::nullopt;
  std::string result;
  for (std::size_t i = 0; i < cut.tokens.size(); ++i) {
    const PlainToken& token = cut.tokens[i];
    if (token.type == kTextToken) result += token.text.c_str();  // up to the first NUL
    if (token.type != kFormatToken) continue;
    if (i + 1 == cut.tokens.size() || cut.tokens[i + 1].type != kNameToken) return std::nullopt;
    const auto value = find_value(values, cut.tokens[++i].text, token.text[0]);
    if (!value) return std::nullopt;
    if (*value != nullptr) result += **value;
  }
  return result;
}

}  // namespace rendering_oracle
