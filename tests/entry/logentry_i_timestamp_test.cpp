#include <gtest/gtest.h>

#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryTimestamp : public EntryTest {};

qz_Time time_of(const char* text) {
  qz_Time time;
  EXPECT_TRUE(time.set_to_string_value(text)) << text;
  return time;
}

std::string text_of(const qz_Time& time) {
  char buffer[64];
  time.print_out(buffer, sizeof buffer);
  return buffer;
}

constexpr const char* kSummer = "2026-07-15 12:00:00";
constexpr const char* kWinter = "2026-01-15 12:00:00";

struct ZoneCase {
  const char* zone;
  const char* time;
  bool gmt;
  short difference;
  bool daylight;
};

constexpr ZoneCase kZoneCases[] = {
    {"Europe/Berlin", kSummer, false, 120, true},
    {"Europe/Berlin", kSummer, true, 60, true},
    {"Europe/Berlin", kWinter, false, 60, false},
    {"Europe/Berlin", kWinter, true, 60, false},
    {"Asia/Kathmandu", kSummer, false, 345, false},
    {"Asia/Kathmandu", kWinter, true, 345, false},
    {"America/New_York", kSummer, false, -240, true},
    {"America/New_York", kSummer, true, -300, true},
    {"America/New_York", kWinter, false, -300, false},
    {"America/New_York", kWinter, true, -300, false},
    {"America/St_Johns", kSummer, false, -150, true},
    {"America/St_Johns", kWinter, false, -210, false},
    {"Australia/Sydney", kWinter, false, 660, true},
    {"Australia/Sydney", kSummer, false, 600, false},
    {"UTC", kSummer, false, 0, false},
    {"UTC", kSummer, true, 0, false},
};

TEST_F(EntryTimestamp, Set_StoresZoneDifferenceAndDaylight) {
  for (const ZoneCase& test_case : kZoneCases) {
    SCOPED_TRACE(std::string(test_case.zone) + " " + test_case.time + (test_case.gmt ? " GMT" : ""));
    const TimeZone zone(test_case.zone);
    Entry entry(kId, 0);
    entry.set_timestamp(time_of(test_case.time), test_case.gmt);
    EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), test_case.difference);
    EXPECT_TRUE(entry.has_value("TIMEZONE_DIFFERENCE"));
    EXPECT_EQ(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"), test_case.daylight);
    EXPECT_TRUE(entry.has_value("DAYLIGHT_SAVING_ACTIVE"));
  }
}

TEST_F(EntryTimestamp, Set_KeepsTheCalendarFieldsAndTakesTheMode) {
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  for (const char* text : {"2026-07-15 12:00:00", "2026-07-15 12:00:00 GMT"}) {
    entry.set_timestamp(time_of(text), true);
    EXPECT_EQ(text_of(entry.get_timestamp(true)), "2026-07-15 12:00:00 GMT");
    entry.set_timestamp(time_of(text), false);
    EXPECT_EQ(text_of(entry.get_timestamp(false)), "2026-07-15 12:00:00");
  }
}

TEST_F(EntryTimestamp, Get_InTheOtherMode_Converts) {
  const TimeZone zone("America/New_York");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kSummer), true);
  EXPECT_EQ(text_of(entry.get_timestamp(false)), "2026-07-15 08:00:00");
  EXPECT_EQ(text_of(entry.get_timestamp(true)), "2026-07-15 12:00:00 GMT");
  entry.set_timestamp(time_of(kWinter), false);
  EXPECT_EQ(text_of(entry.get_timestamp(true)), "2026-01-15 17:00:00 GMT");
  EXPECT_EQ(text_of(entry.get_timestamp(false)), "2026-01-15 12:00:00");
}

TEST_F(EntryTimestamp, Get_NeverSet_IsTheZeroTime) {
  const TimeZone zone("Asia/Kathmandu");
  const Entry entry(kId, 0);
  EXPECT_EQ(text_of(entry.get_timestamp(true)), "1970-01-01 00:00:00 GMT");
  EXPECT_EQ(text_of(entry.get_timestamp(false)), "1970-01-01 05:30:00");
}

TEST_F(EntryTimestamp, SetAgainInTheSameState_AddsNothing) {
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kWinter), false);
  entry.remove_attrib("TIMEZONE_DIFFERENCE");
  entry.add_attrib_bool("DAYLIGHT_SAVING_ACTIVE", true);
  entry.set_timestamp(time_of("2026-02-15 12:00:00"), false);
  EXPECT_FALSE(entry.has_value("TIMEZONE_DIFFERENCE"));
  EXPECT_TRUE(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"));
  EXPECT_EQ(text_of(entry.get_timestamp(false)), "2026-02-15 12:00:00");
}

TEST_F(EntryTimestamp, SetWithOnlyTheDifferenceChanged_AddsOnlyThat) {
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kSummer), false);
  entry.remove_attrib("TIMEZONE_DIFFERENCE");
  entry.remove_attrib("DAYLIGHT_SAVING_ACTIVE");
  entry.set_timestamp(time_of(kSummer), true);
  EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), 60);
  EXPECT_TRUE(entry.has_value("TIMEZONE_DIFFERENCE"));
  EXPECT_FALSE(entry.has_value("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryTimestamp, SetWithOnlyDaylightChanged_AddsOnlyThat) {
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kSummer), true);
  entry.remove_attrib("TIMEZONE_DIFFERENCE");
  entry.remove_attrib("DAYLIGHT_SAVING_ACTIVE");
  entry.set_timestamp(time_of(kWinter), true);
  EXPECT_FALSE(entry.has_value("TIMEZONE_DIFFERENCE"));
  EXPECT_TRUE(entry.has_value("DAYLIGHT_SAVING_ACTIVE"));
  EXPECT_FALSE(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryTimestamp, SetAfterAChangeAndBack_AddsBothAgain) {
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kSummer), false);
  entry.set_timestamp(time_of(kWinter), false);
  EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), 60);
  EXPECT_FALSE(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"));
  entry.set_timestamp(time_of(kSummer), false);
  EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), 120);
  EXPECT_TRUE(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryTimestamp, SetAfterClear_AddsBothAgain) {
  for (const bool full : {false, true}) {
    Entry entry(kId, 0);
    entry.set_timestamp(time_of(kWinter), true);
    entry.clear_attribs(full);
    entry.set_timestamp(time_of(kWinter), true);
    EXPECT_TRUE(entry.has_value("TIMEZONE_DIFFERENCE"));
    EXPECT_TRUE(entry.has_value("DAYLIGHT_SAVING_ACTIVE"));
  }
}

std::string invalid_name(const std::string& name) {
  return "QZX_logging_invalid_attribute_name \"" + name + "is an invalid attibute under Entry ID 1001 !\"";
}

TEST_F(EntryTimestamp, SetWithUndefinedGlobals_ThrowsEachTimeButSetsTheTime) {
  load({.tag = "2.5", .entries = {{.id = kId}}});
  Entry entry(kId, 0);
  for (const long long moment : {1000, 2000}) {
    EXPECT_EQ(thrown_by([&] { entry.set_timestamp(qz_Time::from_unix_seconds(moment), true); }),
              invalid_name("TIMEZONE_DIFFERENCE"));
    EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), moment);
  }
}

TEST_F(EntryTimestamp, SetWithUndefinedDaylight_ThrowsAfterAddingTheDifference) {
  load({.tag = "2.5", .globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}}, .entries = {{.id = kId}}});
  const TimeZone zone("Asia/Kathmandu");
  Entry entry(kId, 0);
  EXPECT_EQ(thrown_by([&] { entry.set_timestamp(qz_Time::from_unix_seconds(1000), true); }),
            invalid_name("DAYLIGHT_SAVING_ACTIVE"));
  EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), 330);  // Nepal moved by 15 minutes in 1986
  EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 1000);
}

TEST_F(EntryTimestamp, SetWithTheDifferenceDefinedOtherwise_ThrowsMismatch) {
  load({.tag = "2.5", .globals = {{"TIMEZONE_DIFFERENCE", TypeSInt4}}, .entries = {{.id = kId}}});
  Entry entry(kId, 0);
  EXPECT_EQ(thrown_by([&] { entry.set_timestamp(qz_Time::from_unix_seconds(1000), true); }),
            "QZX_logging_attribute_type_mismatch \"Used the wrong add method under Entry ID 1001 !\"");
}

TEST_F(EntryTimestamp, SetWithOwnDefinitions_AddsToThem) {
  load({.tag = "2.5",
        .entries = {
            {.id = kId, .attributes = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}}}}});
  const TimeZone zone("Europe/Berlin");
  Entry entry(kId, 0);
  entry.set_timestamp(time_of(kSummer), false);
  EXPECT_EQ(entry.get_attrib_2("TIMEZONE_DIFFERENCE"), 120);
  EXPECT_TRUE(entry.get_attrib_bool("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryTimestamp, SetWithoutId_ThrowsNotInitialized) {
  Entry entry;
  EXPECT_EQ(thrown_by([&] { entry.set_timestamp(qz_Time::from_unix_seconds(1000), true); }),
            "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"");
  EXPECT_EQ(entry.get_timestamp(true).unix_seconds(), 1000);
}

}  // namespace
