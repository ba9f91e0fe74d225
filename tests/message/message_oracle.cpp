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
      oracle_wide_cut(std::u16string(message_template.getBuffer(), static_cast<std::size_t>(message_template.length())))
          .tokens;
  icu::UnicodeString pattern;
  std::vector<icu::Formattable> arguments;
  std::size_t formats = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const std::u16string& text = tokens[i].text;
    if (tokens[i].type == kTextToken) pattern.append(text.data(), static_cast<int>(text.size()));
    if (tokens[i].type != kFormatToken) continue;
    ++formats;
    const auto piece = kPatternPieces.find(static_cast<char>(text[0]));
    if (piece == kPatternPieces.end() || i + 1 == tokens.size() || tokens[i + 1].type != kNameToken) continue;
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
