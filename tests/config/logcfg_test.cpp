#include "qzlog/logcfg.h"

#include <gtest/gtest.h>
#include <unicode/utypes.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include "config/logconf.h"
#include "definitions/ldf_load.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace {

using qz_test::AllocationFailure;
using qz_test::DebugLogFile;
using qz_test::kNoMemory;
using qz_test::LdfFile;
using qz_test::Texts;
using qz_test::thrown;
using qz_test::thrown_by;

using Config = qz_LOG_LogConfig;

static_assert(!std::is_default_constructible_v<Config>);

constexpr const char* kUnreadable = "<QZX_logging_invalid_definition> Unable to access definition file successfully.";
// A catalog that every installation has: part of ICU's own data.
constexpr const char* kCatalog = U_ICUDATA_NAME "-curr";

std::string invalid_argument() { return thrown<QZX_logging_illegal_argument>("invalid argument"); }

class LogCfg : public qz_test::SettingsTest {
 protected:
  std::string write_definitions(const char* name, unsigned entry_id) const {
    return folder_.write(
        name, LdfFile{.globals = {{"g" + std::to_string(entry_id), 1}}, .entries = {{.id = entry_id}}}.bytes());
  }
  static bool finds(unsigned entry_id) { return Config::GetDefinitionTable()->find_entry(entry_id) != nullptr; }
  static void set_source(const std::string& path, unsigned type) {
    Config::SetConfigurationSource(path.c_str(), static_cast<qz_ConfigurationSourceType>(type));
  }
  static std::string record(const std::string& text) { return "logcfg:# qz_LOG_LogConfig::" + text + "\n"; }
};

// ---- the initial values ----

bool settings_are_initial() {
  unsigned value = 7;
  return b_is_icu_enabled && Config::IsICUEnabled() && action_on_exceed == 0 && Config::GetActionAttrLenExceed() == 0 &&
         Config::GetSynchronizationLevel() == 2 && !Config::IsEnableCountConfig() &&
         std::strcmp(Config::GetDefinitionPath(), "") == 0 && std::strcmp(Config::GetAuxDefinitionPath(), "") == 0 &&
         std::strcmp(Config::GetCodePage(), "") == 0 && std::strcmp(Config::GetMessageCatalogPath(), "") == 0 &&
         Config::_get_configuration_ptr() == nullptr && Config::GetLocale() == QZ_LOCALE_PROCESS &&
         Config::GetDefinitionTable() != nullptr && Config::GetDefinitionTable()->find_entry(0) == nullptr &&
         !Config::GetConfigurationIntegerValue("app", "Level", value) && value == 7;
}

TEST(LogCfgInitial, NewProcess_EverySettingAtItsInitialValue) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the child is a new process, in which nothing was set
  EXPECT_EXIT(std::_Exit(settings_are_initial() ? 0 : 1), testing::ExitedWithCode(0), "");
}

// ---- flags ----

TEST_F(LogCfg, SetSynchronizationLevel_BelowFiveStoredOthersIgnored) {
  const DebugLogFile log(9);
  for (const unsigned level : {0U, 1U, 2U, 3U, 4U}) {
    Config::SetSynchronizationLevel(static_cast<qz_SynchronizationLevelType>(level));
    EXPECT_EQ(Config::GetSynchronizationLevel(), level);
  }
  for (const unsigned level : {5U, 6U, 0x80000000U, 0xFFFFFFFFU}) {
    Config::SetSynchronizationLevel(static_cast<qz_SynchronizationLevelType>(level));
    EXPECT_EQ(Config::GetSynchronizationLevel(), 4U);
  }
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, SetSynchronizationLevelFive_InitialLevelStays) {
  Config::SetSynchronizationLevel(static_cast<qz_SynchronizationLevelType>(5));
  EXPECT_EQ(Config::GetSynchronizationLevel(), 2U);
}

TEST_F(LogCfg, EnableCountConfig_StoredAndReturned) {
  const DebugLogFile log(9);
  Config::EnableCountConfig(true);
  EXPECT_TRUE(Config::IsEnableCountConfig());
  Config::EnableCountConfig(false);
  EXPECT_FALSE(Config::IsEnableCountConfig());
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, SetICUEnabled_StoredAndRecordedAtLevel2) {
  const DebugLogFile log(2);
  Config::SetICUEnabled(false);
  EXPECT_FALSE(Config::IsICUEnabled());
  EXPECT_FALSE(b_is_icu_enabled);
  Config::SetICUEnabled(true);
  EXPECT_TRUE(Config::IsICUEnabled());
  EXPECT_TRUE(b_is_icu_enabled);
  EXPECT_EQ(log.unnumbered_records(), Texts({record("SetICUEnabled, ok!"), record("SetICUEnabled, ok!")}));
  log.clear();
  EnableDebugLog(1);
  Config::SetICUEnabled(false);
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, SetActionAttrLenExceed_ZeroAndOneStored) {
  for (const int action : {1, 0, 1}) {
    Config::SetActionAttrLenExceed(action);
    EXPECT_EQ(Config::GetActionAttrLenExceed(), action);
    EXPECT_EQ(action_on_exceed, action);
  }
}

TEST_F(LogCfg, SetActionAttrLenExceedOutOfRange_ThrowsAndActionStays) {
  const DebugLogFile log(9);
  Config::SetActionAttrLenExceed(1);
  for (const int action : {2, -1, 3, INT_MAX, INT_MIN}) {
    EXPECT_EQ(thrown_by([&] { Config::SetActionAttrLenExceed(action); }),
              thrown<QZX_logging_illegal_argument>("The action when attribute exceeds limitation is invalid!\n"))
        << action;
    EXPECT_EQ(Config::GetActionAttrLenExceed(), 1);
  }
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, ActionOutOfRange_CutsAtFirstAndTakesItsTwoValues) {
  const DebugLogFile log(9);
  EXPECT_EQ(Config::GetActionOutOfRange(), QZ_OUT_OF_RANGE_CUT);
  for (const int action : {QZ_OUT_OF_RANGE_REFUSE, QZ_OUT_OF_RANGE_CUT, QZ_OUT_OF_RANGE_REFUSE}) {
    Config::SetActionOutOfRange(action);
    EXPECT_EQ(Config::GetActionOutOfRange(), action);
  }
  for (const int action : {2, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(thrown_by([&] { Config::SetActionOutOfRange(action); }),
              thrown<QZX_logging_illegal_argument>("The action when a value is out of range is invalid!\n"))
        << action;
    EXPECT_EQ(Config::GetActionOutOfRange(), QZ_OUT_OF_RANGE_REFUSE);
  }
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, Getters_ReadTheExportedWords) {
  action_on_exceed = 1;
  b_is_icu_enabled = false;
  EXPECT_EQ(Config::GetActionAttrLenExceed(), 1);
  EXPECT_FALSE(Config::IsICUEnabled());
}

// ---- definition files ----

TEST_F(LogCfg, SetDefinitionPath_FileLoadedPathStoredAndRecorded) {
  const DebugLogFile log(2);
  const std::string path = write_definitions("std.ldf", 5);
  Config::SetDefinitionPath(path.c_str());
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  EXPECT_TRUE(finds(5));
  EXPECT_EQ(log.unnumbered_records(), Texts({record("SetDefinitionPath, path=" + path + "!")}));
}

TEST_F(LogCfg, SetDefinitionPathAgain_TextAndFileReplaced) {
  Config::SetDefinitionPath(write_definitions("first.ldf", 5).c_str());
  const std::string path = write_definitions("second.ldf", 6);
  Config::SetDefinitionPath(path.c_str());
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  EXPECT_FALSE(finds(5));
  EXPECT_TRUE(finds(6));
}

TEST_F(LogCfg, SetDefinitionPathNull_RecordedThrowsAndNothingChanges) {
  const std::string path = write_definitions("std.ldf", 5);
  Config::SetDefinitionPath(path.c_str());
  const DebugLogFile log(1);
  // Twice: the first call must have released the lock.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(thrown_by([] { Config::SetDefinitionPath(nullptr); }), invalid_argument());
  EXPECT_EQ(log.unnumbered_records(),
            Texts({record("SetDefinitionPath, path==0!"), record("SetDefinitionPath, path==0!")}));
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  EXPECT_TRUE(finds(5));
}

TEST_F(LogCfg, SetDefinitionPathToAMissingFile_ThrowsWithThePathStored) {
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  const DebugLogFile log(2);
  const std::string path = folder_.path("missing");
  const std::string text = "<QZX_logging_invalid_definition> Unable to access definition file \"" + path + "\".";
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(thrown_by([&] { Config::SetDefinitionPath(path.c_str()); }),
              thrown<QZX_logging_invalid_definition>(text));
  }
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  EXPECT_FALSE(finds(5));
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, SetDefinitionPathToABrokenFile_RecordsTheFailureOnly) {
  const DebugLogFile log(2);
  const std::string path = folder_.write("broken.ldf", "broken");
  EXPECT_EQ(thrown_by([&] { Config::SetDefinitionPath(path.c_str()); }),
            thrown<QZX_logging_invalid_definition>(kUnreadable));
  EXPECT_EQ(log.unnumbered_records(), Texts({"ldf_load:# _throw_file_io_error()\n"}));
}

TEST_F(LogCfg, SetDefinitionPathToItsOwnText_Reloaded) {
  const std::string path = write_definitions("std.ldf", 5);
  Config::SetDefinitionPath(path.c_str());
  write_definitions("std.ldf", 6);
  Config::SetDefinitionPath(Config::GetDefinitionPath());
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  EXPECT_TRUE(finds(6));
}

TEST_F(LogCfg, SetDefinitionPathWithoutMemoryForTheCopy_Unset) {
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  const auto set_without_memory = [](const char* path) {
    return thrown_by([&] {
      const AllocationFailure failure(1);
      Config::SetDefinitionPath(path);
    });
  };
  EXPECT_EQ(set_without_memory(Config::GetDefinitionPath()), kNoMemory);
  EXPECT_STREQ(Config::GetDefinitionPath(), "");
  EXPECT_EQ(set_without_memory("/some/path"), kNoMemory);
  EXPECT_STREQ(Config::GetDefinitionPath(), "");
  EXPECT_TRUE(finds(5));
}

TEST_F(LogCfg, SetAuxDefinitionPath_FileLoadedPathStoredAndRecorded) {
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  const DebugLogFile log(2);
  const std::string path = write_definitions("aux.ldf", 6);
  Config::SetAuxDefinitionPath(path.c_str());
  EXPECT_EQ(Config::GetAuxDefinitionPath(), path);
  EXPECT_TRUE(finds(5));
  EXPECT_TRUE(finds(6));
  EXPECT_EQ(log.unnumbered_records(), Texts({record("SetAuxDefinitionPath, path=" + path + "!")}));
}

TEST_F(LogCfg, SetAuxDefinitionPathNull_RecordedThrowsAndNothingChanges) {
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  const std::string path = write_definitions("aux.ldf", 6);
  Config::SetAuxDefinitionPath(path.c_str());
  const DebugLogFile log(1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(thrown_by([] { Config::SetAuxDefinitionPath(nullptr); }), invalid_argument());
  EXPECT_EQ(log.unnumbered_records(),
            Texts({record("SetAuxDefinitionPath path==0"), record("SetAuxDefinitionPath path==0")}));
  EXPECT_EQ(Config::GetAuxDefinitionPath(), path);
  EXPECT_TRUE(finds(6));
}

TEST_F(LogCfg, SetAuxDefinitionPathBeforeTheStandardOne_ThrowsWithThePathStored) {
  const std::string path = write_definitions("aux.ldf", 6);
  EXPECT_EQ(
      thrown_by([&] { Config::SetAuxDefinitionPath(path.c_str()); }),
      thrown<QZX_logging_invalid_definition>(
          "<QZX_logging_invalid_definition> user should set STD definition file before set AUX definition file."));
  EXPECT_EQ(Config::GetAuxDefinitionPath(), path);
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  Config::SetAuxDefinitionPath(Config::GetAuxDefinitionPath());
  EXPECT_TRUE(finds(6));
}

TEST_F(LogCfg, SetAuxDefinitionPathWithoutMemoryForTheCopy_Unset) {
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  Config::SetAuxDefinitionPath(write_definitions("aux.ldf", 6).c_str());
  EXPECT_EQ(thrown_by([] {
              const AllocationFailure failure(1);
              Config::SetAuxDefinitionPath("/some/path");
            }),
            kNoMemory);
  EXPECT_STREQ(Config::GetAuxDefinitionPath(), "");
  EXPECT_TRUE(finds(6));
}

TEST_F(LogCfg, ClearDefinitions_TableAndGlobalAttributesEmptyButPathsStay) {
  const std::string path = write_definitions("std.ldf", 5);
  Config::SetDefinitionPath(path.c_str());
  EXPECT_EQ(_qz_LOG_log_definition::get_global_attr_count(), 1);
  const DebugLogFile log(3);
  Config::ClearDefinitions();
  EXPECT_EQ(log.unnumbered_records(),
            Texts({"ldf_load:# _qz_LOG_log_definition_tbl::clear() \n", record("ClearDefinitions, ok!")}));
  EnableDebugLog(0);
  EXPECT_FALSE(finds(5));
  EXPECT_EQ(_qz_LOG_log_definition::get_global_attr_count(), 0);
  EXPECT_EQ(Config::GetDefinitionPath(), path);
  Config::ClearDefinitions();
  Config::SetDefinitionPath(path.c_str());
  EXPECT_TRUE(finds(5));
}

TEST_F(LogCfg, SetDefinitionPath_GlobalAttributesOfFormerFilesStay) {
  Config::SetDefinitionPath(write_definitions("first.ldf", 5).c_str());
  Config::SetDefinitionPath(write_definitions("second.ldf", 6).c_str());
  unsigned char type = 0;
  EXPECT_TRUE(_qz_LOG_log_definition::get_global_attr_info_by_name("g5", type));
  EXPECT_TRUE(_qz_LOG_log_definition::get_global_attr_info_by_name("g6", type));
}

TEST_F(LogCfg, GetDefinitionTable_AlwaysTheSame) {
  _qz_LOG_log_definition_tbl* const table = Config::GetDefinitionTable();
  ASSERT_NE(table, nullptr);
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  Config::ClearDefinitions();
  EXPECT_EQ(Config::GetDefinitionTable(), table);
}

TEST_F(LogCfg, DebugLevel1_SuccessesLeaveNoRecord) {
  const DebugLogFile log(1);
  Config::SetDefinitionPath(write_definitions("std.ldf", 5).c_str());
  Config::SetAuxDefinitionPath(write_definitions("aux.ldf", 6).c_str());
  Config::SetCodePage("UTF-8");
  Config::SetMessageCatalogPath(nullptr);
  Config::ClearDefinitions();
  EXPECT_FALSE(log.exists());
}

// ---- the message catalog ----

TEST_F(LogCfg, SetMessageCatalogPath_OpenedStoredAndRecorded) {
  const DebugLogFile log(2);
  Config::SetMessageCatalogPath(kCatalog);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), kCatalog);
  EXPECT_EQ(log.unnumbered_records(), Texts({record("SetMessageCatalogPath, path=" + std::string(kCatalog) + "!")}));
}

TEST_F(LogCfg, SetMessageCatalogPathNull_ClosedAndRecorded) {
  Config::SetMessageCatalogPath(kCatalog);
  const DebugLogFile log(2);
  Config::SetMessageCatalogPath(nullptr);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), "");
  const Texts records = log.records();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0], "logmsg:233 _qz_LOG_log_message::set_resource_path set resource_path=\"\"!\n");
  EXPECT_EQ(log.unnumbered_records()[1], record("SetMessageCatalogPath, path=(NULL)!"));
}

TEST_F(LogCfg, SetMessageCatalogPathToAMissingOne_ThrowsAndThePathCounts) {
  const DebugLogFile log(2);
  const std::string path = folder_.path("missing");
  const std::string text = "<QZX_logging_missing_resource> Unable to locate resource bundle \"" + path + "\".";
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(thrown_by([&] { Config::SetMessageCatalogPath(path.c_str()); }),
              thrown<QZX_logging_missing_resource>(text));
  }
  EXPECT_EQ(Config::GetMessageCatalogPath(), path);
  const std::string failure =
      "logmsg:248 _qz_LOG_log_message::set_resource_path Unable to locate resource bundle " + path + "!\n";
  EXPECT_EQ(log.records(), Texts({failure, failure}));
}

TEST_F(LogCfg, MessageCatalogWithICUOff_NothingSetAndNothingShown) {
  Config::SetMessageCatalogPath(kCatalog);
  Config::SetICUEnabled(false);
  const DebugLogFile log(9);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), "");
  Config::SetMessageCatalogPath("/no/such/catalog");
  Config::SetMessageCatalogPath(nullptr);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), "");
  EXPECT_FALSE(log.exists());
  Config::SetICUEnabled(true);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), kCatalog);
}

// ---- locale and code page ----

TEST_F(LogCfg, SetLocale_Returned) {
  const DebugLogFile log(9);
  for (const qz_Locale locale : {QZ_LOCALE_DE_DE, QZ_LOCALE_JA_JP, QZ_LOCALE_ZH_TW, QZ_LOCALE_PROCESS}) {
    Config::SetLocale(locale);
    EXPECT_EQ(Config::GetLocale(), locale);
    EXPECT_EQ(qz_I18N_get_locale(), locale);
  }
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, GetLocale_FollowsTheFoundation) {
  qz_I18N_set_locale(QZ_LOCALE_FR_FR);
  EXPECT_EQ(Config::GetLocale(), QZ_LOCALE_FR_FR);
}

TEST_F(LogCfg, SetLocaleWithOpenCatalog_CatalogStaysOpen) {
  Config::SetMessageCatalogPath(kCatalog);
  Config::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_STREQ(Config::GetMessageCatalogPath(), kCatalog);
}

TEST_F(LogCfg, SetCodePage_StoredUncheckedAndRecorded) {
  const DebugLogFile log(2);
  Config::SetCodePage("ISO-8859-1");
  EXPECT_STREQ(Config::GetCodePage(), "ISO-8859-1");
  Config::SetCodePage("no such code page");
  EXPECT_STREQ(Config::GetCodePage(), "no such code page");
  EXPECT_EQ(log.unnumbered_records(),
            Texts({record("SetCodePage codepage==ISO-8859-1!"), record("SetCodePage codepage==no such code page!")}));
}

TEST_F(LogCfg, SetCodePageNull_RecordedThrowsAndNothingChanges) {
  Config::SetCodePage("UTF-8");
  const DebugLogFile log(1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(thrown_by([] { Config::SetCodePage(nullptr); }), invalid_argument());
  EXPECT_EQ(log.unnumbered_records(), Texts({record("SetCodePage codepage==0!"), record("SetCodePage codepage==0!")}));
  EXPECT_STREQ(Config::GetCodePage(), "UTF-8");
}

TEST_F(LogCfg, SetCodePageToItsOwnText_Kept) {
  Config::SetCodePage("a code page of a long name");
  Config::SetCodePage(Config::GetCodePage());
  EXPECT_STREQ(Config::GetCodePage(), "a code page of a long name");
}

TEST_F(LogCfg, SetCodePageWithoutMemory_Unset) {
  Config::SetCodePage("UTF-8");
  EXPECT_EQ(thrown_by([] {
              const AllocationFailure failure(1);
              Config::SetCodePage("ISO-8859-1");
            }),
            kNoMemory);
  EXPECT_STREQ(Config::GetCodePage(), "");
  Config::SetCodePage("ISO-8859-1");
  EXPECT_STREQ(Config::GetCodePage(), "ISO-8859-1");
}

// ---- the configuration source ----

constexpr const char* kConfiguration = "[app]\nLevel=3\n[global]\nMask=0x1F\n\n";

TEST_F(LogCfg, SetConfigurationSource_ValuesFoundWithTheFallback) {
  const DebugLogFile log(9);
  set_source(folder_.write("conf", kConfiguration), 0);
  unsigned value = 0;
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 3U);
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("other", "Mask", value));
  EXPECT_EQ(value, 31U);
  EXPECT_FALSE(Config::GetConfigurationIntegerValue("other", "Level", value));
  EXPECT_EQ(value, 31U);
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, SetConfigurationSource_FileNotReadBeforeTheFirstLookup) {
  set_source(folder_.write("conf", "[app]\nLevel=2\n\n"), 0);
  folder_.write("conf", kConfiguration);
  unsigned value = 0;
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 3U);
}

TEST_F(LogCfg, ConfigurationSourceSetAgain_FileReadAgain) {
  const std::string path = folder_.write("conf", "[app]\nLevel=2\n\n");
  unsigned value = 0;
  set_source(path, 0);
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  folder_.write("conf", kConfiguration);
  set_source(path, 0);
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 3U);
}

TEST_F(LogCfg, ConfigurationSourceNull_RemovedWhateverTheType) {
  const DebugLogFile log(9);
  for (const unsigned type : {0U, 1U, 2U, 0xFFFFFFFFU}) {
    set_source(folder_.write("conf", kConfiguration), 0);
    Config::SetConfigurationSource(nullptr, static_cast<qz_ConfigurationSourceType>(type));
    EXPECT_EQ(Config::_get_configuration_ptr(), nullptr);
    unsigned value = 7;
    EXPECT_FALSE(Config::GetConfigurationIntegerValue("app", "Level", value));
    EXPECT_EQ(value, 7U);
    Config::SetConfigurationSource(nullptr, static_cast<qz_ConfigurationSourceType>(type));
  }
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, ConfigurationFileMissing_RecordedAndThrowsUnlessType1) {
  set_source(folder_.write("conf", kConfiguration), 0);
  const auto* const former = Config::_get_configuration_ptr();
  const DebugLogFile log(1);
  Texts expected;
  for (const unsigned type : {0U, 2U, 3U, 0xFFFFFFFFU}) {
    EXPECT_EQ(thrown_by([&] { set_source(folder_.path("missing"), type); }), invalid_argument()) << type;
    expected.push_back(record("SetConfigurationSource, invalid argument!"));
    expected.push_back(record("SetConfigurationSource, there is no file " + folder_.path("missing") + "!"));
  }
  EXPECT_EQ(log.unnumbered_records(), expected);
  EXPECT_EQ(Config::_get_configuration_ptr(), former);
}

TEST_F(LogCfg, ConfigurationFileMissingWithType1_FoundOnceItAppears) {
  const DebugLogFile log(9);
  set_source(folder_.path("later"), 1);
  ASSERT_NE(Config::_get_configuration_ptr(), nullptr);
  unsigned value = 7;
  EXPECT_FALSE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 7U);
  folder_.write("later", kConfiguration);
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 3U);
  EXPECT_FALSE(log.exists());
}

TEST_F(LogCfg, ConfigurationFileExistsWithAnyType_FileSourceMade) {
  const std::string path = folder_.write("conf", kConfiguration);
  for (const unsigned type : {0U, 1U, 2U, 77U}) {
    set_source(path, type);
    EXPECT_NE(dynamic_cast<_qz_LOG_file_configuration*>(Config::_get_configuration_ptr()), nullptr) << type;
    unsigned value = 0;
    EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
  }
}

TEST_F(LogCfg, ConfigurationPathIsADirectory_AcceptedWithoutValues) {
  set_source(folder_.path(), 0);
  unsigned value = 7;
  EXPECT_FALSE(Config::GetConfigurationIntegerValue("app", "Level", value));
  EXPECT_EQ(value, 7U);
}

TEST_F(LogCfg, ConfigurationSourceWithoutMemory_ThrowsAndNoSourceIsLeft) {
  const std::string path =
      folder_.write("a name that is too long for the memory that a thread keeps for texts", kConfiguration);
  set_source(path, 0);
  EXPECT_GT(qz_test::FailEveryAllocation([&] { Config::SetConfigurationSource(path.c_str(), QZ_CONFIGURATION_FILE); },
                                         [&] {
                                           EXPECT_EQ(Config::_get_configuration_ptr(), nullptr);
                                           set_source(path, 0);
                                         }),
            1U);
  unsigned value = 0;
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", value));
}

TEST_F(LogCfg, GetConfigurationIntegerValueNull_ThrowsWithOrWithoutASourceAndUnrecorded) {
  const DebugLogFile log(9);
  unsigned value = 7;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(thrown_by([&] { Config::GetConfigurationIntegerValue(nullptr, "Level", value); }), invalid_argument());
    EXPECT_EQ(thrown_by([&] { Config::GetConfigurationIntegerValue("app", nullptr, value); }), invalid_argument());
    EXPECT_EQ(thrown_by([&] { Config::GetConfigurationIntegerValue(nullptr, nullptr, value); }), invalid_argument());
    set_source(folder_.write("conf", kConfiguration), 0);
  }
  EXPECT_EQ(value, 7U);
  EXPECT_FALSE(log.exists());
}

}  // namespace
