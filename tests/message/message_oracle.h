#ifndef QZLOG_TESTS_MESSAGE_MESSAGE_ORACLE_H
#define QZLOG_TESTS_MESSAGE_MESSAGE_ORACLE_H

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <string>
#include <vector>

#include "entry/logentry_i.h"

namespace qz_test {

/// The grammar of templates and the rules of rendering through ICU once more, written down slowly: character by
/// character, without sharing anything with the library.

/// A token in a form that can be compared and printed: its type code and its text in UTF-8 (a format: one byte).
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

PlainResult oracle_wide_tokens(const std::u16string& text);
PlainResult oracle_narrow_tokens(const std::string& text);

/// How rendering ended: ICU, or the limit of ten references, refuses the pattern; or ICU cannot format the values.
enum class OracleEnd { kMessage, kPatternRefused, kCannotFormat };
struct OracleMessage {
  OracleEnd end;
  icu::UnicodeString text;
};

/// The message of an entry by an icu::MessageFormat made on the spot for `locale`, with texts in the code page of the
/// settings. Every reference of the template has to be one that the definition of the entry, which has the types as
/// names, allows.
OracleMessage oracle_result(const icu::UnicodeString& message_template, const _qz_LOG_log_entry_imp& entry,
                            const icu::Locale& locale);
/// The same for a template in UTF-8 that gives a message.
icu::UnicodeString oracle_message(const std::string& message_template, const _qz_LOG_log_entry_imp& entry,
                                  const icu::Locale& locale);

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_MESSAGE_ORACLE_H
