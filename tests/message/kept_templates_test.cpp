#include <unicode/simpletz.h>

#include <iterator>
#include <string>

#include "qzlog/logcfg.h"
#include "tests/message/icu_templates.h"
#include "tests/support/definition_memory_limit.h"

using namespace qzlog;

namespace qz_test {
namespace {

// ---- templates that stay with their definition ----

constexpr const char16_t* kKeptTemplates[] = {u"plain it''s%_%TIMESTAMP%",
                                              u"%s%TypeMBChar64% %d%TypeSInt4%",
                                              u"%f%TypeFloat% %C%TypeSInt4% %P%TypeFloat%",
                                              u"%D%TypeTimestamp% %T%TypeTimestamp% %d%TypeSInt4%",
                                              u"{0,plural,one{#}few{# few}other{# other}} %d%TypeSInt4%",
                                              u"{0,date,full} {0,time,full} %d%TypeSInt4%",
                                              u"{7} %D%TypeTimestamp%"};

class KeptTemplates : public IcuTemplates {
 protected:
  KeptTemplates() {
    entry_.add_attrib_4("TypeSInt4", -1234567);
    entry_.add_attrib_float8("TypeFloat", 9876.5);
    entry_.add_attrib_mbstr("TypeMBChar64", "é", true);
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value("2026-11-21 08:15:30"));
    entry_.add_attrib_time("TypeTimestamp", time);
  }
  void expect_message_as_oracle(const char* locale) {
    EXPECT_EQ(expect_as_oracle(icu::Locale(locale)), OracleEnd::kMessage);
  }
};

TEST_F(KeptTemplates, IcusDefaultLocaleChanged_SeenAtOnce) {
  for (const char16_t* const text : kKeptTemplates) {
    set_template(text);
    for (const char* const locale : {"en_US", "de_DE", "ar_EG", "en_US", "ar_EG@numbers=latn", "en@numbers=roman",
                                     "ja_JP", "ja_JP@calendar=japanese", "de_DE"}) {
      RenderingSettings::set_icu_locale(locale);
      expect_message_as_oracle(locale);
      expect_message_as_oracle(locale);
    }
  }
}

TEST_F(KeptTemplates, LocaleOfTheSettingsChanged_SeenAtOnce) {
  for (const char16_t* const text : kKeptTemplates) {
    set_template(text);
    for (const auto locale : {QZ_LOCALE_DE_DE, QZ_LOCALE_AR_SA, QZ_LOCALE_JA_JP, QZ_LOCALE_DE_DE}) {
      qz_LOG_LogConfig::SetLocale(locale);
      expect_message_as_oracle(qz_I18N_get_locale_name(locale));
    }
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
    expect_message_as_oracle("en_US");
  }
}

TEST_F(KeptTemplates, MoreLocalesThanAreKept_EachItsOwn) {
  set_template(kKeptTemplates[1]);
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 600);
  for (const int i : {0, 1, 2}) {
    for (int number = i; number < count; number += 2) {
      RenderingSettings::set_icu_locale(locales[number].getName());
      ASSERT_EQ(expect_as_oracle(locales[number]), OracleEnd::kMessage);
    }
  }
}

TEST_F(KeptTemplates, IcusDefaultZoneChanged_SeenAtOnce) {
  for (const char16_t* const text : kKeptTemplates) {
    set_template(text);
    for (const char* const zone : {"UTC", "Asia/Kathmandu", "America/New_York", "GMT+05:30", "UTC", "Asia/Kathmandu"}) {
      RenderingSettings::set_icu_zone(zone);
      expect_message_as_oracle("en_US");
      expect_message_as_oracle("en_US");
    }
  }
}

TEST_F(KeptTemplates, ZoneOfTheSameNameWithAnotherOffset_SeenAtOnce) {
  set_template(kKeptTemplates[3]);
  for (const int hours : {1, 2, -7, 1}) {
    icu::TimeZone::adoptDefault(new icu::SimpleTimeZone(hours * 3600000, u"Mine"));
    expect_message_as_oracle("en_US");
  }
}

TEST_F(KeptTemplates, TimesThatChangeAndComeBack_EachItsOwn) {
  const char* const times[] = {"2026-11-21 08:15:30", "2026-11-21 08:15:30", "2026-11-21 08:15:31",
                               "2026-11-21 08:15:30", "1970-01-01 05:30:00", "2026-11-21 08:15:30",
                               "9999-12-31 23:59:59", "9999-12-31 23:59:59"};
  for (const char16_t* const text :
       {kKeptTemplates[3], kKeptTemplates[5], u"%T%TypeTime%|%D%TypeTimestamp%|%T%TypeTimestamp%|%C%TypeSInt4%",
        u"{0,date,yyyy} {1,time} {0,date,full} %T%TypeTime% %T%TypeTimestamp%"}) {
    set_template(text);
    for (std::size_t i = 0; i < std::size(times); ++i) {
      qz_Time time;
      ASSERT_TRUE(time.set_to_string_value(times[i]));
      entry_.add_attrib_time("TypeTimestamp", time);
      ASSERT_TRUE(time.set_to_string_value(times[i / 2]));
      entry_.add_attrib_time("TypeTime", time);
      expect_message_as_oracle("en_US");
    }
    RenderingSettings::set_icu_zone("UTC");
    expect_message_as_oracle("en_US");
    RenderingSettings::set_icu_locale("de_DE");
    expect_message_as_oracle("de_DE");
    RenderingSettings::set_icu_locale("en_US");
    RenderingSettings::set_icu_zone("Asia/Kathmandu");
    expect_message_as_oracle("en_US");
  }
}

TEST_F(KeptTemplates, TimesWhereMemoryFailsNowAndThen_NeverAnotherTimesText) {
  set_template(kKeptTemplates[3]);
  const int seconds[] = {0, 1, 0, 2, 2, 0};
  for (unsigned nth = 1; nth <= 8; ++nth) {
    for (const int second : seconds) {
      qz_Time time = qz_Time::from_unix_seconds(1795248930 + second);
      entry_.add_attrib_time("TypeTimestamp", time);
      try {
        const AllocationFailure failure(nth);
        message();
      } catch (const QZX_memory_alloc&) {
        continue;
      }
      expect_message_as_oracle("en_US");
    }
  }
  expect_message_as_oracle("en_US");
}

TEST_F(KeptTemplates, CodePageChanged_SeenAtOnce) {
  set_template(kKeptTemplates[1]);
  for (const char* const code_page :
       {"UTF-8", "ISO-8859-1", "windows-1251", "UTF-8", "Shift_JIS", "", "no such page", "utf8"}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    expect_message_as_oracle("en_US");
  }
}

TEST_F(KeptTemplates, CatalogOpenedChangedAndClosed_SeenAtOnce) {
  definition_.set_default_msg_id("greeting");
  _qz_LOG_log_definition::add_global_attr_info("Name", TypeMBChar64);
  definition_.set_default_msg_text("of the definition%_%TIMESTAMP%");
  const auto text = [&] { return to_utf8(message()); };
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(text(), "of the definition");
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
    EXPECT_EQ(text(), "Hello ");
    EXPECT_EQ(text(), "Hello ");
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
    EXPECT_EQ(text(), "Grüß Gott ");
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/without_root");
    EXPECT_EQ(text(), "Guten Tag ");
    qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  }
}

TEST_F(KeptTemplates, TextReplaced_TheNewOneOnBothPaths) {
  for (const char* const text :
       {"first %d%TypeSInt4%", "second %_%TIMESTAMP%", "first %d%TypeSInt4%", "", "%s%TypeMBChar64%"}) {
    definition_.set_default_msg_text(text);
    const std::string wanted = to_utf8(oracle_message(text, entry_, icu::Locale("en_US")));
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(to_utf8(message()), wanted);
      EXPECT_EQ(_qz_LOG_log_message::get_qzString_message(entry_, &definition_, false, 0).c_str(), wanted);
    }
  }
  definition_.set_default_msg_text(nullptr);
  EXPECT_EQ(to_utf8(message()), "");
}

TEST_F(KeptTemplates, TextReplacedByItself_Stays) {
  definition_.set_default_msg_text("same %d%TypeSInt4%");
  EXPECT_EQ(to_utf8(message()), "same -1234567");
  definition_.set_default_msg_text(definition_.get_default_msg_text());
  EXPECT_EQ(to_utf8(message()), "same -1234567");
}

TEST_F(KeptTemplates, TextReplacedWithoutMemory_FormerOneStays) {
  definition_.set_default_msg_text("former %d%TypeSInt4%");
  EXPECT_EQ(to_utf8(message()), "former -1234567");
  EXPECT_EQ(FailEveryAllocation([&] { definition_.set_default_msg_text("latter %d%TypeSInt4%"); },
                                [&] { EXPECT_EQ(to_utf8(message()), "former -1234567"); }),
            1U);
  EXPECT_EQ(to_utf8(message()), "latter -1234567");
}

TEST_F(KeptTemplates, AttributesMovedRemovedAndOfAnotherType_WhatTheDefinitionSaysNow) {
  definition_.set_default_msg_text("%d%TypeSInt4% %s%TypeMBChar64%");
  const auto narrow = [&] { return _qz_LOG_log_message::get_qzString_message(entry_, &definition_, false, 0); };
  EXPECT_EQ(to_utf8(message()), "-1234567 é");
  EXPECT_STREQ(narrow().c_str(), "-1234567 é");
  // To the end of the list: what stood behind it moves.
  definition_.add_attr_info("TypeBool", TypeBool, false, nullptr);
  EXPECT_EQ(to_utf8(message()), "-1234567 é");
  EXPECT_STREQ(narrow().c_str(), "-1234567 é");
  definition_.add_attr_info("TypeSInt4", TypeMBChar64, false, nullptr);
  const char* const invalid =
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  invalid format specifier for attribute "
      "\"TypeSInt4\"!";
  EXPECT_EQ(thrown_by([&] { message(); }), thrown<QZX_logging_invalid_message_string>(invalid));
  EXPECT_EQ(thrown_by([&] { narrow(); }), thrown<QZX_logging_invalid_message_string>(invalid));
  definition_.remove_attr_by_ptr(definition_.get_attr_info_by_name("TypeSInt4"));
  const char* const unknown =
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  unable to find attribute value for "
      "\"TypeSInt4\"!";
  EXPECT_EQ(thrown_by([&] { message(); }), thrown<QZX_logging_invalid_message_string>(unknown));
  EXPECT_EQ(thrown_by([&] { narrow(); }), thrown<QZX_logging_invalid_message_string>(unknown));
  definition_.add_attr_info("TypeSInt4", TypeSInt4, false, nullptr);
  EXPECT_EQ(to_utf8(message()), "-1234567 é");
  EXPECT_STREQ(narrow().c_str(), "-1234567 é");
}

TEST_F(KeptTemplates, SelectorMessages_EachItsOwnTemplate) {
  definition_.set_default_msg_text("default %d%TypeSInt4%");
  definition_.add_selector_message(1, 10, "", "first %d%TypeSInt4%");
  definition_.add_selector_message(2, 20, "", "second %s%TypeMBChar64%");
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(to_utf8(_qz_LOG_log_message::get_message(entry_, &definition_, false, 2)), "second é");
    EXPECT_EQ(to_utf8(_qz_LOG_log_message::get_message(entry_, &definition_, true, 2)), "default -1234567");
    EXPECT_EQ(to_utf8(_qz_LOG_log_message::get_message(entry_, &definition_, false, 1)), "first -1234567");
  }
}

TEST_F(KeptTemplates, FirstRenderingWithoutMemory_MemoryAllocAndTheNextOneRight) {
  // What one text was prepared as is not there for the next time.
  const DefinitionMemoryLimit nothing(0);
  for (const char* const text : {"%d%TypeSInt4% %s%TypeMBChar64% and more text than fits%_%TIMESTAMP%",
                                 "%C%TypeSInt4% it''s%_%TIMESTAMP%", "{0,plural,other{#}} %d%TypeSInt4%"}) {
    const std::string wanted = to_utf8(oracle_message(text, entry_, icu::Locale("en_US")));
    unsigned nth = 0;
    for (bool happened = true; happened;) {
      definition_.set_default_msg_text(text);
      ++nth;
      const auto thrown = thrown_by([&] {
        const AllocationFailure failure(nth);
        struct Note {
          ~Note() { happened = failure.happened(); }
          const AllocationFailure& failure;
          bool& happened;
        } note{failure, happened};
        message();
      });
      EXPECT_EQ(thrown, happened ? kNoMemory : "nothing") << text << " at allocation " << nth;
      ASSERT_EQ(to_utf8(message()), wanted) << "after allocation " << nth;
    }
    EXPECT_GT(nth, 5U) << text;
  }
}

}  // namespace
}  // namespace qz_test
