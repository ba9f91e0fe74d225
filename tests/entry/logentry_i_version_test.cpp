#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;
using Version = std::pair<unsigned, unsigned>;

class EntryVersion : public EntryTest {
 protected:
  EntryVersion() { set(0, 0); }
  ~EntryVersion() override { set(0, 0); }

  static void set(unsigned major, unsigned minor) {
    Entry::log_major_version = major;
    Entry::log_minor_version = minor;
  }
  static Version stored() { return {Entry::log_major_version, Entry::log_minor_version}; }
};

struct TagCase {
  const char* tag;
  Version version;  // read over 70 and 80
};

std::string name_of(const TagCase& test_case) { return "tag \"" + std::string(test_case.tag) + "\""; }

TEST_F(EntryVersion, DefaultConstructed_ReadsTheTagUpToWhatDoesNotFit) {
  const TagCase cases[] = {
      {"2.5", {2, 5}},
      {"3", {3, 80}},
      {"3.", {3, 80}},
      {".7", {70, 80}},
      {"abc", {70, 80}},
      {"2.x", {2, 80}},
      {"9999.999", {9999, 999}},
      {"99999999", {99999999, 80}},
      {" 4. 5", {4, 5}},
      {"4 .5", {4, 80}},
      {"", {70, 80}},
      {"1.2.3", {1, 2}},
      {"-1.-2", {4294967295U, 4294967294U}},
      {"007.010", {7, 10}},
      {"2.5beta", {2, 5}},
  };
  for (const TagCase& test_case : cases) {
    SCOPED_TRACE(name_of(test_case));
    load({.tag = test_case.tag, .entries = {{.id = 4}}});
    set(70, 80);
    const Entry entry;
    EXPECT_EQ(stored(), test_case.version);
    EXPECT_STREQ(entry.get_version_text(), test_case.tag);
  }
}

TEST_F(EntryVersion, ConstructedWithId_ReadsMajorAlwaysAndMinorAfterAPoint) {
  const TagCase cases[] = {
      {"2.5", {2, 5}},
      {"3", {3, 80}},
      {"3.", {3, 0}},
      {".7", {0, 7}},
      {"abc", {0, 80}},
      {"2.x", {2, 0}},
      {"9999.999", {9999, 999}},
      {"99999999", {99999999, 80}},
      {" 4. 5", {4, 5}},
      {"4 .5", {4, 5}},
      {"", {0, 80}},
      {"1.2.3", {1, 2}},
      {"a.b", {0, 0}},
      {"-1.-2", {4294967295U, 4294967294U}},
      {"007.010", {7, 10}},
      {"2.5beta", {2, 5}},
  };
  for (const TagCase& test_case : cases) {
    SCOPED_TRACE(name_of(test_case));
    load({.tag = test_case.tag, .entries = {{.id = kId}}});
    set(70, 80);
    const Entry entry(kId, 0);
    EXPECT_EQ(stored(), test_case.version);
    EXPECT_STREQ(entry.get_version_text(), test_case.tag);
  }
}

TEST_F(EntryVersion, DefaultConstructed_NoneOfTheFirstTenIds_ReadsNothing) {
  load({.tag = "2.5", .entries = {{.id = 10}, {.id = 4294967295U}}});
  set(70, 80);
  const Entry entry;
  EXPECT_EQ(stored(), Version(70, 80));
  EXPECT_STREQ(entry.get_version_text(), "");
}

TEST_F(EntryVersion, DefaultConstructed_NothingLoaded_ReadsNothing) {
  qz_LOG_LogConfig::ClearDefinitions();
  set(70, 80);
  const Entry entry;
  EXPECT_EQ(stored(), Version(70, 80));
}

TEST_F(EntryVersion, DefaultConstructed_TakesTheLowestOfTheFirstTenIds) {
  for (unsigned lowest = 0; lowest <= 9; ++lowest) {
    SCOPED_TRACE(lowest);
    LdfFile standard{.tag = "1.1"};
    for (unsigned id = lowest + 1; id <= 10; ++id) standard.entries.push_back({.id = id});
    load(standard);
    load_auxiliary({.tag = "2.2", .entries = {{.id = lowest}}});
    const Entry entry;
    EXPECT_EQ(stored(), Version(2, 2));
    EXPECT_STREQ(entry.get_version_text(), "2.2");
    EXPECT_EQ(entry.get_definition(), nullptr);
    EXPECT_EQ(entry.get_entry_id(), 0U);
    EXPECT_EQ(entry.get_property_mask(), 0U);
  }
}

TEST_F(EntryVersion, SetEntryId_TakesTheTextButNotTheVersion) {
  load({.tag = "2.5", .entries = {{.id = kId}}});
  Entry entry;
  set(70, 80);
  entry.set_entry_id(kId);
  EXPECT_STREQ(entry.get_version_text(), "2.5");
  EXPECT_EQ(stored(), Version(70, 80));
}

TEST_F(EntryVersion, ConstructedWithBadLevel_LeavesTheVersion) {
  set(70, 80);
  EXPECT_NE(thrown_by([] { Entry(kId, 10); }), "nothing");
  EXPECT_EQ(stored(), Version(70, 80));
}

TEST_F(EntryVersion, GetLogVersion_ReadsTheLowestOfTheFirstTenIdsOverWhatWasSet) {
  load({.tag = "2.5", .entries = {{.id = 9}}});
  load_auxiliary({.tag = "4.6", .entries = {{.id = 3}}});
  Entry::set_log_version(70, 80);
  unsigned major = 0;
  unsigned minor = 0;
  Entry::get_log_version(major, minor);
  EXPECT_EQ(Version(major, minor), Version(4, 6));
  EXPECT_EQ(stored(), Version(4, 6));
}

TEST_F(EntryVersion, GetLogVersion_TagWithoutPoint_KeepsTheMinorVersion) {
  load({.tag = "3", .entries = {{.id = 0}}});
  set(70, 80);
  unsigned major = 0;
  unsigned minor = 0;
  Entry::get_log_version(major, minor);
  EXPECT_EQ(Version(major, minor), Version(3, 80));
}

TEST_F(EntryVersion, GetLogVersion_NoneOfTheFirstTenIds_ReturnsWhatWasSet) {
  Entry::set_log_version(70, 80);
  unsigned major = 0;
  unsigned minor = 0;
  Entry::get_log_version(major, minor);
  EXPECT_EQ(Version(major, minor), Version(70, 80));
  EXPECT_EQ(Entry::get_log_major_version(), 70U);
  EXPECT_EQ(Entry::get_log_minor_version(), 80U);
}

TEST_F(EntryVersion, GetLogMajorAndMinorVersion_ReadTheFirstDefinition) {
  load({.tag = "9999.999", .entries = {{.id = 1}}});
  EXPECT_EQ(Entry::get_log_major_version(), 9999U);
  set(0, 0);
  EXPECT_EQ(Entry::get_log_minor_version(), 999U);
  EXPECT_EQ(stored(), Version(9999, 999));
}

TEST_F(EntryVersion, SetLogMajorVersion_2To99_IsStored) {
  for (const unsigned major : {2U, 3U, 98U, 99U}) {
    Entry::set_log_major_version(major);
    EXPECT_EQ(Entry::get_log_major_version(), major);
  }
}

TEST_F(EntryVersion, SetLogMajorVersion_Outside_ThrowsAndKeepsIt) {
  Entry::set_log_major_version(50);
  for (const unsigned major : {0U, 1U, 100U, 4294967295U}) {
    EXPECT_EQ(thrown_by([&] { Entry::set_log_major_version(major); }),
              "QZX_logging_illegal_argument \"invalid argument:major version should >=2 && <=99\"");
  }
  EXPECT_EQ(Entry::get_log_major_version(), 50U);
}

TEST_F(EntryVersion, SetLogMajorVersion_Outside_WritesRecord) {
  EXPECT_EQ(
      records_at(1, [] { Entry::set_log_major_version(1); }),
      Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_log_major_version, log major version not in valid range\n"}));
}

TEST_F(EntryVersion, SetLogMinorVersion_To999_IsStored) {
  for (const unsigned minor : {999U, 998U, 1U, 0U}) {
    Entry::set_log_minor_version(minor);
    EXPECT_EQ(Entry::get_log_minor_version(), minor);
  }
}

TEST_F(EntryVersion, SetLogMinorVersion_Above999_ThrowsAndKeepsIt) {
  Entry::set_log_minor_version(50);
  for (const unsigned minor : {1000U, 4294967295U}) {
    EXPECT_EQ(thrown_by([&] { Entry::set_log_minor_version(minor); }),
              "QZX_logging_illegal_argument \"invalid argument:minor version should >=0 && <=999 \"");
  }
  EXPECT_EQ(Entry::get_log_minor_version(), 50U);
}

TEST_F(EntryVersion, SetLogMinorVersion_Above999_WritesRecord) {
  EXPECT_EQ(
      records_at(1, [] { Entry::set_log_minor_version(1000); }),
      Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_log_minor_version, log minor version not in valid range\n"}));
}

TEST_F(EntryVersion, SetLogVersion_SetsMajorThenMinor) {
  Entry::set_log_version(2, 3);
  EXPECT_EQ(stored(), Version(2, 3));
  EXPECT_EQ(thrown_by([] { Entry::set_log_version(4, 1000); }),
            "QZX_logging_illegal_argument \"invalid argument:minor version should >=0 && <=999 \"");
  EXPECT_EQ(stored(), Version(4, 3));
  EXPECT_EQ(thrown_by([] { Entry::set_log_version(1, 5); }),
            "QZX_logging_illegal_argument \"invalid argument:major version should >=2 && <=99\"");
  EXPECT_EQ(stored(), Version(4, 3));
}

}  // namespace
