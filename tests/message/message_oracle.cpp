#include "tests/message/message_oracle.h"

#include <gtest/gtest.h>
#include <unicode/fieldpos.h>
#include <unicode/msgfmt.h>
#include <unicode/ucnv.h>

#include <ctime>
#include <map>

#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"
#include "tests/message/message_fixture.h"

namespace qz_test {

PlainToken text_token(const std::string& text) { return {0, text}; }
PlainToken format_token(char format) { return {1, std::string(1, format)}; }
PlainToken name_token(const std::string& name) { return {2, name}; }

std::ostream& operator<<(std::ostream& stream, const PlainToken& token) {
  return stream << "{" << token.type << " " << testing::PrintToString(token.text) << "}";
}

namespace {

std::string utf8(const std::u16string& text) {
  return to_utf8(icu::UnicodeString(text.data(), static_cast<int>(text.size())));
}

/// A token as it is cut, its text in UTF-16 (a format: one unit).
struct WideToken {
  int type;
  std::u16string text;
};
struct WideResult {
  std::vector<WideToken> tokens;
  TokensEnd end = TokensEnd::kDone;
};

WideResult cut_wide(const std::u16string& text) {
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
      tokens.push_back({0, u"%"});
      start = pos = p + 2;
    } else if (state == 0) {
      if (p != start) tokens.push_back({0, text.substr(start, p - start)});
      tokens.push_back({1, std::u16string(1, static_cast<char16_t>(next & 0xFF))});
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
        tokens.push_back({2, name});
      }
      start = pos = p + 1;
    }
  }
  if (pos != start) tokens.push_back({0, text.substr(start, pos - start)});
  return result;
}

PlainToken plain(const WideToken& token) {
  if (token.type == 1) return format_token(static_cast<char>(token.text[0]));
  return token.type == 0 ? text_token(utf8(token.text)) : name_token(utf8(token.text).c_str());
}

}  // namespace

PlainResult oracle_wide_tokens(const std::u16string& text) {
  const WideResult cut = cut_wide(text);
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

namespace {

/// The type of an attribute that is named after its type.
qz_AttributeType oracle_type(const std::string& name) {
  if (name == "TIMESTAMP") return TypeTimestamp;
  if (name == "Größe") return TypeUInt4;
  if (name == "名前") return TypeMBChar64;
  if (name == "Global") return TypeSInt4;
  return _qz_LOG_get_attribute_type_code(name.c_str());
}

double milliseconds_of(const _qz_LOG_log_entry_imp& entry, const std::string& name) {
  const qz_Time time = name == "TIMESTAMP" ? entry.get_timestamp(false) : entry.get_attrib_time(name.c_str());
  std::tm fields = {};
  fields.tm_year = time.get_year() - 1900;
  fields.tm_mon = time.get_month() - 1;
  fields.tm_mday = time.get_day();
  fields.tm_hour = time.get_hour();
  fields.tm_min = time.get_minute();
  fields.tm_sec = time.get_second();
  fields.tm_isdst = -1;
  return static_cast<double>(std::mktime(&fields)) * 1000.0;
}

/// A text in the code page of the settings.
icu::UnicodeString decoded(const char* text) {
  const char* const code_page = qz_LOG_LogConfig::GetCodePage();
  if (code_page[0] == '\0') return icu::UnicodeString(text);
  if (ucnv_compareNames(code_page, "UTF-8") == 0) return from_utf8(text);
  return icu::UnicodeString(text, code_page);
}

icu::Formattable argument_value(const _qz_LOG_log_entry_imp& entry, const std::string& name) {
  const qz_AttributeType type = oracle_type(name);
  if (type >= TypeDate && type <= TypeTimestamp)
    return icu::Formattable(milliseconds_of(entry, name), icu::Formattable::kIsDate);
  if (type == TypeFloat) return icu::Formattable(entry.get_attrib_float8(name.c_str()));
  if (type >= TypeMBChar32 && type <= TypeMBChar2K)
    return icu::Formattable(decoded(entry.get_attrib_mbstr(name.c_str())));
  if (type >= TypeChar32 && type <= TypeChar2K) return icu::Formattable(decoded(entry.get_attrib_str(name.c_str())));
  return icu::Formattable(static_cast<int32_t>(entry.get_attrib_as_4(name.c_str())));
}

const std::map<char, std::string> kPatternPieces = {
    {'s', ""},      {'C', ",number,currency"}, {'P', ",number,percent"},    {'D', ",date"},
    {'T', ",time"}, {'f', ",number"},          {'d', ",number,##########"}, {'u', ",number,##########"}};

}  // namespace

OracleMessage oracle_result(const icu::UnicodeString& message_template, const _qz_LOG_log_entry_imp& entry,
                            const icu::Locale& locale) {
  const std::vector<WideToken> tokens =
      cut_wide(std::u16string(message_template.getBuffer(), static_cast<std::size_t>(message_template.length())))
          .tokens;
  icu::UnicodeString pattern;
  std::vector<icu::Formattable> arguments;
  std::size_t formats = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const std::u16string& text = tokens[i].text;
    if (tokens[i].type == 0) pattern.append(text.data(), static_cast<int>(text.size()));
    if (tokens[i].type != 1) continue;
    ++formats;
    const auto piece = kPatternPieces.find(static_cast<char>(text[0]));
    if (piece == kPatternPieces.end() || i + 1 == tokens.size() || tokens[i + 1].type != 2) continue;
    pattern += from_utf8("{" + std::to_string(arguments.size()) + piece->second + "}");
    arguments.push_back(argument_value(entry, plain(tokens[i + 1]).text));
  }
  if (arguments.size() > 10) return {OracleEnd::kPatternRefused, {}};
  arguments.resize(formats);
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(pattern, locale, status);
  if (U_FAILURE(status)) return {OracleEnd::kPatternRefused, {}};
  OracleMessage result{OracleEnd::kMessage, {}};
  icu::FieldPosition position;
  format.format(arguments.data(), static_cast<int>(arguments.size()), result.text, position, status);
  if (U_FAILURE(status)) result.end = OracleEnd::kCannotFormat;
  return result;
}

icu::UnicodeString oracle_message(const std::string& message_template, const _qz_LOG_log_entry_imp& entry,
                                  const icu::Locale& locale) {
  const OracleMessage result = oracle_result(from_utf8(message_template), entry, locale);
  EXPECT_EQ(result.end, OracleEnd::kMessage) << message_template;
  return result.text;
}

}  // namespace qz_test
