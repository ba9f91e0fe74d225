#include <unicode/ucnv.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>

#include "qzlog/logcfg.h"
#include "tests/message/fresh_process.h"
#include "tests/message/icu_templates.h"
#include "tests/message/readable_messages.h"
#include "tests/support/rounds.h"

using namespace qzlog;

namespace qz_test {
namespace {

// ---- random ----

/// Draws templates and values of every kind, also those that ICU refuses.
class RandomTemplates {
 public:
  RandomTemplates(SeededRandom& random, _qz_LOG_log_entry_imp& entry) : random_(random), entry_(entry) {}

  icu::UnicodeString text() {
    icu::UnicodeString text;
    const int halves = random_.one_in(6) ? 3 : 0;
    for (long long left = random_.between(0, random_.one_in(20) ? 12 : 5); left > 0; --left) {
      while (random_.one_in(2)) text += literal(halves);
      // A reference that begins where another one ends is not taken for one.
      if (text.endsWith(u"%")) text += u"|";
      text += reference();
    }
    while (random_.one_in(2)) text += literal(halves);
    if (text.endsWith(u"%")) text += u"|";
    return random_.one_in(4) ? text : text + kEnd;
  }

  void set_values() {
    const auto bits = static_cast<unsigned>(random_.between(0, (1LL << random_.between(1, 32)) - 1));
    entry_.add_attrib_bool("TypeBool", random_.one_in(2));
    entry_.add_attrib_1u("TypeUInt1", static_cast<unsigned char>(bits));
    entry_.add_attrib_1("TypeSInt1", static_cast<char>(bits));
    entry_.add_attrib_2u("TypeUInt2", static_cast<unsigned short>(bits));
    entry_.add_attrib_2("TypeSInt2", static_cast<short>(bits));
    entry_.add_attrib_4u("TypeUInt4", bits);
    entry_.add_attrib_4u("Größe", ~bits);
    entry_.add_attrib_4("TypeSInt4", static_cast<int>(random_.one_in(2) ? bits : 0U - bits));
    entry_.add_attrib_float8("TypeFloat", number());
    qz_Time time = qz_Time::from_unix_seconds(random_.between(0, 4000000000LL));
    time.GMT_to_local();
    entry_.add_attrib_time("TypeDate", time);
    entry_.add_attrib_time("TypeTime", time);
    if (random_.one_in(5)) entry_.remove_attrib("TypeSInt4");
    set_texts();
  }

 private:
  double number() {
    const double special[] = {0.0,     -0.0,    0.5,  std::nan(""), std::numeric_limits<double>::infinity(),
                              DBL_MAX, DBL_MIN, -1e15};
    if (random_.one_in(3)) return special[random_.between(0, 7)];
    return static_cast<double>(random_.between(-1000000000, 1000000000)) / 1024.0;
  }

  void set_texts() {
    const char* const texts[] = {"",          "plain", "{0} '%漢", "\xFF\xC3", "\xED\xA0\xBD", "\xED\xB8\x80",
                                 "a\xE6\xBC", "😀é",    "#|''{"};
    entry_.add_attrib_str("TypeChar32", texts[random_.between(0, 8)], true);
    entry_.add_attrib_mbstr("TypeMBChar64", texts[random_.between(0, 8)], true);
    entry_.add_attrib_mbstr("名前", random_.text(static_cast<std::size_t>(random_.between(0, 12))).c_str(), true);
  }

  /// With `halves` also halves of surrogate pairs.
  icu::UnicodeString literal(int halves) {
    static const char16_t* const kLiterals[] = {u"text ",
                                                u", ",
                                                u"é漢😀",
                                                u"''",
                                                u"'",
                                                u"it''s ",
                                                u"#",
                                                u"|",
                                                u" %%",
                                                u"'{'",
                                                u"'}'",
                                                u"{0}",
                                                u"{1}",
                                                u"{7}",
                                                u"{ 0 }",
                                                u"{0,number}",
                                                u"{1,number,integer}",
                                                u"{0,number,##########}",
                                                u"{1,date,short}",
                                                u"{0,choice,0#none|1#one|1<many {0}}",
                                                u"{0,plural,one{# x}other{# y {1}}}",
                                                u"{0,select,plain{P}other{O}}",
                                                u"{",
                                                u"}",
                                                u"{name}",
                                                u"<b>",
                                                u"'{0}'"};
    if (halves != 0 && random_.one_in(2)) return icu::UnicodeString(random_.one_in(2) ? UChar{0xD83D} : UChar{0xDE00});
    // What makes most patterns invalid is rarer.
    return kLiterals[random_.one_in(4) ? random_.between(0, 26) : random_.between(0, 14)];
  }

  icu::UnicodeString reference() {
    static const char16_t* const kReferences[] = {
        u"%s%TypeChar32%", u"%s%TypeMBChar64%", u"%s%名前%",      u"%d%TypeSInt4%", u"%u%TypeUInt4%", u"%d%TypeUInt1%",
        u"%d%TypeSInt1%",  u"%u%TypeUInt2%",    u"%d%TypeSInt2%", u"%d%TypeBool%",  u"%u%Größe%",     u"%d%Global%",
        u"%f%TypeFloat%",  u"%C%TypeFloat%",    u"%C%TypeSInt4%", u"%P%TypeFloat%", u"%P%TypeUInt4%", u"%D%TypeDate%",
        u"%T%TypeTime%",   u"%D%TIMESTAMP%",    u"%x%TypeBool%"};
    return kReferences[random_.one_in(3) ? random_.between(0, 20) : random_.between(0, 11)];
  }

  SeededRandom& random_;
  _qz_LOG_log_entry_imp& entry_;
};

constexpr const char* kLocales[] = {"en_US", "de_DE", "fr_FR", "ar_EG", "ja_JP",
                                    "fa_IR", "hi_IN", "sv_SE", "pl_PL", "en@numbers=roman"};
constexpr const char* kCodePages[] = {"",       "UTF-8",   "utf8",        "ISO-8859-1", "windows-1251", "Shift_JIS",
                                      "EUC-JP", "GB18030", "ISO-2022-JP", "CESU-8",     "UTF-7",        "no such page"};

/// The text as ICU encodes it.
std::string encoded(const icu::UnicodeString& text, const char* code_page) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* const converter = ucnv_open(code_page[0] != '\0' ? code_page : nullptr, &status);
  std::string bytes(static_cast<std::size_t>(text.length()) * 8 + 32, '\0');
  const int length = ucnv_fromUChars(converter, bytes.data(), static_cast<int>(bytes.size()), text.getBuffer(),
                                     text.length(), &status);
  EXPECT_TRUE(U_SUCCESS(status)) << code_page;
  ucnv_close(converter);
  return bytes.substr(0, static_cast<std::size_t>(length));
}

TEST_F(IcuTemplates, RandomTemplatesValuesLocalesAndCodePages_AsTheOracle) {
  SeededRandom random;
  RandomTemplates drawn(random, entry_);
  int ends[3] = {};
  for (int i = 0; i < rounds(2500) && !testing::Test::HasFailure(); ++i) {
    set_template(drawn.text());
    for (int round = 0; round < 3; ++round) {
      const char* const locale = kLocales[random.between(0, 9)];
      RenderingSettings::set_icu_locale(locale);
      qz_LOG_LogConfig::SetCodePage("UTF-8");
      drawn.set_values();
      qz_LOG_LogConfig::SetCodePage(kCodePages[random.one_in(2) ? random.between(0, 11) : 1]);
      ++ends[static_cast<int>(expect_as_oracle(icu::Locale(locale)))];
    }
  }
  // Most of what is drawn has to be of use.
  EXPECT_GT(ends[static_cast<int>(OracleEnd::kMessage)], rounds(3000));
  EXPECT_GT(ends[static_cast<int>(OracleEnd::kPatternRefused)], rounds(50));
}

/// Entries with the definition of the table, which the forms for callers render.
class CallersForms {
 public:
  CallersForms() : random_(), drawn_(random_, rendering_.entry()) {}

  /// Draws templates; `check(entry, message by the oracle)` for those that give a message.
  template <typename Check>
  void draw(int count, Check check) {
    auto* const definition = qz_LOG_LogConfig::GetDefinitionTable()->find_entry(MessageRendering::kEntryId);
    for (int i = 0; i < rounds(count) && !testing::Test::HasFailure(); ++i) {
      const icu::UnicodeString text = drawn_.text();
      const char* const locale = kLocales[random_.between(0, 9)];
      RenderingSettings::set_icu_locale(locale);
      qz_LOG_LogConfig::SetCodePage("UTF-8");
      drawn_.set_values();
      definition->set_default_msg_text(to_utf8(text).c_str());
      qz_LOG_LogConfig::SetCodePage(kCodePages[random_.one_in(2) ? random_.between(0, 10) : 1]);
      const icu::UnicodeString decoded = from_utf8(to_utf8(text));
      const OracleMessage wanted = oracle_result(decoded, rendering_.entry(), icu::Locale(locale));
      SCOPED_TRACE(escaped(decoded) + " in " + locale + ", " + qz_LOG_LogConfig::GetCodePage());
      if (wanted.end == OracleEnd::kMessage) check(rendering_.entry(), wanted.text);
    }
  }

 private:
  MessageRendering rendering_;
  SeededRandom random_;
  RandomTemplates drawn_;
};

TEST(CallersForms, FormatMessageOfRandomTemplates_TheOraclesTextInTheCodePage) {
  CallersForms().draw(2500, [](const _qz_LOG_log_entry_imp& entry, const icu::UnicodeString& wanted) {
    EXPECT_EQ(entry.format_message(false, 0), encoded(wanted, qz_LOG_LogConfig::GetCodePage()));
  });
}

void expect_buffer_form_in(const char* code_page) {
  expect_in_fresh_process([code_page] {
    CallersForms forms;
    qz_LOG_LogConfig::SetCodePage(code_page);
    // The first message of the process decides the code page of all.
    const _qz_LOG_log_entry_imp first(MessageRendering::kEntryId, 0);
    buffer_form(first);
    forms.draw(1500, [code_page](const _qz_LOG_log_entry_imp& entry, const icu::UnicodeString& wanted) {
      const std::string bytes = encoded(wanted, code_page);
      ASSERT_LT(bytes.size(), 4096U);
      MarkedBuffer buffer(bytes.size() + 20);
      EXPECT_EQ(entry.get_readable_message(buffer.data(), static_cast<long>(bytes.size()) + 1, false, 0),
                buffer.data());
      EXPECT_EQ(buffer.memory().substr(0, bytes.size()), bytes);
      EXPECT_EQ(buffer.memory()[bytes.size()], '\0');
      EXPECT_EQ(buffer.memory().substr(bytes.size() + 2), std::string(18, '#'));
    });
  });
}

TEST(CallersForms, BufferFormOfRandomTemplatesInUtf8_TheOraclesTextAndNothingBehindIt) {
  expect_buffer_form_in("UTF-8");
}
TEST(CallersForms, BufferFormOfRandomTemplatesInTheDefaultPage_TheOraclesText) { expect_buffer_form_in(""); }
TEST(CallersForms, BufferFormOfRandomTemplatesInShiftJis_TheOraclesText) { expect_buffer_form_in("Shift_JIS"); }

}  // namespace
}  // namespace qz_test
