#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/fresh_process.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"
#include "tests/support/working_folder.h"

namespace qz_test {
namespace {

const std::string kCatalogs = QZLOG_TEST_CATALOGS;
constexpr const char* kTableText = "< QZX_logging_missing_resource> Unable to access the string table resource.";
constexpr const char* kStringText =
    "<QZX_logging_missing_resource> Unable to retrieve the string from the string table.";

std::string locate_text(const std::string& path) {
  return "<QZX_logging_missing_resource> Unable to locate resource bundle \"" + path + "\".";
}

std::string string_of(const char* id) { return to_utf8(_qz_LOG_log_message::_get_string(id)); }

void open(const std::string& path) { _qz_LOG_log_message::set_resource_path(path.c_str()); }

std::string thrown_by_open(const std::string& path) {
  return thrown_by([&] { open(path); });
}
std::string thrown_by_lookup(const char* id) {
  return thrown_by([&] { string_of(id); });
}
std::string missing_resource(const std::string& text) { return thrown<QZX_logging_missing_resource>(text); }

class MessageCatalog : public testing::Test {
 protected:
  RenderingSettings settings_;
};

TEST(MessageCatalogAtStart, PathBeforeAnyCall_EmptyAndClosed) {
  expect_in_fresh_process([] {
    EXPECT_STREQ(_qz_LOG_log_message::get_resource_path(), "");
    EXPECT_FALSE(_qz_LOG_log_message::is_catalog_open());
  });
}

TEST_F(MessageCatalog, Opened_StringsAndPath) {
  open(kCatalogs + "/whole");
  EXPECT_TRUE(_qz_LOG_log_message::is_catalog_open());
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
  EXPECT_EQ(string_of("empty"), "");
}

TEST_F(MessageCatalog, Opened_WritesNoRecordOfItsOwn) {
  const DebugLogFile log(3);
  open(kCatalogs + "/whole");
  EXPECT_EQ(log.records(), Texts());
}

TEST_F(MessageCatalog, Closed_EmptyPathAndRecord) {
  open(kCatalogs + "/whole");
  const DebugLogFile log(2);
  _qz_LOG_log_message::set_resource_path(nullptr);
  EXPECT_EQ(log.records(), Texts({"logmsg:233 _qz_LOG_log_message::set_resource_path set resource_path=\"\"!\n"}));
  EXPECT_STREQ(_qz_LOG_log_message::get_resource_path(), "");
  EXPECT_FALSE(_qz_LOG_log_message::is_catalog_open());
}

TEST_F(MessageCatalog, ClosedTwice_RecordEachTime) {
  const DebugLogFile log(2);
  for (int i = 0; i < 2; ++i) _qz_LOG_log_message::set_resource_path(nullptr);
  const std::string record = "logmsg:233 _qz_LOG_log_message::set_resource_path set resource_path=\"\"!\n";
  EXPECT_EQ(log.records(), Texts({record, record}));
}

TEST_F(MessageCatalog, ClosedAtLevel1_NoRecord) {
  const DebugLogFile log(1);
  _qz_LOG_log_message::set_resource_path(nullptr);
  EXPECT_EQ(log.records(), Texts());
}

TEST_F(MessageCatalog, PathWithoutBundle_LocateTextAndRecord) {
  for (const std::string& path :
       {settings_.folder().path("nothing"), settings_.folder().path(), std::string("no_such_package"),
        kCatalogs + "/whole/root.res", kCatalogs + "/without_root"}) {
    const DebugLogFile log(1);
    EXPECT_EQ(thrown_by_open(path), missing_resource(locate_text(path)));
    EXPECT_EQ(log.records(), Texts({"logmsg:248 _qz_LOG_log_message::set_resource_path Unable to locate resource "
                                    "bundle " +
                                    path + "!\n"}));
  }
}

TEST_F(MessageCatalog, FolderOfTheWorkingDirectory_OpensWithAndWithoutItsDot) {
  const WorkingFolder folder(kCatalogs);
  const Texts paths = {"whole", "whole/", "./whole", "../" + kCatalogs.substr(kCatalogs.rfind('/') + 1) + "/whole"};
  for (const std::string& path : paths) {
    open(path);
    EXPECT_EQ(string_of("greeting"), "Hello %s%Name%") << path;
    EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), path);
  }
  const WorkingFolder above(kCatalogs + "/..");
  const std::string path = kCatalogs.substr(kCatalogs.rfind('/') + 1) + "/whole";
  open(path);
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%") << path;
  EXPECT_EQ(thrown_by_open("nowhere"), missing_resource(locate_text("nowhere")));
}

TEST_F(MessageCatalog, FolderOfTheWorkingDirectory_OpensAgainForAnotherLocale) {
  const WorkingFolder folder(kCatalogs);
  open("whole");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_EQ(string_of("greeting"), "Grüß Gott %s%Name%");
}

TEST_F(MessageCatalog, PathWithoutBundle_CountsAsOpenAndLookupsFail) {
  const std::string path = settings_.folder().path("nothing");
  EXPECT_EQ(thrown_by_open(path), missing_resource(locate_text(path)));
  EXPECT_TRUE(_qz_LOG_log_message::is_catalog_open());
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), path);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
}

TEST_F(MessageCatalog, PathWithoutBundle_LaterMessagesFailAndNarrowOnesDoNot) {
  settings_.load({{.id = 1, .message_id = "greeting", .message_text = "text"}});
  const _qz_LOG_log_entry_imp entry(1, 0);
  const std::string path = settings_.folder().path("nothing");
  EXPECT_EQ(thrown_by([&] { qz_LOG_LogConfig::SetMessageCatalogPath(path.c_str()); }),
            thrown<QZX_logging_missing_resource>(locate_text(path).c_str()));
  EXPECT_EQ(qz_LOG_LogConfig::GetMessageCatalogPath(), path);
  EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::get_message(entry, entry.get_definition(), false, 0); }),
            thrown<QZX_logging_missing_resource>(kTableText));
  EXPECT_STREQ(_qz_LOG_log_message::get_qzString_message(entry, entry.get_definition(), false, 0).c_str(), "text");
}

/// A locale whose name is longer than the names of bundles may be.
std::string locale_with_a_long_name() {
  std::string name = "en_US";
  for (int i = 10; i < 50; ++i) name += "_VARIA" + std::to_string(i);
  return name;
}

TEST_F(MessageCatalog, OpeningFailsOtherThanByAbsence_AccessTextAndRecord) {
  RenderingSettings::set_icu_locale(locale_with_a_long_name().c_str());
  const std::string path = kCatalogs + "/whole";
  const DebugLogFile log(1);
  EXPECT_EQ(thrown_by_open(path),
            missing_resource("<QZX_logging_missing_resource> Unable to access resource bundle \"" + path + "\"."));
  EXPECT_EQ(
      log.records(),
      Texts({"logmsg:256 _qz_LOG_log_message::set_resource_path Unable to access resource bundle " + path + "!\n"}));
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), path);
  EXPECT_TRUE(_qz_LOG_log_message::is_catalog_open());
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
}

TEST_F(MessageCatalog, VeryLongPath_LocateText) {
  const std::string path = "/" + std::string(20000, 'x');
  EXPECT_EQ(thrown_by_open(path), missing_resource(locate_text(path)));
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), path);
}

TEST_F(MessageCatalog, FailuresAtLevel0_NoRecord) {
  const DebugLogFile log(0);
  EXPECT_EQ(thrown_by_open("/nothing"), missing_resource(locate_text("/nothing")));
  EXPECT_FALSE(log.exists());
}

TEST_F(MessageCatalog, DamagedBundle_Fails) {
  settings_.folder().write("root.res", "this is not a resource bundle");
  EXPECT_THROW(open(settings_.folder().path()), QZX_logging_missing_resource);
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
}

TEST_F(MessageCatalog, BundleWithoutTheTable_OpensAndLookupsFail) {
  open(kCatalogs + "/without_table");
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
}

TEST_F(MessageCatalog, IdMissingOrNotAText_RetrieveText) {
  open(kCatalogs + "/whole");
  for (const char* id : {"missing", "Greeting", "", "number", "nested", "nested/inner", "greeting "}) {
    EXPECT_EQ(thrown_by_lookup(id), missing_resource(kStringText)) << id;
  }
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, DefaultLocaleOfIcu_ItsBundle) {
  for (const char* locale : {"de", "de_DE", "de_AT"}) {
    RenderingSettings::set_icu_locale(locale);
    open(kCatalogs + "/whole");
    EXPECT_EQ(string_of("greeting"), "Grüß Gott %s%Name%") << locale;
  }
}

TEST_F(MessageCatalog, DefaultLocaleChangedAfterOpening_BundleStays) {
  open(kCatalogs + "/whole");
  RenderingSettings::set_icu_locale("de_DE");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Grüß Gott %s%Name%");
}

TEST_F(MessageCatalog, LanguageWithoutBundle_Root) {
  RenderingSettings::set_icu_locale("pl_PL");
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, BundleOfTheLanguageWithoutTheTable_TableOfTheRoot) {
  RenderingSettings::set_icu_locale("fr_FR");
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, OnlyTheLanguagesBundle_OpensForThatLanguage) {
  RenderingSettings::set_icu_locale("de_DE");
  open(kCatalogs + "/without_root");
  EXPECT_EQ(string_of("greeting"), "Guten Tag %s%Name%");
}

TEST_F(MessageCatalog, SetLocale_OpensTheBundleOfThatLocale) {
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("disk.full"), "Platte voll: %d%Count%");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_JA_JP);
  EXPECT_EQ(string_of("greeting"), "%s%Name%さん、こんにちは%_%TIMESTAMP%");
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), kCatalogs + "/whole");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, SetLocaleWithoutCatalog_StaysClosed) {
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_FALSE(_qz_LOG_log_message::is_catalog_open());
}

TEST_F(MessageCatalog, SetLocaleThatTheCatalogCannotBeOpenedFor_LocaleIsSetAndLookupsFail) {
  RenderingSettings::set_icu_locale("de_DE");
  open(kCatalogs + "/without_root");
  RenderingSettings::set_icu_locale("en_US");
  const DebugLogFile log(1);
  EXPECT_NO_THROW(qz_LOG_LogConfig::SetLocale(QZ_LOCALE_FR_FR));
  EXPECT_EQ(log.records(),
            Texts({"logmsg:248 _qz_LOG_log_message::set_resource_path Unable to locate resource bundle " + kCatalogs +
                   "/without_root!\n"}));
  EXPECT_EQ(qz_LOG_LogConfig::GetLocale(), QZ_LOCALE_FR_FR);
  EXPECT_TRUE(_qz_LOG_log_message::is_catalog_open());
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_EQ(string_of("greeting"), "Guten Tag %s%Name%");
}

TEST_F(MessageCatalog, SetLocaleAfterAFailedCatalog_LocaleIsSetAndLookupsFail) {
  const std::string path = settings_.folder().path("nothing");
  EXPECT_EQ(thrown_by_open(path), missing_resource(locate_text(path)));
  EXPECT_NO_THROW(qz_LOG_LogConfig::SetLocale(QZ_LOCALE_JA_JP));
  EXPECT_EQ(qz_LOG_LogConfig::GetLocale(), QZ_LOCALE_JA_JP);
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), path);
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
}

TEST_F(MessageCatalog, SetLocaleWithoutMemory_LocaleIsSetAndTheCatalogFails) {
  open(kCatalogs + "/whole");
  unsigned nth = 0;
  for (bool happened = true; happened; ++nth) {
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
    {
      const AllocationFailure failure(nth + 1);
      qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
      happened = failure.happened();
    }
    EXPECT_EQ(qz_LOG_LogConfig::GetLocale(), QZ_LOCALE_DE_DE);
    EXPECT_TRUE(_qz_LOG_log_message::is_catalog_open());
    if (happened) {
      EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText)) << "allocation " << nth + 1;
    }
  }
  EXPECT_GT(nth, 3U);
  EXPECT_EQ(string_of("greeting"), "Grüß Gott %s%Name%");
}

TEST_F(MessageCatalog, OpenedAgainElsewhere_ReplacesTheBundle) {
  open(kCatalogs + "/without_table");
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), kCatalogs + "/whole");
}

TEST_F(MessageCatalog, GoodAfterBadAndBadAfterGood_TheLastCounts) {
  const std::string bad = settings_.folder().path("nothing");
  EXPECT_EQ(thrown_by_open(bad), missing_resource(locate_text(bad)));
  open(kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
  EXPECT_EQ(thrown_by_open(bad), missing_resource(locate_text(bad)));
  EXPECT_EQ(thrown_by_lookup("greeting"), missing_resource(kTableText));
  _qz_LOG_log_message::set_resource_path(nullptr);
  EXPECT_FALSE(_qz_LOG_log_message::is_catalog_open());
}

TEST_F(MessageCatalog, OpenedWithItsOwnPath_Works) {
  open(kCatalogs + "/whole");
  _qz_LOG_log_message::set_resource_path(_qz_LOG_log_message::get_resource_path());
  EXPECT_EQ(_qz_LOG_log_message::get_resource_path(), kCatalogs + "/whole");
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, PathOutsideAscii_Opens) {
  const std::string folder = settings_.folder().path("Bündel 漢");
  std::filesystem::copy(kCatalogs + "/whole", folder);
  open(folder);
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, OpeningWithoutMemory_MemoryAlloc) {
  std::string path = kCatalogs;
  for (int i = 0; i < 50; ++i) path += "/.";  // longer than the texts for which a thread keeps memory
  path += "/whole";
  EXPECT_GT(FailEveryAllocation([&] { _qz_LOG_log_message::set_resource_path(path.c_str()); }), 0U);
  EXPECT_EQ(string_of("greeting"), "Hello %s%Name%");
}

TEST_F(MessageCatalog, SettingsForward_PathAndClosing) {
  qz_LOG_LogConfig::SetMessageCatalogPath((kCatalogs + "/whole").c_str());
  EXPECT_EQ(qz_LOG_LogConfig::GetMessageCatalogPath(), kCatalogs + "/whole");
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  EXPECT_STREQ(qz_LOG_LogConfig::GetMessageCatalogPath(), "");
}

}  // namespace
}  // namespace qz_test
