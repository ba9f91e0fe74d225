#ifndef QZLOG_TESTS_MESSAGE_MESSAGE_ORACLE_H
#define QZLOG_TESTS_MESSAGE_MESSAGE_ORACLE_H

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <string>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/support/template_tokens.h"

namespace qz_test {

/// The rules of rendering through ICU once more, written down slowly, without sharing anything with the library.

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
