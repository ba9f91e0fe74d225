#ifndef QZLOG_TESTS_MESSAGE_ICU_TEMPLATES_H
#define QZLOG_TESTS_MESSAGE_ICU_TEMPLATES_H

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <memory>
#include <string>

#include "message/icu_template.h"
#include "message/logmsg.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/support.h"

namespace qz_test {

inline constexpr const char* kPatternText =
    "<QZX_logging_internal_error> _qz_LOG_log_message::get_message:  MessageFormat constructor failed! most caused by "
    "number of attribute in message txt more than 9. (now ICU only support 0-9 tags)";

inline std::string escaped(const icu::UnicodeString& text) {
  std::string result;
  for (int i = 0; i < text.length(); ++i) {
    const UChar unit = text.charAt(i);
    char code[8];
    std::snprintf(code, sizeof(code), unit >= 0x20 && unit < 0x7F ? "%c" : "\\u%04X", static_cast<unsigned>(unit));
    result += code;
  }
  return result;
}

/// Text behind the last reference is not shown: a reference that is left out makes it be shown.
inline constexpr char16_t kEnd[] = u"%_%TIMESTAMP%";

/// Renders templates in UTF-16, which no file could hold: those of catalogs may have halves of surrogate pairs.
class IcuTemplates : public testing::Test {
 protected:
  /// The template stays with the definition until the next one is set.
  void set_template(const icu::UnicodeString& text) {
    definition_.set_default_msg_text("replaced by the one below");
    definition_.get_default_message().keep_prepared(
        qzlog::MessagePath::kIcu, qzlog::PreparedMessageRef(new qzlog::IcuTemplate(text, definition_)));
    template_ = text;
  }
  icu::UnicodeString message() const { return _qz_LOG_log_message::get_message(entry_, &definition_, false, 0); }

  /// What the library makes of the template is what a formatter made on the spot does.
  OracleEnd expect_as_oracle(const icu::Locale& locale = icu::Locale("en_US")) {
    const OracleMessage wanted = oracle_result(template_, entry_, locale);
    if (wanted.end == OracleEnd::kPatternRefused) {
      EXPECT_EQ(thrown_by([&] { message(); }), thrown<QZX_logging_internal_error>(kPatternText)) << escaped(template_);
    } else if (wanted.end == OracleEnd::kMessage) {
      EXPECT_EQ(escaped(message()), escaped(wanted.text)) << escaped(template_) << " in " << locale.getName();
    }
    // The process ends where ICU cannot format.
    return wanted.end;
  }
  void expect_message(const icu::UnicodeString& text, const icu::UnicodeString& wanted) {
    set_template(text);
    EXPECT_EQ(escaped(message()), escaped(wanted)) << escaped(text);
    expect_as_oracle();
  }

  MessageRendering rendering_;
  _qz_LOG_log_entry_imp& entry_ = rendering_.entry();
  _qz_LOG_log_definition& definition_ = rendering_.definition();
  icu::UnicodeString template_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_ICU_TEMPLATES_H
