#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include <unicode/locid.h>

#include "qzlog/logcfg.h"
#include "tests/tools/shown/shown_fixture.h"
#include "tools/options/reader_locale.h"
#include "tools/options/reader_zone.h"

namespace {

using qzlog_test::ShownFixture;
using qzlog_tool::check_reader_locale;
using qzlog_tool::check_time_zone;
using qzlog_tool::find_reader_locale;
using qzlog_tool::ShownOptions;

TEST(ReaderLocale, NamesOfIcu_AreTaken) {
  const struct {
    const char* name;
    const char* icu;
    const char* fallback;
  } cases[] = {
      {"de_DE", "de_DE", ""},
      {"de-DE", "de_DE", ""},
      {"de_DE.UTF-8", "de_DE", ""},
      {"de_AT", "de_AT", ""},
      {"de-AT", "de_AT", ""},
      {"de_AT.UTF-8", "de_AT", ""},
      {"zh-Hant", "zh_Hant", ""},
      {"zh_Hant_HK", "zh_Hant_HK", ""},
      {"zh-HK", "zh_HK", ""},
      {"sr-Latn-RS", "sr_Latn_RS", ""},
      {"fr", "fr", ""},
      {"pt", "pt", ""},
      {"de_XX", "de_XX", "de"},
      {"fr-JP", "fr_JP", "fr"},
      {"de_DE@calendar=buddhist", "de_DE@calendar=buddhist", ""},
      {"de_DE.UTF-8@calendar=buddhist", "de_DE@calendar=buddhist", ""},
      {"de@calendar=buddhist", "de@calendar=buddhist", ""},
      {"de-DE-u-ca-buddhist", "de_DE@calendar=buddhist", ""},
      {"ja-JP-u-ca-japanese", "ja_JP@calendar=japanese", ""},
  };
  for (const auto& each : cases) {
    const auto locale = find_reader_locale(each.name);
    ASSERT_TRUE(locale) << each.name;
    EXPECT_EQ(locale->name, each.icu) << each.name;
    EXPECT_EQ(locale->fallback, each.fallback) << each.name;
    EXPECT_EQ(check_reader_locale(each.name), "");
  }
}

TEST(ReaderLocale, OtherNames_AreRefusedWithASuggestion) {
  EXPECT_EQ(check_reader_locale("de_DR"), "");
  EXPECT_EQ(check_reader_locale("qq_QQ").substr(0, 23), "unknown locale 'qq_QQ';");
  EXPECT_EQ(check_reader_locale("xx"), "unknown locale 'xx'; locales are called as in de_AT or zh-Hant");
  EXPECT_EQ(check_reader_locale("../de"), "unknown locale '../de'; locales are called as in de_AT or zh-Hant");
  for (const char* const name : {"", "_DE", "-", "@", "de/AT", "\033", "Deutsch"}) {
    EXPECT_NE(check_reader_locale(name), "") << name;
  }
  EXPECT_NE(check_reader_locale(std::string(1000, 'd')), "");
}

TEST(ReaderZone, Names_AreThoseOfTheDatabase) {
  for (const char* const name : {"Europe/Berlin", "UTC", "Asia/Kathmandu", "America/Argentina/Buenos_Aires"}) {
    EXPECT_EQ(check_time_zone(name), "") << name;
  }
  EXPECT_EQ(check_time_zone("Europe/Berlln"), "unknown time zone 'Europe/Berlln'; did you mean 'Europe/Berlin'?");
  EXPECT_EQ(check_time_zone("europe/berlin"), "unknown time zone 'europe/berlin'; did you mean 'Europe/Berlin'?");
  EXPECT_EQ(check_time_zone("GMT+02:00"),
            "unknown time zone 'GMT+02:00'; zones are called as in Europe/Berlin, or UTC");
  for (const char* const name : {"", "Etc/Unknown", "CET-1CEST,M3.5.0,M10.5.0/3", ":/etc/localtime", "\033", "Europe",
                                 "/usr/share/zoneinfo/Europe/Berlin", "../zoneinfo/UTC", "tzdata.zi"}) {
    EXPECT_NE(check_time_zone(name), "") << name;
  }
  for (const std::size_t size : {255U, 256U, 5000U}) EXPECT_NE(check_time_zone(std::string(size, 'Z')), "") << size;
}

/// Brings back what the process has.
class ReaderSettings : public ShownFixture {
 protected:
  ~ReaderSettings() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(before_, status);
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  }

  static constexpr const char* kLine =
      "{\"id\":1001,\"level\":7,\"time\":\"2026-11-21T08:15:29Z\",\"attributes\":{\"Name\":\"v\",\"Free\":12}}\n";

  std::string shown_with(const ShownOptions& options) {
    testing::internal::CaptureStderr();
    use_reader_settings(options);
    said_ = testing::internal::GetCapturedStderr();
    return show(kLine, options);
  }

  icu::Locale before_ = icu::Locale::getDefault();
  std::string said_;
};

TEST_F(ReaderSettings, LocaleThatTheLibraryLacks_IsThatOfMessagesToo) {
  ShownOptions options;
  options.locale = "ar-EG";
  EXPECT_EQ(shown_with(options), "Disk v is full: \u0661\u0662 blocks free\n");
  EXPECT_EQ(said_, "");
  options.locale = "de-AT";
  EXPECT_EQ(shown_with(options), "Disk v is full: 12 blocks free\n");
}

TEST_F(ReaderSettings, Keywords_AreThoseOfTimesAndMessages) {
  ShownOptions options;
  options.format = "{time} {message}";
  options.time_style = "locale";
  options.utc = true;
  for (const char* const name : {"de_DE@calendar=buddhist", "de-DE-u-ca-buddhist"}) {
    options.locale = name;
    EXPECT_NE(shown_with(options).find("21.11.2569 "), std::string::npos) << name << ": " << shown_with(options);
    EXPECT_EQ(said_, "");
  }
  options.locale = "ar_EG@numbers=latn";
  EXPECT_NE(shown_with(options).find("Disk v is full: 12 blocks free"), std::string::npos) << shown_with(options);
}

TEST_F(ReaderSettings, Fallback_IsTold) {
  ShownOptions options;
  options.locale = "ar-JP";
  options.format = "{time}";
  options.time_style = "locale";
  options.utc = true;
  shown_with(options);
  EXPECT_EQ(said_, "qzlog: there is no locale 'ar-JP'; numbers and dates are those of 'ar'\n");
}

TEST_F(ReaderSettings, ZoneOfTheReader_IsThatOfTheProcess) {
  ShownOptions options;
  options.time_zone = "America/New_York";
  options.output = "short";
  EXPECT_EQ(shown_with(options), "2026-11-21T03:15:29-05:00 error    DISK_FULL Disk v is full: 12 blocks free\n");
  const std::time_t moment = 1'795'249'730;
  std::tm fields = {};
  ::localtime_r(&moment, &fields);
  EXPECT_EQ(fields.tm_gmtoff, -5 * 3600);
  EXPECT_EQ(said_, "");
}

// ICU has zones of its own.
TEST_F(ReaderSettings, ZoneThatTheSystemLacks_IsThatOfTimesBesideMessages) {
  const qz_test::TempDir empty;
  const qz_test::SetEnv folder("TZDIR", empty.path());
  ShownOptions options;
  options.time_zone = "Pacific/Chatham";
  options.output = "short";
  EXPECT_EQ(shown_with(options), "2026-11-21T22:00:29+13:45 error    DISK_FULL Disk v is full: 12 blocks free\n");
  EXPECT_EQ(said_,
            "qzlog: the system does not have the time zone 'Pacific/Chatham'; only the times that are shown beside "
            "messages are in it\n");
}

TEST_F(ReaderSettings, CatalogWithoutTheLanguage_IsTold) {
  const qz_test::TempDir catalog;
  catalog.write("root.res", "");
  catalog.write("fr.res", "");
  const auto told = [&](const char* locale) {
    testing::internal::CaptureStderr();
    qzlog_tool::tell_of_catalog_fallback(catalog.path(), locale);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(told("fr_FR"), "");
  EXPECT_EQ(told("fr-CA"), "");
  EXPECT_EQ(told("fr@calendar=buddhist"), "");
  EXPECT_EQ(told(""), "");
  EXPECT_EQ(told("de-AT"), "qzlog: the catalog '" + catalog.path() +
                               "' has no messages for the locale 'de-AT'; what it falls back to is shown\n");
}

}  // namespace
