#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

using namespace qzlog;

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

constexpr const char* kUnknownIdThrown = "QZX_logging_entry_type_not_found \"Entry id argument is invalid\"";

class EntryCopy : public EntryTest {
 protected:
  /// One value of every type but GUID, and of the standard fields.
  static void fill(Entry& entry) {
    entry.set_log_level(4);
    entry.set_timestamp(qz_Time::from_unix_seconds(1000000), true);
    entry.add_attrib_bool("TypeBool", true);
    entry.add_attrib_1u("TypeUInt1", 200);
    entry.add_attrib_1("TypeSInt1", -3);
    entry.add_attrib_2u("TypeUInt2", 60000);
    entry.add_attrib_2("TypeSInt2", -30000);
    entry.add_attrib_4u("TypeUInt4", 4000000000U);
    entry.add_attrib_4("TypeSInt4", -2000000000);
    entry.add_attrib_float8("TypeFloat", 2.5);
    for (int code = TypeChar32; code <= TypeChar2K; ++code)
      entry.add_attrib_str(type_name(code), type_name(code), true);
    for (int code = TypeMBChar32; code <= TypeMBChar2K; ++code) {
      entry.add_attrib_mbstr(type_name(code), type_name(code), true);
    }
    for (int code = TypeDate; code <= TypeTimestamp; ++code) {
      entry.add_attrib_time(type_name(code), qz_Time::from_unix_seconds(code));
    }
    entry._add_attribute("TypeGUID", new StoredValue<TypeGUID>("0123"));
    entry.add_attrib_4u("GlobalTypeUInt4", 8);
  }

  static void expect_filled(const Entry& entry) {
    EXPECT_EQ(entry.get_entry_id(), kId);
    EXPECT_EQ(entry.get_log_level(), 4U);
    EXPECT_EQ(entry.get_property_mask(), 0x80000005U);
    EXPECT_STREQ(entry.get_version_text(), "2.5");
    EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 1000000);
    EXPECT_TRUE(entry.get_attrib_bool("TypeBool"));
    EXPECT_EQ(entry.get_attrib_1u("TypeUInt1"), 200);
    EXPECT_EQ(entry.get_attrib_1("TypeSInt1"), static_cast<char>(-3));
    EXPECT_EQ(entry.get_attrib_2u("TypeUInt2"), 60000);
    EXPECT_EQ(entry.get_attrib_2("TypeSInt2"), -30000);
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 4000000000U);
    EXPECT_EQ(entry.get_attrib_4("TypeSInt4"), -2000000000);
    EXPECT_EQ(entry.get_attrib_float8("TypeFloat"), 2.5);
    for (int code = TypeChar32; code <= TypeChar2K; ++code) {
      EXPECT_STREQ(entry.get_attrib_str(type_name(code)), type_name(code));
    }
    for (int code = TypeMBChar32; code <= TypeMBChar2K; ++code) {
      EXPECT_STREQ(entry.get_attrib_mbstr(type_name(code)), type_name(code));
    }
    for (int code = TypeDate; code <= TypeTimestamp; ++code) {
      EXPECT_EQ(entry.get_attrib_time(type_name(code)).unix_seconds(), code);
    }
    EXPECT_EQ(entry.get_attrib_4u("GlobalTypeUInt4"), 8U);
    EXPECT_TRUE(entry.has_value("TIMEZONE_DIFFERENCE"));
    unsigned char type = 0;
    const _qz_LOG_type_base* guid = entry._get_attribute_internal("TypeGUID", type);
    ASSERT_NE(guid, nullptr);
    EXPECT_EQ(type, TypeGUID);
    EXPECT_STREQ(value_as<qz_String>(*guid).c_str(), "0123");
  }
};

TEST_F(EntryCopy, CopyConstructed_HoldsEveryValueWithItsTypeCode) {
  Entry source(kId, 0);
  fill(source);
  const Entry copy(source);
  expect_filled(copy);
  for (int code = TypeBool; code <= TypeGUID; ++code) {
    unsigned char type = 0;
    const _qz_LOG_type_base* value = copy._get_attribute_internal(type_name(code), type);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->get_type(), code);
    EXPECT_EQ(type, code);
  }
}

TEST_F(EntryCopy, CopyConstructed_IsIndependentInBothDirections) {
  auto source = std::make_unique<Entry>(kId, 0U);
  fill(*source);
  Entry copy(*source);
  copy.clear_attribs(true);
  expect_filled(*source);
  Entry second(*source);
  source.reset();
  expect_filled(second);
}

TEST_F(EntryCopy, Assigned_ReplacesEverythingItHad) {
  Entry source(kId, 0);
  fill(source);
  Entry target(kPlainId, 7);
  target.add_attrib_str("GlobalTypeChar32", "old", true);
  EXPECT_EQ(&(target = source), &target);
  expect_filled(target);
  EXPECT_FALSE(target.has_value("GlobalTypeChar32"));
}

TEST_F(EntryCopy, Assigned_ToAnEntryWithoutId_Fills) {
  Entry source(kId, 0);
  fill(source);
  Entry target;
  target = source;
  expect_filled(target);
  expect_filled(source);
}

TEST_F(EntryCopy, SelfAssigned_LosesAttributesLevelAndTime) {
  Entry entry(kId, 0);
  fill(entry);
  const Entry& same = entry;
  entry = same;
  EXPECT_EQ(entry.get_entry_id(), kId);
  EXPECT_EQ(entry.get_log_level(), 0U);
  EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 0);
  for (int code = TypeBool; code <= TypeGUID; ++code) EXPECT_FALSE(entry.has_value(type_name(code)));
  entry.add_attrib_4u("TypeUInt4", 7);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
}

TEST_F(EntryCopy, OfAnEntryWithoutId_Throws) {
  const Entry empty;
  EXPECT_EQ(thrown_by([&] { Entry copy(empty); }), kUnknownIdThrown);
}

TEST_F(EntryCopy, OfAnEntryWithoutId_WritesTheRecordsOfSettingAnId) {
  const Entry empty;
  EXPECT_EQ(records_at(1, [&] { Entry copy(empty); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_entry_id, invalid entry id:0\n"}));
}

TEST_F(EntryCopy, OfAnEntryWithId_WritesTheRecordOfSettingAnId) {
  const Entry source(kId, 0);
  EXPECT_EQ(records_at(3, [&] { Entry copy(source); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_entry_id :1001\n"}));
}

TEST_F(EntryCopy, AssignedFromAnEntryWithoutId_ThrowsAndIsCleared) {
  const Entry empty;
  Entry target(kId, 0);
  fill(target);
  EXPECT_EQ(thrown_by([&] { target = empty; }), kUnknownIdThrown);
  EXPECT_EQ(target.get_definition(), nullptr);
  EXPECT_EQ(target.get_log_level(), 0U);
  EXPECT_FALSE(target.has_value("TypeUInt4"));
  target.set_entry_id(kId);
  target.add_attrib_4u("TypeUInt4", 7);
  EXPECT_EQ(target.get_attrib_4u("TypeUInt4"), 7U);
}

TEST_F(EntryCopy, OfAnEntryWithoutId_WhenIdZeroIsDefined_TakesIt) {
  load({.tag = "2.5", .entries = {{.id = 0, .mask = 3}}});
  const Entry empty;
  const Entry copy(empty);
  EXPECT_EQ(copy.get_entry_id(), 0U);
  EXPECT_EQ(copy.get_property_mask(), 3U);
  EXPECT_NE(copy.get_definition(), nullptr);
}

TEST_F(EntryCopy, OfAnEntryWhoseNewIdFailed_BindsItsOldId) {
  Entry source(kId, 0);
  EXPECT_EQ(thrown_by([&] { source.set_entry_id(kUnknownId); }), kUnknownIdThrown);
  const Entry copy(source);
  EXPECT_EQ(copy.get_entry_id(), kId);
  EXPECT_NE(copy.get_definition(), nullptr);
}

TEST_F(EntryCopy, DefinitionsCleared_ThrowsAndLeavesTheSource) {
  Entry source(kId, 0);
  fill(source);
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(thrown_by([&] { Entry copy(source); }), kUnknownIdThrown);
  EXPECT_EQ(source.get_attrib_4u("TypeUInt4"), 4000000000U);
}

TEST_F(EntryCopy, VersionText_IsTheSources) {
  const Entry source(kId, 0);
  load({.tag = "3.1", .entries = {{.id = kId, .mask = 9}}});
  const Entry copy(source);
  EXPECT_STREQ(copy.get_version_text(), "2.5");
  EXPECT_EQ(copy.get_property_mask(), 9U);
}

TEST_F(EntryCopy, OfValuesItsDefinitionDoesNotKnow_TakesThemUnchecked) {
  Entry source(kId, 0);
  source.add_attrib_4u("TypeUInt4", 7);
  source.set_entry_id(kOtherTypesId);
  const Entry copy(source);
  EXPECT_EQ(copy.get_attrib_4u("TypeUInt4"), 7U);
}

TEST_F(EntryCopy, LastTimeZoneValues_AreCopied) {
  const TimeZone zone("Europe/Berlin");
  Entry source(kId, 0);
  source.set_timestamp(qz_Time::from_unix_seconds(1000000), false);
  Entry copy(source);
  copy.remove_attrib("TIMEZONE_DIFFERENCE");
  copy.remove_attrib("DAYLIGHT_SAVING_ACTIVE");
  copy.set_timestamp(qz_Time::from_unix_seconds(2000000), false);
  EXPECT_FALSE(copy.has_value("TIMEZONE_DIFFERENCE"));
  EXPECT_FALSE(copy.has_value("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryCopy, TimestampInLocalMode_KeepsItsMode) {
  const TimeZone zone("Asia/Kathmandu");
  Entry source(kId, 0);
  source.set_timestamp(qz_Time::from_unix_seconds(1000000), false);
  const Entry copy(source);
  EXPECT_EQ(copy.get_attrib_time("TIMESTAMP").is_GMT_time_mode(), false);
  EXPECT_EQ(copy.get_attrib_time("TIMESTAMP").unix_seconds(), 1000000 - 330 * 60);
}

TEST_F(EntryCopy, ManyAttributes_AllCopied) {
  std::vector<LdfAttribute> attributes;
  for (int i = 0; i < 200; ++i) attributes.push_back({"Attribute" + std::to_string(i), TypeUInt4});
  load({.tag = "1.1", .entries = {{.id = kId, .attributes = attributes}}});
  Entry source(kId, 0);
  for (unsigned i = 0; i < 200; ++i) source.add_attrib_4u(attributes[i].name.c_str(), i);
  const Entry copy(source);
  for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(copy.get_attrib_4u(attributes[i].name.c_str()), i);
}

}  // namespace
