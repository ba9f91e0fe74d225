#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryMemory : public EntryTest {
 protected:
  static constexpr const char* kOld = "an old text that is kept on the heap, for it is as long as it is";
  static constexpr const char* kNew = "a new text of as many characters, that is on the heap just as it";

  static constexpr const char* kLong =
      "a new text of more characters than the old one, for which its memory does not suffice, nor what threads keep";

  /// Values in some attributes, so that a loss shows.
  static void fill(Entry& entry) {
    entry.set_log_level(4);
    entry.add_attrib_4u("TypeUInt4", 7);
    entry.add_attrib_str("TypeChar64", kOld, true);
    entry.add_attrib_mbstr("TypeMBChar64", kOld, true);
    entry.add_attrib_time("TypeDate", qz_Time::from_unix_seconds(5));
  }
  /// As many values more as an entry holds inside.
  static void fill_up(Entry& entry) {
    entry.add_attrib_bool("TypeBool", true);
    entry.add_attrib_1u("TypeUInt1", 1);
    entry.add_attrib_1("TypeSInt1", 1);
    entry.add_attrib_2u("TypeUInt2", 1);
    entry.add_attrib_2("TypeSInt2", 1);
    entry.add_attrib_4("TypeSInt4", 1);
  }
  static void expect_filled(const Entry& entry) {
    EXPECT_EQ(entry.get_entry_id(), kId);
    EXPECT_EQ(entry.get_log_level(), 4U);
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
    EXPECT_STREQ(entry.get_attrib_str("TypeChar64"), kOld);
    EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar64"), kOld);
    EXPECT_EQ(entry.get_attrib_time("TypeDate").unix_seconds(), 5);
  }
  /// Definitions come from the cache from now on.
  static void warm_up() {
    Entry entry(kId, 0);
    fill(entry);
    Entry plain(kPlainId, 0);
  }
};

TEST_F(EntryMemory, ConstructionAgain_TakesNoMemory) {
  warm_up();
  EXPECT_EQ(FailEveryAllocation([] { Entry entry(kId, 3); }), 0U);
}

TEST_F(EntryMemory, ShortValuesOfAnEmptyEntry_TakeNoMemory) {
  Entry entry(kId, 0);
  EXPECT_EQ(FailEveryAllocation([&] {
              entry.add_attrib_bool("TypeBool", true);
              entry.add_attrib_4u("TypeUInt4", 1);
              entry.add_attrib_float8("TypeFloat", 1);
              entry.add_attrib_str("TypeChar64", "a short text", true);
              entry.add_attrib_time("TypeTime", qz_Time());
            }),
            0U);
}

TEST_F(EntryMemory, EachAllocationOfAValueMoreThanTheEntryHolds_ThrowsAndNothingIsAdded) {
  Entry entry(kId, 0);
  fill(entry);
  fill_up(entry);
  EXPECT_GT(FailEveryAllocation([&] { entry.add_attrib_4u("GlobalTypeUInt4", 1); },
                                [&] {
                                  EXPECT_FALSE(entry.has_value("GlobalTypeUInt4"));
                                  expect_filled(entry);
                                }),
            0U);
  EXPECT_EQ(entry.get_attrib_4u("GlobalTypeUInt4"), 1U);
  expect_filled(entry);
}

TEST_F(EntryMemory, EachAllocationOfTheFirstConstructionWithAnIdFails_ThrowsMemoryAlloc) {
  unsigned id = 1;
  LdfFile file{.tag = "2.5", .entries = numbered_entries(1, 300)};
  load(file);
  EXPECT_GT(FailEveryAllocation([&] { Entry entry(id, 3); }, [&] { ++id; }), 0U);
}

TEST_F(EntryMemory, EachAllocationOfDefaultConstructionFails_ThrowsMemoryAlloc) {
  load({.tag = "2.5", .entries = {{.id = 9}}});
  EXPECT_GT(FailEveryAllocation([] { Entry entry; }), 0U);
}

struct Operation {
  const char* what;
  void (*run)(Entry& entry);
  const char* name;  // of the attribute that it adds and fill() does not set, or null
  bool takes_memory = false;
};

TEST_F(EntryMemory, EachAllocationOfANewAddFails_NothingIsAddedAndTheRestStays) {
  const Operation operations[] = {
      {"bool", [](Entry& e) { e.add_attrib_bool("TypeBool", true); }, "TypeBool"},
      {"1u", [](Entry& e) { e.add_attrib_1u("TypeUInt1", 1); }, "TypeUInt1"},
      {"1", [](Entry& e) { e.add_attrib_1("TypeSInt1", 1); }, "TypeSInt1"},
      {"2u", [](Entry& e) { e.add_attrib_2u("TypeUInt2", 1); }, "TypeUInt2"},
      {"2", [](Entry& e) { e.add_attrib_2("TypeSInt2", 1); }, "TypeSInt2"},
      {"4u", [](Entry& e) { e.add_attrib_4u("GlobalTypeUInt4", 1); }, "GlobalTypeUInt4"},
      {"4", [](Entry& e) { e.add_attrib_4("TypeSInt4", 1); }, "TypeSInt4"},
      {"float8", [](Entry& e) { e.add_attrib_float8("TypeFloat", 1); }, "TypeFloat"},
      {"str", [](Entry& e) { e.add_attrib_str("TypeChar2K", kNew, true); }, "TypeChar2K", true},
      {"mbstr", [](Entry& e) { e.add_attrib_mbstr("TypeMBChar2K", kNew, true); }, "TypeMBChar2K", true},
      {"time", [](Entry& e) { e.add_attrib_time("TypeTime", qz_Time()); }, "TypeTime"},
  };
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.what);
    Entry entry(kId, 0);
    fill(entry);
    const unsigned allocations = FailEveryAllocation([&] { operation.run(entry); },
                                                     [&] {
                                                       EXPECT_FALSE(entry.has_value(operation.name));
                                                       expect_filled(entry);
                                                     });
    EXPECT_EQ(allocations != 0, operation.takes_memory);
    EXPECT_TRUE(entry.has_value(operation.name));
    expect_filled(entry);
  }
}

TEST_F(EntryMemory, EachAllocationOfAReplacingAddFails_TheOldValueStays) {
  const Operation operations[] = {
      {"4u", [](Entry& e) { e.add_attrib_4u("TypeUInt4", 8); }, nullptr},
      // The old text's memory is used again.
      {"str", [](Entry& e) { e.add_attrib_str("TypeChar64", kNew, true); }, nullptr},
      {"mbstr", [](Entry& e) { e.add_attrib_mbstr("TypeMBChar64", kNew, true); }, nullptr, true},
      {"time", [](Entry& e) { e.add_attrib_time("TypeDate", qz_Time()); }, nullptr},
  };
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.what);
    Entry entry(kId, 0);
    fill(entry);
    const unsigned allocations = FailEveryAllocation([&] { operation.run(entry); }, [&] { expect_filled(entry); });
    EXPECT_EQ(allocations != 0, operation.takes_memory);
  }
}

TEST_F(EntryMemory, EachAllocationOfAReplacingAddOfALongerTextFails_TheOldValueStays) {
  Entry entry(kId, 0);
  for (const char* const old : {"", "short", kOld}) {
    entry.add_attrib_str("TypeChar128", old, true);
    EXPECT_GT(FailEveryAllocation([&] { entry.add_attrib_str("TypeChar128", kLong, true); },
                                  [&] { EXPECT_STREQ(entry.get_attrib_str("TypeChar128"), old); }),
              0U);
    EXPECT_STREQ(entry.get_attrib_str("TypeChar128"), kLong);
    entry.remove_attrib("TypeChar128");
  }
}

TEST_F(EntryMemory, EachAllocationOfAnAddThatChangesTheTypeFails_TheOldValueStays) {
  Entry entry(kId, 0);
  fill(entry);
  entry.set_entry_id(kOtherTypesId);
  constexpr const char* kText = "a text outside the object";
  // All of the memory that the thread keeps for texts.
  const qz_String other(kText);
  const std::vector<qz_String> others(20, other);
  EXPECT_GT(FailEveryAllocation([&] { entry.add_attrib_str("TypeUInt4", kText, true); },
                                [&] { EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U); }),
            0U);
  EXPECT_STREQ(entry.get_attrib_str("TypeUInt4"), kText);
}

TEST_F(EntryMemory, EachAllocationOfATruncatingAddFails_NothingIsAdded) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  qz_LOG_LogConfig::SetCodePage("GB18030");
  std::string text;
  for (int i = 0; i < 2049; ++i) text += "\x81\x30\x81\x31";
  Entry entry(kId, 0);
  EXPECT_GT(FailEveryAllocation([&] { entry.add_attrib_mbstr("TypeMBChar2K", text.c_str(), true); },
                                [&] { EXPECT_FALSE(entry.has_value("TypeMBChar2K")); }),
            0U);
  EXPECT_EQ(entry.get_attrib_mbstr("TypeMBChar2K"), text.substr(4));
}

TEST_F(EntryMemory, EachAllocationOfACopyFails_TheSourceStays) {
  Entry source(kId, 0);
  fill(source);
  EXPECT_GT(FailEveryAllocation([&] { Entry copy(source); }, [&] { expect_filled(source); }), 0U);
}

TEST_F(EntryMemory, EachAllocationOfAnAssignmentFails_TheSourceStaysAndTheTargetCanBeUsed) {
  Entry source(kId, 0);
  fill(source);
  Entry target(kPlainId, 0);
  EXPECT_GT(FailEveryAllocation([&] { target = source; },
                                [&] {
                                  expect_filled(source);
                                  target.clear_attribs(true);
                                  target.set_entry_id(kPlainId);
                                  target.add_attrib_4u("GlobalTypeUInt4", 9);
                                  EXPECT_EQ(target.get_attrib_4u("GlobalTypeUInt4"), 9U);
                                }),
            0U);
  expect_filled(target);
}

TEST_F(EntryMemory, EachAllocationOfSetEntryIdFails_TheAttributesStay) {
  Entry entry(kPlainId, 0);
  entry.add_attrib_4u("GlobalTypeUInt4", 9);
  LdfFile file{.tag = "2.5", .globals = global_attributes(), .entries = numbered_entries(1, 300)};
  load(file);
  unsigned id = 1;
  EXPECT_GT(FailEveryAllocation([&] { entry.set_entry_id(id); },
                                [&] {
                                  ++id;
                                  EXPECT_EQ(entry.get_attrib_4u("GlobalTypeUInt4"), 9U);
                                }),
            0U);
  EXPECT_EQ(entry.get_entry_id(), id);
}

TEST_F(EntryMemory, EachAllocationOfSetTimestampFails_TheAttributesStay) {
  Entry entry(kId, 0);
  fill(entry);
  fill_up(entry);
  EXPECT_GT(FailEveryAllocation([&] { entry.set_timestamp(qz_Time::from_unix_seconds(9), true); },
                                [&] { expect_filled(entry); }),
            0U);
  EXPECT_TRUE(entry.has_value("TIMEZONE_DIFFERENCE"));
  EXPECT_TRUE(entry.has_value("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryMemory, EachAllocationOfClearFails_IsReportedAndTheEntryCanBeUsed) {
  Entry entry(kId, 0);
  fill(entry);
  FailEveryAllocation([&] { entry.clear_attribs(true); },
                      [&] {
                        EXPECT_FALSE(entry.has_value("TypeUInt4"));
                        entry.clear_attribs(true);
                      });
  EXPECT_FALSE(entry.has_value("TypeUInt4"));
  entry.add_attrib_4u("TypeUInt4", 8);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 8U);
}

TEST_F(EntryMemory, EachAllocationOfARunTimeDefinitionFails_ItIsNotDefined) {
  for (const unsigned id : {0U, kPlainId}) {
    const std::string name = "Added" + std::to_string(id);
    EXPECT_GT(
        FailEveryAllocation([&] { Entry::add_product_specific_attribute_definition(id, name.c_str(), TypeUInt4); },
                            [&] {
                              qz_AttributeType type = TypeUnknown;
                              EXPECT_EQ(Entry(kPlainId, 0).check_attribute(name.c_str(), type), -1);
                            }),
        0U);
  }
}

TEST_F(EntryMemory, NoMemoryForAnAttributeValue_ReadsStillWork) {
  Entry entry(kId, 0);
  fill(entry);
  EXPECT_EQ(thrown_by([&] {
              const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
              entry.add_attrib_str("TypeChar2K", kLong, true);
            }),
            kNoMemory);
  EXPECT_FALSE(entry.has_value("TypeChar2K"));
  expect_filled(entry);
}

}  // namespace
