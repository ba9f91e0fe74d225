#include "message/icu_template.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

#include "qzlog/logcfg.h"
#include "tests/message/icu_templates.h"

using namespace qzlog;

namespace qz_test {
namespace {

// ---- what is assembled ----

TEST_F(IcuTemplates, PlainPatterns_AssembledFromTheirParts) {
  const struct {
    const char16_t* text;
    bool assembled;
    bool of_locale;
    bool formatted;
  } cases[] = {{u"", true, false, false},
               {u"text", true, false, false},
               {u"%s%TypeChar32%", true, false, false},
               {u"a %d%TypeUInt4% b %s%TypeChar32% c", true, true, false},
               {u"%C%TypeUInt4% %D%TypeDate%", true, true, false},
               {u"{0,number} %f%TypeFloat%", true, true, false},
               {u"{0,number,#} %f%TypeFloat%", true, true, true},
               {u"{0,date,full} %D%TypeDate%", true, true, true},
               {u"{1,number} %d%TypeUInt4% %s%TypeChar32%", true, true, true},
               {u"it''s {0} %s%TypeChar32%", true, false, false},
               {u"{0} %d%TypeUInt4%", false, true, false},
               {u"{1} %s%TypeChar32%", false, false, false},
               {u"{name} %s%TypeChar32%", false, false, false},
               {u"{0,choice,0#a|1#b} %d%TypeUInt4%", false, false, false},
               {u"{ %s%TypeChar32%", false, false, false}};
  for (const auto& c : cases) {
    const IcuTemplate made(c.text, definition_);
    EXPECT_EQ(made.can_be_assembled(), c.assembled) << escaped(c.text);
    if (!c.assembled) continue;
    EXPECT_EQ(made.has_locale_parts(), c.of_locale) << escaped(c.text);
    EXPECT_EQ(made.has_formatted_parts(), c.formatted) << escaped(c.text);
  }
}

TEST_F(IcuTemplates, Serials_AllDifferent) {
  const IcuTemplate first(u"a", definition_);
  const IcuTemplate second(u"a", definition_);
  EXPECT_NE(first.serial(), second.serial());
}

// ---- literal text ----

TEST_F(IcuTemplates, ApostrophesAndBraces_AsIcuReadsThem) {
  entry_.add_attrib_str("TypeChar32", "it's {0} ''", true);
  const char16_t* const texts[] = {
      u"'",      u"''", u"'''", u"a'b", u"'{'",   u"'{0}'",      u"'{0} open", u"{0}",     u"{ 0 }", u"{0",
      u"0}",     u"}",  u"'}'", u"{}",  u"{{0}}", u"{00}",       u"{-1}",      u"{7}",     u"{1}",   u"{65536}",
      u"{name}", u"#",  u"'#'", u"|",   u" %%",   u"{0}'{'0'}'", u"'a{0}",     u"''{0}''", u"'''{0}"};
  for (const char16_t* const text : texts) {
    for (const char16_t* const reference : {u"%s%TypeChar32%", u"%d%TypeUInt4%", u"%C%TypeUInt4%", u""}) {
      set_template(icu::UnicodeString(text) + reference);
      expect_as_oracle();
      set_template(icu::UnicodeString(reference) + text + kEnd);
      expect_as_oracle();
      set_template(icu::UnicodeString(text) + reference + text + kEnd);
      expect_as_oracle();
    }
  }
}

TEST_F(IcuTemplates, HandWrittenArgumentOfAReference_AsIcuFormatsIt) {
  entry_.add_attrib_str("TypeChar32", "text", true);
  entry_.add_attrib_4("TypeSInt4", -1234567);
  entry_.add_attrib_float8("TypeFloat", 0.5);
  const char16_t* const texts[] = {u"{0}",
                                   u"{0,number}",
                                   u"{0,number,integer}",
                                   u"{0,number,##########}",
                                   u"{0,number, ##########}",
                                   u"{0,number,##########.##}",
                                   u"{0,NUMBER,##########}",
                                   u"{0,number,percent}",
                                   u"{0,date}",
                                   u"{0,time,short}",
                                   u"{0,date,yyyy}",
                                   u"{0,spellout}",
                                   u"{0,ordinal}",
                                   u"{0,duration}",
                                   u"{0,unknown}",
                                   u"{0,choice,-1#minus|0#none|1#one|1<many {0}}",
                                   u"{0,plural,=1{one}other{# of '{'#'}'}}",
                                   u"{0,plural,offset:1 other{#}}",
                                   u"{0,select,text{is text}other{is other}}",
                                   u"{0,selectordinal,one{#st}other{#th}}",
                                   u"{0,number,'quoted {' #}",
                                   u"{1}",
                                   u"{1,number,integer}"};
  const char16_t* const references[] = {u"%s%TypeChar32%",
                                        u"%d%TypeSInt4%",
                                        u"%C%TypeSInt4%",
                                        u"%P%TypeFloat%",
                                        u"%f%TypeFloat%",
                                        u"%D%TypeDate%",
                                        u"%d%TypeSInt4% %s%TypeChar32%"};
  int messages = 0;
  for (const char16_t* const text : texts) {
    for (const char16_t* const reference : references) {
      set_template(icu::UnicodeString(text) + u" " + reference);
      messages += expect_as_oracle() == OracleEnd::kMessage ? 1 : 0;
      set_template(icu::UnicodeString(reference) + text + u"!" + kEnd);
      messages += expect_as_oracle() == OracleEnd::kMessage ? 1 : 0;
    }
  }
  EXPECT_GT(messages, 150);
}

TEST_F(IcuTemplates, HalvesOfPairsInTheTextAndInValues_JoinedAsIcuJoinsThem) {
  qz_LOG_LogConfig::SetCodePage("CESU-8");
  const icu::UnicodeString high(UChar{0xD83D});
  const icu::UnicodeString low(UChar{0xDE00});
  const icu::UnicodeString name(u"%s%TypeMBChar64%");
  // The halves of a pair in CESU-8, a pair, and nothing.
  for (const char* const value : {"\xED\xA0\xBD", "\xED\xB8\x80", "\xED\xA0\xBD\xED\xB8\x80", "", "a"}) {
    entry_.add_attrib_mbstr("TypeMBChar64", value, true);
    for (const icu::UnicodeString& text : {name, high + name, name + low, high + name + low, low + name + high,
                                           high + u"%d%TypeUInt4%" + low, name + u"," + name, high + low, high, low}) {
      set_template(text + kEnd);
      EXPECT_EQ(expect_as_oracle(), OracleEnd::kMessage);
    }
  }
}

TEST_F(IcuTemplates, ValuesInUtf8ThatIsNot_ReplacedAsIcuReplacesThem) {
  for (const char* const code_page : {"UTF-8", "utf8", ""}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    for (const char* const value : {"\xFF", "a\xC3", "\xED\xA0\xBD", "\xF0\x9F\x98", "\xC0\x80", "\xF4\x90\x80\x80",
                                    "é\x80漢", "\xEF\xBB\xBFmark", "\xF8\x88\x80\x80\x80"}) {
      entry_.add_attrib_mbstr("TypeMBChar64", value, true);
      entry_.add_attrib_str("TypeChar32", value, true);
      set_template(icu::UnicodeString(u"<%s%TypeMBChar64%|%s%TypeChar32%>") + kEnd);
      EXPECT_EQ(expect_as_oracle(), OracleEnd::kMessage);
      set_template(icu::UnicodeString(u"<%s%TypeMBChar64%|{7}>") + kEnd);
      EXPECT_EQ(expect_as_oracle(), OracleEnd::kMessage);
    }
  }
}

// ---- values ----

TEST_F(IcuTemplates, ExtremesOfEveryType_AsTheOracleInSeveralLocales) {
  const struct {
    unsigned bits;
    double number;
    const char* time;
  } cases[] = {{0U, 0.0, "1970-01-01 00:00:00"},
               {0xFFFFFFFFU, -0.0, "2038-01-19 03:14:08"},
               {0x80000000U, DBL_MAX, "1900-01-01 00:00:00"},
               {0x7FFFFFFFU, -DBL_MAX, "9999-12-31 23:59:59"},
               {0x80U, 5e-324, "2026-02-28 23:59:59"},
               {0x8000U, std::numeric_limits<double>::infinity(), "2024-02-29 12:00:00"},
               {0x7FFFU, std::nan(""), "2000-01-01 00:00:00"}};
  for (const auto& c : cases) {
    entry_.add_attrib_bool("TypeBool", c.bits != 0);
    entry_.add_attrib_1u("TypeUInt1", static_cast<unsigned char>(c.bits));
    entry_.add_attrib_1("TypeSInt1", static_cast<char>(c.bits));
    entry_.add_attrib_2u("TypeUInt2", static_cast<unsigned short>(c.bits));
    entry_.add_attrib_2("TypeSInt2", static_cast<short>(c.bits));
    entry_.add_attrib_4u("TypeUInt4", c.bits);
    entry_.add_attrib_4("TypeSInt4", static_cast<int>(c.bits));
    entry_.add_attrib_float8("TypeFloat", c.number);
    qz_Time time;
    ASSERT_TRUE(time.set_to_string_value(c.time)) << c.time;
    entry_.add_attrib_time("TypeTimestamp", time);
    for (const char* const locale :
         {"en_US", "de_DE", "ar_EG", "ja_JP", "fa_IR", "hi_IN", "sv_SE", "en@numbers=roman"}) {
      RenderingSettings::set_icu_locale(locale);
      for (const char16_t* const text :
           {u"%d%TypeBool%|%d%TypeUInt1%|%d%TypeSInt1%|%u%TypeUInt2%|%d%TypeSInt2%|%u%TypeUInt4%|%d%TypeSInt4%",
            u"%C%TypeUInt4%|%P%TypeSInt4%|%C%TypeFloat%|%f%TypeFloat%|%d%TypeUInt4%",
            u"%D%TypeTimestamp% %T%TypeTimestamp%", u"{7}%u%TypeUInt4%"}) {
        set_template(text);
        EXPECT_EQ(expect_as_oracle(icu::Locale(locale)), OracleEnd::kMessage);
      }
    }
  }
}

TEST_F(IcuTemplates, UnsignedNumbers_ShownNegativeFrom2147483648) {
  entry_.add_attrib_4u("TypeUInt4", UINT_MAX);
  expect_message(u"%u%TypeUInt4%", u"-1");
  entry_.add_attrib_4u("TypeUInt4", 2147483648U);
  expect_message(u"%d%TypeUInt4%", u"-2147483648");
}

TEST_F(IcuTemplates, IntegersInEveryLocaleOfIcu_AsTheOracle) {
  set_template(u"%d%TypeSInt4%|%u%TypeUInt4%|%d%TypeSInt2%");
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
    RenderingSettings::set_icu_locale(locales[i].getName());
    for (const int value : {INT_MIN, -1, 0, 7, 1234567890, INT_MAX}) {
      entry_.add_attrib_4("TypeSInt4", value);
      entry_.add_attrib_4u("TypeUInt4", static_cast<unsigned>(value));
      entry_.add_attrib_2("TypeSInt2", static_cast<short>(value));
      expect_as_oracle(locales[i]);
    }
  }
}

}  // namespace
}  // namespace qz_test
