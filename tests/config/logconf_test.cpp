#include "config/logconf.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "foundation/file_handle.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;
using qz_test::kNoMemory;
using qz_test::TempDir;
using qz_test::Texts;

using namespace std::string_literals;

static_assert(std::is_abstract_v<_qz_LOG_configuration> && std::has_virtual_destructor_v<_qz_LOG_configuration>);
static_assert(!std::is_copy_constructible_v<_qz_LOG_file_configuration>);
static_assert(!std::is_copy_constructible_v<_qz_LOG_log_setting_tbl>);

/// The time of the last change as seconds since 1970.
void set_modification_time(const std::string& path, time_t time) {
  const timespec times[] = {{time, 0}, {time, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

/// The value of a key, without one when the lookup returns false; that a false lookup leaves the value alone is tested.
std::optional<unsigned> look_up(const _qz_LOG_configuration& configuration, const char* section, const char* key) {
  unsigned value = 0xABCDEF;
  if (configuration.get_integer_value(section, key, value)) return value;
  EXPECT_EQ(value, 0xABCDEFU);
  return std::nullopt;
}

class LogConf : public testing::Test {
 protected:
  /// A configuration over a file of this text.
  const _qz_LOG_file_configuration& configure(const std::string& text) {
    configuration_ = std::make_unique<_qz_LOG_file_configuration>(folder_.write("conf", text).c_str());
    return *configuration_;
  }
  std::optional<unsigned> value(const char* section, const char* key) const {
    return look_up(*configuration_, section, key);
  }

  TempDir folder_;
  std::unique_ptr<_qz_LOG_file_configuration> configuration_;
};

// ---- texts and what is found in them ----

struct Lookup {
  const char* name;
  std::string text;
  const char* section;
  const char* key;
  std::optional<unsigned> expected;
};

void PrintTo(const Lookup& lookup, std::ostream* out) {
  *out << "key " << lookup.key << " of section " << lookup.section;
}

std::string line_of(std::size_t length) { return "Long=7" + std::string(length - 6, ' '); }

class LogConfLookup : public LogConf, public testing::WithParamInterface<Lookup> {};

TEST_P(LogConfLookup, Text_ValueOrNone) {
  configure(GetParam().text);
  EXPECT_EQ(value(GetParam().section, GetParam().key), GetParam().expected);
}

const Lookup kLookups[] = {
    // Line breaks and the end of the file.
    {"LineFeedsAndEmptyLine", "[app]\nLevel=3\n\n", "app", "Level", 3},
    {"NoEmptyLine", "[app]\nLevel=3\n", "app", "Level", {}},
    {"NoFinalBreak", "[app]\nLevel=3", "app", "Level", {}},
    {"NoFinalBreakEarlierLine", "[app]\nLevel=3\nOther=4", "app", "Level", 3},
    {"CarriageReturnLineFeed", "[app]\r\nLevel=3\r\n", "app", "Level", 3},
    {"CarriageReturnLineFeedMissingAtTheEnd", "[app]\r\nLevel=3", "app", "Level", {}},
    {"LineFeedCarriageReturn", "[app]\n\rLevel=3\n\r", "app", "Level", 3},
    {"CarriageReturns", "[app]\rLevel=3\r\r", "app", "Level", 3},
    {"CarriageReturnsNoEmptyLine", "[app]\rLevel=3\r", "app", "Level", {}},
    {"DoubledBreaks", "[app]\n\nLevel=3\n\n", "app", "Level", 3},
    {"TripledBreaks", "[app]\n\n\nLevel=3\n\n\n", "app", "Level", 3},
    {"DoubledCarriageReturnLineFeeds", "[app]\r\n\r\nLevel=3\r\n\r\n", "app", "Level", 3},
    {"MixedBreaks", "[app]\r\nA=1\nB=2\rC=3\n\n\nLevel=4\n\n", "app", "Level", 4},
    {"BlankLineAtTheEnd", "[app]\nLevel=3\n \n", "app", "Level", 3},
    {"Empty", "", "app", "Level", {}},
    {"OneBreak", "\n", "app", "Level", {}},
    {"HeaderOnly", "[app]\n\n", "app", "Level", {}},
    // Keys and values.
    {"BlanksAroundEquals", "[app]\nLevel = 3\n\n", "app", "Level", 3},
    {"BlanksAlone", "[app]\nLevel  3\n\n", "app", "Level", 3},
    {"TabsAlone", "[app]\nLevel\t\t3\n\n", "app", "Level", 3},
    {"SeveralEquals", "[app]\nLevel===3\n\n", "app", "Level", 3},
    {"LeadingDelimiters", "[app]\n \t= Level=3\n\n", "app", "Level", 3},
    {"TrailingDelimiters", "[app]\nLevel=3 =\t\n\n", "app", "Level", 3},
    {"FurtherTokensIgnored", "[app]\nLevel=3 4 5\n\n", "app", "Level", 3},
    {"SecondTokenOnly", "[app]\nLevel 3=4\n\n", "app", "Level", 3},
    {"KeyWithoutValue", "[app]\nLevel\n\n", "app", "Level", {}},
    {"KeyAndEqualsWithoutValue", "[app]\nLevel= \n\n", "app", "Level", {}},
    {"LinesOfDelimitersSkipped", "[app]\n= =\n \t\n\nLevel=3\n\n", "app", "Level", 3},
    {"RepeatedKey", "[app]\nLevel=3\nLevel=4\n\n", "app", "Level", 4},
    {"RepeatedSection", "[app]\nA=1\n[b]\nA=2\n[app]\nA=3\n\n", "app", "A", 3},
    {"SectionContinued", "[app]\nA=1\n[b]\nA=2\n[app]\nB=3\n\n", "app", "A", 1},
    {"NoComments", "[app]\n#Level=3\n\n", "app", "#Level", 3},
    {"CaseMatters", "[app]\nlevel=3\n\n", "app", "Level", {}},
    {"SemicolonIsText", "[app]\n; 9\n\n", "app", ";", 9},
    // Numbers.
    {"Hexadecimal", "[app]\nMask = 0x1F\n\n", "app", "Mask", 31},
    {"HexadecimalCapitalX", "[app]\nMask=0X1f\n\n", "app", "Mask", 31},
    {"HexadecimalWithoutPrefix", "[app]\nMask = 1F\n\n", "app", "Mask", 1},
    {"HexadecimalMaximum", "[app]\nMask=0xFFFFFFFF\n\n", "app", "Mask", 4294967295U},
    {"HexadecimalOverflow", "[app]\nMask=0x100000000\n\n", "app", "Mask", 4294967295U},
    {"HexadecimalWithoutDigits", "[app]\nMask=0x\n\n", "app", "Mask", 0},
    {"DecimalMaximum", "[app]\nMask=4294967295\n\n", "app", "Mask", 4294967295U},
    {"DecimalOverflow", "[app]\nMask=4294967296\n\n", "app", "Mask", 4294967295U},
    {"DecimalLeadingZeros", "[app]\nMask=010\n\n", "app", "Mask", 10},
    {"DecimalTrailingText", "[app]\nMask=12abc\n\n", "app", "Mask", 12},
    {"NotANumber", "[app]\nMask=abc\n\n", "app", "Mask", 0},
    {"Zero", "[app]\nMask=0\n\n", "app", "Mask", 0},
    {"OneDigit", "[app]\nMask=9\n\n", "app", "Mask", 9},
    // Sections.
    {"BeforeTheFirstSection", "Level=3\n[app]\nOther=4\n\n", "", "Level", {}},
    {"HeaderWithoutBracket", "[app\nLevel=3\n\n", "ap", "Level", 3},
    {"HeaderWithoutBracketFullName", "[app\nLevel=3\n\n", "app", "Level", {}},
    {"HeaderWithTextBehind", "[app] Level=3\nOther=4\n\n", "app", "Level", {}},
    {"HeaderWithBlankInside", "[my app]\nLevel=3\n\n", "m", "Level", 3},
    {"HeaderIndented", "  \t[app]\nLevel=3\n\n", "app", "Level", 3},
    {"HeaderBracketsAlone", "[]\nLevel=3\n\n", "", "Level", 3},
    {"HeaderOfTwoCharacters", "[x\nLevel=3\n\n", "", "Level", 3},
    {"HeaderWithEquals", "[a=b]\nLevel=3\n\n", "", "Level", 3},
    {"HeaderWithTwoBrackets", "[app]]\nLevel=3\n\n", "app]", "Level", 3},
    {"BracketAloneFirst", "[\nLevel=3\n\n", "", "Level", {}},
    {"BracketAloneEndsTheSection", "[app]\nA=1\n[\nLevel=3\n\n", "app", "Level", {}},
    {"BracketAloneKeepsWhatWasRead", "[app]\nA=1\n[\nLevel=3\n\n", "app", "A", 1},
    {"BracketAloneThenAnotherSection", "[app]\n[ x\nA=1\n[b]\nLevel=3\n\n", "b", "Level", 3},
    {"ClosingBracketIsAKey", "[app]\n]=5\n\n", "app", "]", 5},
    {"OtherSection", "[a]\nLevel=3\n[b]\nOther=4\n\n", "b", "Level", {}},
    {"GlobalFallback", "[global]\nLevel=3\n[app]\nOther=4\n\n", "app", "Level", 3},
    {"GlobalFallbackForUnknownSection", "[global]\nLevel=3\n\n", "nowhere", "Level", 3},
    {"SectionBeforeGlobal", "[global]\nLevel=3\n[app]\nLevel=4\n\n", "app", "Level", 4},
    {"GlobalItself", "[global]\nLevel=3\n\n", "global", "Level", 3},
    {"GlobalMatchesItsCaseOnly", "[Global]\nLevel=3\n\n", "app", "Level", {}},
    {"EmptySectionAndKey", "[app]\nLevel=3\n\n", "", "", {}},
    {"SectionAndKeyRunTogether", "[ab]\nc=3\n\n", "a", "bc", 3},
    {"SectionAndKeyRunTogetherOverwritten", "[ab]\nc=3\n[a]\nbc=4\n\n", "ab", "c", 4},
    {"SectionHoldsTheWholeKey", "[ab]\nc=3\n\n", "abc", "", 3},
    {"GlobalRunTogether", "[glob]\nalLevel=3\n\n", "app", "Level", 3},
    // Long lines.
    {"LineOf128Characters", "[app]\n" + line_of(128) + "\nLevel=3\n\n", "app", "Level", 3},
    {"LineOf128CharactersItself", "[app]\n" + line_of(128) + "\n\n", "app", "Long", 7},
    {"LineOf129Characters", "[app]\nA=1\n" + line_of(129) + "\nLevel=3\n\n", "app", "Level", {}},
    {"LineOf129CharactersKeepsWhatWasRead", "[app]\nA=1\n" + line_of(129) + "\nLevel=3\n\n", "app", "A", 1},
    {"LineOf129CharactersItself", "[app]\n" + line_of(129) + "\n\n", "app", "Long", {}},
    {"LineOf128CharactersCarriageReturnLineFeed", "[app]\r\n" + line_of(128) + "\r\nLevel=3\r\n", "app", "Level", 3},
    {"LongLineBeforeTheFirstSection", line_of(129) + "\n[app]\nLevel=3\n\n", "app", "Level", {}},
    {"LongLineBetweenSections", "[a]\nA=1\n\n" + line_of(5000) + "\n[app]\nLevel=3\n\n", "a", "A", 1},
    {"LongKey", "[app]\n" + std::string(120, 'k') + "=3\n\n", "app",
     "kkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkk"
     "kkkkkkk",
     3},
    // Bytes of any kind.
    {"ZeroByteEndsTheLineText", "[app]\nLevel\0=3\nOther=4\n\n"s, "app", "Level", {}},
    {"ZeroByteInTheValue",
     "[app]\nLevel=3\0"
     "4\n\n"s,
     "app", "Level", 3},
    {"LineAfterAZeroByte", "[app]\nLevel\0=3\nOther=4\n\n"s, "app", "Other", 4},
    {"ZeroBytesOnly", std::string(100, '\0'), "app", "Level", {}},
    {"HighBytes", "[\xC3\xA4pp]\nL\xFF=3\n\n", "\xC3\xA4pp", "L\xFF", 3},
    {"VerticalTabIsText", "[app]\nLevel\v=3\n\n", "app", "Level\v", 3},
};

INSTANTIATE_TEST_SUITE_P(Texts, LogConfLookup, testing::ValuesIn(kLookups),
                         [](const auto& lookup) { return std::string(lookup.param.name); });

TEST_F(LogConf, NullSection_CountsAsEmpty) {
  configure("[]\nLevel=3\n[global]\nMask=4\n\n");
  EXPECT_EQ(value(nullptr, "Level"), 3U);
  EXPECT_EQ(value(nullptr, "Mask"), 4U);
  EXPECT_EQ(value(nullptr, "Other"), std::nullopt);
}

TEST_F(LogConf, ManySettings_AllFound) {
  std::string text;
  for (unsigned section = 0; section < 50; ++section) {
    text += "[s" + std::to_string(section) + ".]\r\n";
    for (unsigned key = 0; key < 50; ++key) {
      text += "k" + std::to_string(key) + "=" + std::to_string(section * 100 + key) + "\r\n";
    }
  }
  configure(text);
  for (unsigned section = 0; section < 50; ++section) {
    for (unsigned key = 0; key < 50; ++key) {
      EXPECT_EQ(value(("s" + std::to_string(section) + ".").c_str(), ("k" + std::to_string(key)).c_str()),
                section * 100 + key);
    }
  }
}

// ---- loading ----

TEST_F(LogConf, Constructed_FileNotTouchedAndFlagReset) {
  _qz_LOG_file_configuration::bCfgReaded = 1;
  const _qz_LOG_file_configuration configuration("/no/such/file");
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
}

TEST_F(LogConf, FirstLookup_LoadsAndSetsTheFlagEvenWithoutAnEntry) {
  configure("no section\n\n");
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  EXPECT_EQ(value("app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 1);
}

TEST_F(LogConf, EditedAfterTheFirstLookup_AnswersStay) {
  configure("[app]\nLevel=3\n\n");
  EXPECT_EQ(value("app", "Level"), 3U);
  const std::string path = folder_.write("conf", "[app]\nLevel=4\nOther=5\n\n");
  set_modification_time(path, 1000000000);
  EXPECT_EQ(value("app", "Level"), 3U);
  EXPECT_EQ(value("app", "Other"), std::nullopt);
  std::filesystem::remove(path);
  EXPECT_EQ(value("app", "Level"), 3U);
}

TEST_F(LogConf, EditedBeforeTheFirstLookup_NewTextRead) {
  configure("[app]\nLevel=3\n\n");
  folder_.write("conf", "[app]\nLevel=4\n\n");
  EXPECT_EQ(value("app", "Level"), 4U);
}

TEST_F(LogConf, FileAppearsLater_FoundFromThenOn) {
  const _qz_LOG_file_configuration configuration(folder_.path("later").c_str());
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  folder_.write("later", "[app]\nLevel=3\n\n");
  EXPECT_EQ(look_up(configuration, "app", "Level"), 3U);
}

TEST_F(LogConf, ModificationTimeZero_NeverLoaded) {
  configure("[app]\nLevel=3\n\n");
  set_modification_time(folder_.path("conf"), 0);
  EXPECT_EQ(value("app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  set_modification_time(folder_.path("conf"), 1);
  EXPECT_EQ(value("app", "Level"), 3U);
}

TEST_F(LogConf, ModificationTimeBefore1970_Loaded) {
  configure("[app]\nLevel=3\n\n");
  set_modification_time(folder_.path("conf"), -5);
  EXPECT_EQ(value("app", "Level"), 3U);
}

TEST_F(LogConf, Directory_FileThatCannotBeRead) {
  const _qz_LOG_file_configuration configuration(folder_.path().c_str());
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
}

TEST_F(LogConf, UnreadableFile_NoValueAndTheTimeCountsAsSeen) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads every file";
  configure("[app]\nLevel=3\n\n");
  const std::string path = folder_.path("conf");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  EXPECT_EQ(value("app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(value("app", "Level"), std::nullopt);
  set_modification_time(path, 1000000000);
  EXPECT_EQ(value("app", "Level"), 3U);
}

/// A socket can be examined but not opened, by nobody.
TEST_F(LogConf, FileThatCannotBeOpened_NoValueUntilItsTimeChanges) {
  const std::string path = folder_.path("conf");
  ASSERT_EQ(mknod(path.c_str(), S_IFSOCK | 0600, 0), 0);
  set_modification_time(path, 1000000000);
  const _qz_LOG_file_configuration configuration(path.c_str());
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  std::filesystem::remove(path);
  folder_.write("conf", "[app]\nLevel=3\n\n");
  set_modification_time(path, 1000000000);
  EXPECT_EQ(look_up(configuration, "app", "Level"), std::nullopt);
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  set_modification_time(path, 1000000001);
  EXPECT_EQ(look_up(configuration, "app", "Level"), 3U);
}

TEST_F(LogConf, SecondInstance_LoadsItsOwnFile) {
  configure("[app]\nLevel=3\n\n");
  EXPECT_EQ(value("app", "Level"), 3U);
  const _qz_LOG_file_configuration second(folder_.write("second", "[app]\nLevel=4\n\n").c_str());
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  EXPECT_EQ(look_up(second, "app", "Level"), 4U);
  EXPECT_EQ(value("app", "Level"), 3U);
}

TEST_F(LogConf, AnotherInstanceLoadedFirst_ThisOneNeverLoads) {
  configure("[app]\nLevel=3\n\n");
  const _qz_LOG_file_configuration second(folder_.write("second", "[app]\nLevel=4\n\n").c_str());
  EXPECT_EQ(look_up(second, "app", "Level"), 4U);
  EXPECT_EQ(value("app", "Level"), std::nullopt);
}

TEST_F(LogConf, ByItself_LoadedThoughAnotherInstanceWasFirst) {
  configure("[app]\nLevel=3\n\n");
  const _qz_LOG_file_configuration own(folder_.write("own", "[app]\nLevel=4\nLogLevelLow=5\n\n").c_str(),
                                       _qz_LOG_file_configuration::kByItself);
  EXPECT_EQ(value("app", "Level"), 3U);  // an older instance that ends its load late
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 1);
  EXPECT_EQ(own.get_filter_values("app"), nullptr);
  EXPECT_EQ(look_up(own, "app", "Level"), 4U);
  EXPECT_NE(own.get_filter_values("app"), nullptr);
  folder_.write("own", "[app]\nLevel=6\n\n");
  set_modification_time(folder_.path("own"), 1000000000);
  EXPECT_EQ(look_up(own, "app", "Level"), 4U);
}

TEST_F(LogConf, LoadedAgain_ValuesGivenBeforeStayUsable) {
  configure("[app]\nLogLevelLow=3\n\n");
  EXPECT_EQ(value("app", "LogLevelLow"), 3U);
  const FilterValues* const before = configuration_->get_filter_values("app");
  const _qz_LOG_file_configuration second("/no/such/file");
  folder_.write("conf", "[app]\nLogLevelLow=4\n\n");
  set_modification_time(folder_.path("conf"), 1000000000);
  EXPECT_EQ(value("app", "LogLevelLow"), 4U);
  unsigned low = 0;
  EXPECT_TRUE(before != nullptr && before->get(FilterKey::kLogLevelLow, low));
  EXPECT_EQ(low, 3U);
}

TEST_F(LogConf, FlagResetByAnotherInstance_ChangedFileIsLoadedAgain) {
  configure("[app]\nLevel=3\nGone=1\n\n");
  const std::string path = folder_.path("conf");
  set_modification_time(path, 1000000000);
  EXPECT_EQ(value("app", "Level"), 3U);
  const _qz_LOG_file_configuration second("/no/such/file");
  folder_.write("conf", "[app]\nLevel=4\n\n");
  set_modification_time(path, 1000000000);
  EXPECT_EQ(value("app", "Level"), 3U);  // the same time: answered from the table
  set_modification_time(path, 1000000001);
  EXPECT_EQ(value("app", "Level"), 4U);
  EXPECT_EQ(value("app", "Gone"), std::nullopt);
}

TEST_F(LogConf, FlagResetAndFileRemoved_NoValue) {
  configure("[app]\nLevel=3\n\n");
  EXPECT_EQ(value("app", "Level"), 3U);
  const _qz_LOG_file_configuration second("/no/such/file");
  std::filesystem::remove(folder_.path("conf"));
  EXPECT_EQ(value("app", "Level"), std::nullopt);
}

TEST_F(LogConf, DeletedThroughItsBase_NothingLeaks) {
  const std::unique_ptr<_qz_LOG_configuration> source =
      std::make_unique<_qz_LOG_file_configuration>(folder_.write("conf", "[app]\nLevel=3\n\n").c_str());
  EXPECT_EQ(look_up(*source, "app", "Level"), 3U);
}

TEST_F(LogConf, LoadWithoutMemory_Throws) {
  const std::string path = folder_.write(
      "conf", "[a_section_with_quite_a_long_name]\nand_a_long_key_as_well=3\nA=1\nB=2\nC=3\nLogLevelLow=3\n\n");
  unsigned failures = 0;
  for (unsigned nth = 1;; ++nth) {
    const _qz_LOG_file_configuration configuration(path.c_str());
    unsigned value = 0;
    bool happened = false;
    const auto thrown = qz_test::thrown_by([&] {
      const qz_test::AllocationFailure failure(nth);
      struct Note {
        ~Note() { happened = failure.happened(); }
        const qz_test::AllocationFailure& failure;
        bool& happened;
      } note{failure, happened};
      configuration.get_integer_value("a_section_with_quite_a_long_name", "A", value);
    });
    if (!happened) break;
    EXPECT_EQ(thrown, kNoMemory) << nth;
    EXPECT_EQ(look_up(configuration, "a_section_with_quite_a_long_name", "C"), 3U) << nth;
    ++failures;
  }
  EXPECT_GT(failures, 6U);
}

TEST_F(LogConf, LookupsOnceLoaded_TakeNoMemory) {
  configure("[a_section_with_quite_a_long_name]\nand_a_long_key_as_well=3\n[global]\nanother_long_key_for_all=4\n\n");
  constexpr const char* kSection = "a_section_with_quite_a_long_name";
  ASSERT_EQ(value(kSection, "and_a_long_key_as_well"), 3U);
  unsigned own = 0;
  unsigned global = 0;
  unsigned none = 0;
  bool happened = false;
  {
    const qz_test::AllocationFailure failure(1, qz_test::AllocationFailure::kFromThenOn);
    configuration_->get_integer_value(kSection, "and_a_long_key_as_well", own);
    configuration_->get_integer_value(kSection, "another_long_key_for_all", global);
    configuration_->get_integer_value(kSection, "a_long_key_that_is_nowhere", none);
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  EXPECT_EQ(own, 3U);
  EXPECT_EQ(global, 4U);
  EXPECT_EQ(none, 0U);
}

// ---- the setting table ----

std::optional<unsigned> find(const _qz_LOG_log_setting_tbl& table, const char* section, const char* key) {
  const unsigned* const value = table.find_entry(section, key);
  return value == nullptr ? std::nullopt : std::optional<unsigned>(*value);
}

TEST(LogConfSettingTable, CreateAndFind_SectionAndKeyRunTogether) {
  _qz_LOG_log_setting_tbl table(3);
  EXPECT_EQ(find(table, "a", "b"), std::nullopt);
  table.create_entry("a", "b", 1);
  table.create_entry("ab", "", 2);
  table.create_entry(nullptr, "c", 3);
  EXPECT_EQ(find(table, "a", "b"), 2U);
  EXPECT_EQ(find(table, "", "ab"), 2U);
  EXPECT_EQ(find(table, "", "c"), 3U);
  EXPECT_EQ(find(table, nullptr, "c"), 3U);
  EXPECT_EQ(find(table, "a", ""), std::nullopt);
}

TEST(LogConfSettingTable, Clear_EmptyAndUsable) {
  _qz_LOG_log_setting_tbl table(3);
  for (unsigned i = 0; i < 100; ++i) table.create_entry("s", std::to_string(i).c_str(), i);
  EXPECT_EQ(find(table, "s", "99"), 99U);
  table.clear();
  EXPECT_EQ(find(table, "s", "99"), std::nullopt);
  table.create_entry("s", "1", 7);
  EXPECT_EQ(find(table, "s", "1"), 7U);
}

TEST(LogConfSettingTable, CreateWithoutMemory_ThrowsAndTheOthersStay) {
  _qz_LOG_log_setting_tbl table(3);
  table.create_entry("s", "1", 1);
  const std::string key(100, 'k');  // longer than the texts for which a thread keeps memory
  EXPECT_GT(FailEveryAllocation([&] { table.create_entry("s", key.c_str(), 2); },
                                [&] { EXPECT_EQ(find(table, "s", "1"), 1U); }),
            1U);
  EXPECT_EQ(find(table, "s", key.c_str()), 2U);
}

// ---- the line reader ----

struct Line {
  int result;
  std::string text;
  bool operator==(const Line&) const = default;
};

void PrintTo(const Line& line, std::ostream* out) { *out << line.result << " \"" << line.text << '"'; }

/// What `count` calls of the reader give for a file of these bytes.
std::vector<Line> read_lines(const std::string& bytes, int max, int count) {
  const TempDir folder;
  const FileHandle file(std::fopen(folder.write("lines", bytes).c_str(), "rb"));
  read_file reader;
  std::vector<Line> lines;
  for (int i = 0; i < count; ++i) {
    std::vector<char> buffer(static_cast<std::size_t>(max) + 1, '#');
    const int result = reader.readLine(file.get(), buffer.data(), max);
    lines.push_back({result, result == -1 ? "" : buffer.data()});
  }
  return lines;
}

TEST(LogConfReadLine, Breaks_EachKindEndsALineAndADoubledOneToo) {
  for (const char* end : {"\n", "\r"}) {
    EXPECT_EQ(read_lines("ab"s + end + "cd" + end + "ef" + end + "gh", 128, 4),
              (std::vector<Line>{{0, "ab"}, {0, "cd"}, {0, "ef"}, {-2, "gh"}}));
  }
  for (const char* end : {"\r\n", "\n\r", "\n\n", "\r\r"}) {
    EXPECT_EQ(read_lines("ab"s + end + "cd" + end + "e", 128, 3), (std::vector<Line>{{0, "ab"}, {0, "cd"}, {-2, "e"}}));
  }
  EXPECT_EQ(read_lines("a\n\n\nb\n\n\n\nc", 128, 5),
            (std::vector<Line>{{0, "a"}, {0, ""}, {0, "b"}, {0, ""}, {-2, "c"}}));
}

TEST(LogConfReadLine, EndOfFile_Minus2AlsoAfterACompleteLine) {
  EXPECT_EQ(read_lines("", 128, 2), (std::vector<Line>{{-2, ""}, {-2, ""}}));
  EXPECT_EQ(read_lines("ab", 128, 3), (std::vector<Line>{{-2, "ab"}, {-2, ""}, {-2, ""}}));
  // The position stays before the line break, so the next call meets it again.
  EXPECT_EQ(read_lines("ab\n", 128, 3), (std::vector<Line>{{-2, "ab"}, {-2, ""}, {-2, ""}}));
  EXPECT_EQ(read_lines("ab\r\n", 128, 2), (std::vector<Line>{{0, "ab"}, {-2, ""}}));
  EXPECT_EQ(read_lines("\n", 128, 2), (std::vector<Line>{{-2, ""}, {-2, ""}}));
  EXPECT_EQ(read_lines("\n\n", 128, 2), (std::vector<Line>{{0, ""}, {-2, ""}}));
}

TEST(LogConfReadLine, AtMostMaxCharacters_OneMoreGivesMinus1AgainAndAgain) {
  EXPECT_EQ(read_lines("abcd\nef", 4, 2), (std::vector<Line>{{0, "abcd"}, {-2, "ef"}}));
  EXPECT_EQ(read_lines("abcd", 4, 1), (std::vector<Line>{{-2, "abcd"}}));
  EXPECT_EQ(read_lines("abcde\nef", 4, 3), (std::vector<Line>{{-1, ""}, {-1, ""}, {-1, ""}}));
  EXPECT_EQ(read_lines("abcde", 4, 1), (std::vector<Line>{{-1, ""}}));
  EXPECT_EQ(read_lines("ab\nabcde\nef", 4, 3), (std::vector<Line>{{0, "ab"}, {-1, ""}, {-1, ""}}));
  EXPECT_EQ(read_lines("\n", 0, 1), (std::vector<Line>{{-2, ""}}));
  EXPECT_EQ(read_lines("a\n", 0, 1), (std::vector<Line>{{-1, ""}}));
}

TEST(LogConfReadLine, ZeroBytesAndHighBytes_StoredLikeOthers) {
  const TempDir folder;
  const FileHandle file(std::fopen(folder
                                       .write("lines",
                                              "a\0\xFF"
                                              "b\nc"s)
                                       .c_str(),
                                   "rb"));
  read_file reader;
  char buffer[9] = {};
  EXPECT_EQ(reader.readLine(file.get(), buffer, 8), 0);
  EXPECT_EQ(std::string(buffer, 5),
            "a\0\xFF"
            "b\0"s);
}

TEST(LogConfReadLine, StreamMovedBetweenCalls_ReaderKeepsItsOwnPosition) {
  const TempDir folder;
  const FileHandle file(std::fopen(folder.write("lines", "ab\ncd\nef").c_str(), "rb"));
  read_file reader;
  char buffer[9] = {};
  EXPECT_EQ(reader.readLine(file.get(), buffer, 8), 0);
  std::fseek(file.get(), 0, SEEK_END);
  EXPECT_EQ(reader.readLine(file.get(), buffer, 8), 0);
  EXPECT_STREQ(buffer, "cd");
}

TEST(LogConfReadLine, StreamThatCannotBePositioned_Minus1) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const FileHandle file(fdopen(ends[0], "rb"));
  close(ends[1]);
  read_file reader;
  char buffer[9] = {};
  EXPECT_EQ(reader.readLine(file.get(), buffer, 8), -1);
}

}  // namespace
