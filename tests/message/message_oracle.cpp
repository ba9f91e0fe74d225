#include "tests/message/message_oracle.h"

#include <gtest/gtest.h>
#include <unicode/fieldpos.h>
#include <unicode/msgfmt.h>

#include <ctime>
#include <map>

#include "qzlog/logattrib.h"
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

}  // namespace

PlainResult oracle_wide_tokens(const std::u16string& text) {
  PlainResult result;
  PlainTokens& tokens = result.tokens;
  std::size_t start = 0;
  std::size_t pos = 0;
  int state = 0;
  while (pos < text.size()) {
    std::size_t p = pos;
    while (p < text.size() && text[p] != u'%') ++p;
    if (p == text.size()) break;
    const char16_t next = p + 1 < text.size() ? text[p + 1] : char16_t{0xFFFF};
    if (next == u'%') {
      tokens.push_back(text_token("%"));
      start = pos = p + 2;
    } else if (state == 0) {
      if (p != start) tokens.push_back(text_token(utf8(text.substr(start, p - start))));
      tokens.push_back(format_token(static_cast<char>(next & 0xFF)));
      state = 1;
      pos = p + 1;
    } else if (state == 1) {
      state = 2;
      start = pos = p + 1;
    } else {
      state = 0;
      if (p != start) {
        const std::string name = utf8(text.substr(start, p - start));
        if (name.size() > 2 * (p - start + 1)) {
          result.end = TokensEnd::kNameTooLong;
          return result;
        }
        tokens.push_back(name_token(name.c_str()));
      }
      start = pos = p + 1;
    }
  }
  if (pos != start) tokens.push_back(text_token(utf8(text.substr(start, pos - start))));
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

icu::Formattable argument_value(const _qz_LOG_log_entry_imp& entry, const std::string& name) {
  const qz_AttributeType type = oracle_type(name);
  if (type >= TypeDate && type <= TypeTimestamp)
    return icu::Formattable(milliseconds_of(entry, name), icu::Formattable::kIsDate);
  if (type == TypeFloat) return icu::Formattable(entry.get_attrib_float8(name.c_str()));
  if (type >= TypeMBChar32 && type <= TypeMBChar2K)
    return icu::Formattable(from_utf8(entry.get_attrib_mbstr(name.c_str())));
  if (type >= TypeChar32 && type <= TypeChar2K) return icu::Formattable(from_utf8(entry.get_attrib_str(name.c_str())));
  return icu::Formattable(static_cast<int32_t>(entry.get_attrib_as_4(name.c_str())));
}

const std::map<char, std::string> kPatternPieces = {
    {'s', ""},      {'C', ",number,currency"}, {'P', ",number,percent"},    {'D', ",date"},
    {'T', ",time"}, {'f', ",number"},          {'d', ",number,##########"}, {'u', ",number,##########"}};

}  // namespace

icu::UnicodeString oracle_message(const std::string& message_template, const _qz_LOG_log_entry_imp& entry,
                                  const icu::Locale& locale) {
  const icu::UnicodeString wide = from_utf8(message_template);
  const PlainTokens tokens =
      oracle_wide_tokens(std::u16string(wide.getBuffer(), static_cast<std::size_t>(wide.length()))).tokens;
  std::string pattern;
  std::vector<icu::Formattable> arguments;
  std::size_t formats = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].type == 0) pattern += tokens[i].text;
    if (tokens[i].type != 1) continue;
    ++formats;
    const auto piece = kPatternPieces.find(tokens[i].text[0]);
    if (piece == kPatternPieces.end() || i + 1 == tokens.size() || tokens[i + 1].type != 2) continue;
    pattern += "{" + std::to_string(arguments.size()) + piece->second + "}";
    arguments.push_back(argument_value(entry, tokens[i + 1].text));
  }
  arguments.resize(formats);
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(from_utf8(pattern), locale, status);
  icu::UnicodeString result;
  icu::FieldPosition position;
  format.format(arguments.data(), static_cast<int>(arguments.size()), result, position, status);
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status) << " for " << pattern;
  return result;
}

}  // namespace qz_test
