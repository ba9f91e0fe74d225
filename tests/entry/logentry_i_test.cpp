#include "entry/logentry_i.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryCore : public EntryTest {};

constexpr const char* kUnknownIdThrown = "QZX_logging_entry_type_not_found \"Entry id argument is invalid\"";

std::string level_thrown(const std::string& id) {
  return "QZX_logging_invalid_log_level \"log level argument is invalid under Entry ID " + id + " !\"";
}

constexpr const char* kNoDefinitionThrown =
    "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"";

TEST_F(EntryCore, DefaultConstructed_IsEmpty) {
  const Entry entry;
  EXPECT_EQ(entry.get_entry_id(), 0U);
  EXPECT_EQ(entry.get_log_level(), 0U);
  EXPECT_EQ(entry.get_property_mask(), 0U);
  EXPECT_STREQ(entry.get_version_text(), "");
  EXPECT_EQ(entry.get_definition(), nullptr);
  EXPECT_TRUE(entry.get_timestamp(true).is_GMT_time_mode());
  EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 0);
}

TEST_F(EntryCore, DefaultConstructed_ReadingThrowsNotInitialized) {
  const Entry entry;
  EXPECT_EQ(thrown_by([&] { entry.get_attrib_4("TypeSInt4"); }), kNoDefinitionThrown);
  int value = 5;
  EXPECT_EQ(thrown_by([&] { entry.get_attrib_4("COMPONENT_CODE", value); }), kNoDefinitionThrown);
  EXPECT_EQ(value, 5);
}

TEST_F(EntryCore, ConstructedWithId_TakesMaskVersionAndDefinition) {
  for (const IdCase& id : kIds) {
    const Entry entry(id.id, 3);
    EXPECT_EQ(entry.get_entry_id(), id.id);
    EXPECT_EQ(entry.get_log_level(), 3U);
    EXPECT_EQ(entry.get_property_mask(), 0x80000005U);
    EXPECT_STREQ(entry.get_version_text(), "2.5");
    EXPECT_EQ(entry.get_definition(), qz_LOG_LogConfig::GetDefinitionTable()->find_entry(id.id));
    EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 0);
  }
}

TEST_F(EntryCore, ConstructedWithEachLevelTo9_KeepsIt) {
  for (unsigned level = 0; level <= 9; ++level) EXPECT_EQ(Entry(kId, level).get_log_level(), level);
}

TEST_F(EntryCore, ConstructedWithLevel10_ThrowsWithItsId) {
  for (const IdCase& id : kIds) {
    for (const unsigned level : {10U, 11U, 4294967295U}) {
      EXPECT_EQ(thrown_by([&] { Entry(id.id, level); }), level_thrown(id.text));
    }
  }
}

TEST_F(EntryCore, ConstructedWithLevel10_WritesRecord) {
  EXPECT_EQ(records_at(1, [] { Entry(kId, 10); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, log level=10 > LOG_LEVEL_HIGH\n"}));
  EXPECT_EQ(records_at(1, [] { Entry(kId, 4294967295U); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, log level=-1 > LOG_LEVEL_HIGH\n"}));
}

TEST_F(EntryCore, ConstructedWithUnknownId_Throws) {
  EXPECT_EQ(thrown_by([] { Entry(kUnknownId, 1); }), kUnknownIdThrown);
  EXPECT_EQ(thrown_by([] { Entry(0, 1); }), kUnknownIdThrown);
}

TEST_F(EntryCore, ConstructedWithUnknownIdAndBadLevel_ThrowsForTheId) {
  EXPECT_EQ(thrown_by([] { Entry(kUnknownId, 10); }), kUnknownIdThrown);
}

TEST_F(EntryCore, ConstructedWithUnknownId_WritesRecord) {
  EXPECT_EQ(records_at(1, [] { Entry(kUnknownId, 1); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, invalid entry id:77\n"}));
  EXPECT_EQ(records_at(1, [] { Entry(4294967290U, 1); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, invalid entry id:-6\n"}));
}

TEST_F(EntryCore, ConstructedWithNothingLoaded_Throws) {
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(thrown_by([] { Entry(kId, 1); }), kUnknownIdThrown);
}

TEST_F(EntryCore, SetEntryId_ResetsLevelAndTakesMaskAndVersion) {
  Entry entry;
  entry.set_log_level(4);
  entry.set_entry_id(kPlainId);
  EXPECT_EQ(entry.get_entry_id(), kPlainId);
  EXPECT_EQ(entry.get_log_level(), 0U);
  EXPECT_EQ(entry.get_property_mask(), 0x44U);
  EXPECT_STREQ(entry.get_version_text(), "2.5");
  EXPECT_NE(entry.get_definition(), nullptr);
}

TEST_F(EntryCore, SetEntryId_KeepsAttributesAndTime) {
  Entry entry(kId, 4);
  entry.set_timestamp(qz_Time::from_unix_seconds(1000), true);
  entry.add_attrib_4u("TypeUInt4", 7);
  entry.set_entry_id(kPlainId);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 1000);
}

TEST_F(EntryCore, SetEntryId_SameId_ResetsLevelToo) {
  Entry entry(kId, 4);
  entry.set_entry_id(kId);
  EXPECT_EQ(entry.get_log_level(), 0U);
}

TEST_F(EntryCore, SetEntryId_AnyId_WritesLevel3Record) {
  Entry entry;
  EXPECT_EQ(records_at(3, [&] { entry.set_entry_id(4294967295U); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_entry_id :-1\n"}));
}

TEST_F(EntryCore, SetEntryId_Unknown_ThrowsAndLeavesTheRest) {
  Entry entry(kId, 4);
  entry.add_attrib_4u("TypeUInt4", 7);
  EXPECT_EQ(thrown_by([&] { entry.set_entry_id(kUnknownId); }), kUnknownIdThrown);
  EXPECT_EQ(entry.get_definition(), nullptr);
  EXPECT_EQ(entry.get_entry_id(), kId);
  EXPECT_EQ(entry.get_log_level(), 4U);
  EXPECT_EQ(entry.get_property_mask(), 0x80000005U);
  EXPECT_STREQ(entry.get_version_text(), "2.5");
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
}

TEST_F(EntryCore, SetEntryId_Unknown_EntryCanBeGivenAnotherId) {
  Entry entry(kId, 4);
  EXPECT_EQ(thrown_by([&] { entry.set_entry_id(kUnknownId); }), kUnknownIdThrown);
  EXPECT_EQ(thrown_by([&] { entry.get_attrib_4("TypeSInt4"); }), kNoDefinitionThrown);
  entry.set_entry_id(kId);
  EXPECT_EQ(entry.get_attrib_4("TypeSInt4"), 0);
}

TEST_F(EntryCore, SetEntryId_Unknown_WritesRecords) {
  Entry entry;
  {
    const DebugLogFile log(1);
    EXPECT_EQ(thrown_by([&] { entry.set_entry_id(kUnknownId); }), kUnknownIdThrown);
    EXPECT_EQ(log.unnumbered_records(),
              Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_entry_id, invalid entry id:77\n"}));
  }
  const DebugLogFile log(3);
  EXPECT_EQ(thrown_by([&] { entry.set_entry_id(4294967290U); }), kUnknownIdThrown);
  EXPECT_EQ(entry_records(log), Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_entry_id :-6\n",
                                       "logentry_i:# _qz_LOG_log_entry_imp::set_entry_id, invalid entry id:-6\n"}));
}

TEST_F(EntryCore, SetEntryId_RecordAtLevel1_NotWrittenAtLevel0) {
  Entry entry;
  const DebugLogFile log(0);
  EXPECT_EQ(thrown_by([&] { entry.set_entry_id(kUnknownId); }), kUnknownIdThrown);
  EXPECT_FALSE(log.exists());
}

TEST_F(EntryCore, SetLogLevel_EachTo9_KeepsIt) {
  Entry entry(kId, 0);
  for (unsigned level = 0; level <= 9; ++level) {
    entry.set_log_level(level);
    EXPECT_EQ(entry.get_log_level(), level);
  }
}

TEST_F(EntryCore, SetLogLevel_10_ThrowsAndKeepsTheLevel) {
  for (const IdCase& id : kIds) {
    Entry entry(id.id, 3);
    EXPECT_EQ(thrown_by([&] { entry.set_log_level(10); }), level_thrown(id.text));
    EXPECT_EQ(thrown_by([&] { entry.set_log_level(4294967295U); }), level_thrown(id.text));
    EXPECT_EQ(entry.get_log_level(), 3U);
  }
}

TEST_F(EntryCore, SetLogLevel_10WithoutId_ThrowsWithIdZero) {
  Entry entry;
  EXPECT_EQ(thrown_by([&] { entry.set_log_level(10); }), level_thrown("0"));
}

TEST_F(EntryCore, SetLogLevel_10_WritesRecord) {
  Entry entry(kId, 3);
  EXPECT_EQ(records_at(1, [&] { entry.set_log_level(10); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_log_level, log level=10 >LOG_LEVEL_HIGHT\n"}));
  EXPECT_EQ(records_at(1, [&] { entry.set_log_level(4294967295U); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_log_level, log level=-1 >LOG_LEVEL_HIGHT\n"}));
}

TEST_F(EntryCore, ClearAttribs_ForgetsAttributesLevelAndTime) {
  for (const bool full : {false, true}) {
    Entry entry(kId, 4);
    entry.add_attrib_4u("TypeUInt4", 7);
    entry.add_attrib_str("GlobalTypeChar32", "text", true);
    entry.set_timestamp(qz_Time::from_unix_seconds(1000), false);
    entry.clear_attribs(full);
    EXPECT_FALSE(entry.has_value("TypeUInt4"));
    EXPECT_FALSE(entry.has_value("GlobalTypeChar32"));
    EXPECT_FALSE(entry.has_value("TIMEZONE_DIFFERENCE"));
    EXPECT_EQ(entry.get_log_level(), 0U);
    EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 0);
  }
}

TEST_F(EntryCore, ClearAttribs_KeepsIdMaskVersionAndDefinition) {
  Entry entry(kId, 4);
  const _qz_LOG_log_definition* definition = entry.get_definition();
  entry.clear_attribs(true);
  EXPECT_EQ(entry.get_entry_id(), kId);
  EXPECT_EQ(entry.get_property_mask(), 0x80000005U);
  EXPECT_STREQ(entry.get_version_text(), "2.5");
  EXPECT_EQ(entry.get_definition(), definition);
}

TEST_F(EntryCore, ClearAttribs_Again_StaysEmptyAndUsable) {
  Entry entry(kId, 4);
  for (int round = 0; round < 3; ++round) {
    entry.clear_attribs(true);
    EXPECT_FALSE(entry.has_value("TypeUInt4"));
    entry.add_attrib_4u("TypeUInt4", 7);
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  }
}

// An entry and the definition it uses.

std::vector<LdfEntry> many_entries(unsigned first, unsigned count) {
  std::vector<LdfEntry> entries;
  for (unsigned id = first; id < first + count; ++id) {
    entries.push_back({.id = id, .mask = id, .attributes = {{"Own", TypeUInt4}}});
  }
  return entries;
}

TEST_F(EntryCore, DefinitionEvicted_EntryGoesOnUsingIt) {
  load({.tag = "1.1", .entries = many_entries(1, 400)});
  Entry first(1, 0);
  for (unsigned id = 2; id <= 400; ++id) EXPECT_EQ(Entry(id, 0).get_property_mask(), id);
  first.add_attrib_4u("Own", 7);
  EXPECT_EQ(first.get_attrib_4u("Own"), 7U);
  EXPECT_NE(first.get_definition(), qz_LOG_LogConfig::GetDefinitionTable()->find_entry(1));
}

TEST_F(EntryCore, DefinitionsEvictedWithAllEntriesAlive_EachGoesOnUsingItsOwn) {
  load({.tag = "1.1", .entries = many_entries(1, 400)});
  std::vector<std::unique_ptr<Entry>> entries;
  for (unsigned id = 1; id <= 400; ++id) entries.push_back(std::make_unique<Entry>(id, 0));
  for (unsigned id = 1; id <= 400; ++id) {
    entries[id - 1]->add_attrib_4u("Own", id);
    EXPECT_EQ(entries[id - 1]->get_definition()->get_entry_id(), id);
  }
  for (unsigned id = 1; id <= 400; ++id) EXPECT_EQ(entries[id - 1]->get_attrib_4u("Own"), id);
}

TEST_F(EntryCore, DefinitionsCleared_EntryGoesOnUsingItsOwnButNoGlobals) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("GlobalTypeUInt4", 6);
  qz_LOG_LogConfig::ClearDefinitions();
  entry.add_attrib_4u("TypeUInt4", 7);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  EXPECT_EQ(entry.get_attrib_4u("GlobalTypeUInt4"), 6U);
  EXPECT_EQ(thrown_by([&] { entry.add_attrib_4u("GlobalTypeUInt4", 7); }),
            "QZX_logging_invalid_attribute_name \"GlobalTypeUInt4is an invalid attibute under Entry ID 1001 !\"");
}

TEST_F(EntryCore, DefinitionsReloaded_EntryGoesOnUsingTheOldUntilItsIdIsSet) {
  Entry entry(kId, 0);
  load({.tag = "3.1", .entries = {{.id = kId, .mask = 9, .attributes = {{"New", TypeUInt4}}}}});
  entry.add_attrib_4u("TypeUInt4", 7);
  EXPECT_STREQ(entry.get_version_text(), "2.5");
  EXPECT_EQ(entry.get_property_mask(), 0x80000005U);
  entry.set_entry_id(kId);
  EXPECT_STREQ(entry.get_version_text(), "3.1");
  EXPECT_EQ(entry.get_property_mask(), 9U);
  entry.add_attrib_4u("New", 8);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  EXPECT_EQ(entry.get_attrib_4u("New"), 8U);
}

TEST_F(EntryCore, AuxiliaryFileLoadedLater_ExtendsTheDefinitionInUse) {
  Entry entry(kPlainId, 0);
  load_auxiliary({.tag = "4.6", .entries = {{.id = kPlainId, .attributes = {{"Added", TypeUInt4}}}}});
  entry.add_attrib_4u("Added", 7);
  EXPECT_EQ(entry.get_attrib_4u("Added"), 7U);
}

}  // namespace
