#include <gtest/gtest.h>

#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class AttributeDefinition : public EntryTest {
 protected:
  static bool add(unsigned entry_id, const char* name, int type) {
    return Entry::add_product_specific_attribute_definition(entry_id, name, static_cast<qz_AttributeType>(type));
  }
};

constexpr const char* kIllegal = "QZX_logging_illegal_argument \"invalid argument\"";

TEST_F(AttributeDefinition, Global_IsUsableByEveryId) {
  const Entry before(kId, 0);
  EXPECT_TRUE(add(0, "Added", TypeSInt4));
  for (const unsigned id : {kId, kPlainId}) {
    Entry entry(id, 0);
    entry.add_attrib_4("Added", -7);
    EXPECT_EQ(entry.get_attrib_4("Added"), -7);
  }
  EXPECT_EQ(before.get_attrib_4("Added"), 0);
}

TEST_F(AttributeDefinition, GlobalAddedTwice_FalseAndTheFirstTypeStays) {
  EXPECT_TRUE(add(0, "Added", TypeSInt4));
  EXPECT_FALSE(add(0, "Added", TypeChar32));
  EXPECT_FALSE(add(0, "COMPUTER_NAME", TypeBool));
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(Entry(kId, 0).check_attribute("Added", type), 1);
  EXPECT_EQ(type, TypeSInt4);
}

TEST_F(AttributeDefinition, GlobalWithTheNameOfAnOwnOne_IsAdded) {
  EXPECT_TRUE(add(0, "TypeUInt4", TypeChar32));
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(Entry(kPlainId, 0).check_attribute("TypeUInt4", type), 1);
  EXPECT_EQ(type, TypeChar32);
  EXPECT_EQ(Entry(kId, 0).check_attribute("TypeUInt4", type), 1);
  EXPECT_EQ(type, TypeUInt4);
}

TEST_F(AttributeDefinition, OfAnId_IsUsableByThatIdOnly) {
  Entry before(kPlainId, 0);
  EXPECT_TRUE(add(kPlainId, "Added", TypeSInt4));
  before.add_attrib_4("Added", -7);
  EXPECT_EQ(before.get_attrib_4("Added"), -7);
  EXPECT_EQ(Entry(kPlainId, 0).get_attrib_4("Added"), 0);
  qz_AttributeType type = TypeBool;
  EXPECT_EQ(Entry(kId, 0).check_attribute("Added", type), -1);
}

TEST_F(AttributeDefinition, OfAnIdAddedTwice_False) {
  EXPECT_TRUE(add(kPlainId, "Added", TypeSInt4));
  EXPECT_FALSE(add(kPlainId, "Added", TypeSInt4));
  EXPECT_FALSE(add(kId, "TypeUInt4", TypeUInt4));
}

TEST_F(AttributeDefinition, OfAnIdWithTheNameOfAGlobalOne_False) {
  EXPECT_FALSE(add(kPlainId, "COMPUTER_NAME", TypeUInt4));
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(Entry(kPlainId, 0).check_attribute("COMPUTER_NAME", type), 1);
  EXPECT_EQ(type, TypeMBChar64);
}

TEST_F(AttributeDefinition, EveryTypeFrom0To25_IsAccepted) {
  for (int type = 0; type <= 25; ++type) {
    EXPECT_TRUE(add(0, ("AddedGlobal" + std::to_string(type)).c_str(), type)) << type;
    EXPECT_TRUE(add(kPlainId, ("Added" + std::to_string(type)).c_str(), type)) << type;
    qz_AttributeType found = TypeBool;
    EXPECT_EQ(Entry(kPlainId, 0).check_attribute(("Added" + std::to_string(type)).c_str(), found), 1);
    EXPECT_EQ(static_cast<int>(found), type);
  }
}

TEST_F(AttributeDefinition, TypeOutside0To25_ThrowsAndAddsNothing) {
  for (const int type : {-1, 26, 256, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(thrown_by([&] { add(0, "Added", type); }), kIllegal) << type;
    EXPECT_EQ(thrown_by([&] { add(kPlainId, "Added", type); }), kIllegal) << type;
  }
  qz_AttributeType found = TypeBool;
  EXPECT_EQ(Entry(kPlainId, 0).check_attribute("Added", found), -1);
}

TEST_F(AttributeDefinition, NullName_Throws) {
  EXPECT_EQ(thrown_by([] { add(0, nullptr, TypeBool); }), kIllegal);
  EXPECT_EQ(thrown_by([] { add(kPlainId, nullptr, TypeBool); }), kIllegal);
  EXPECT_EQ(thrown_by([] { add(kUnknownId, nullptr, TypeBool); }), kIllegal);
}

TEST_F(AttributeDefinition, BadArgument_WritesRecord) {
  const Texts expected = {
      "logentry_i:# _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, invalid argument\n"};
  EXPECT_EQ(records_at(1, [] { add(0, nullptr, TypeBool); }), expected);
  EXPECT_EQ(records_at(1, [] { add(kPlainId, "Added", 26); }), expected);
}

TEST_F(AttributeDefinition, UnknownId_ThrowsWithRecord) {
  EXPECT_EQ(thrown_by([] { add(kUnknownId, "Added", TypeBool); }),
            "QZX_logging_entry_type_not_found \"Entry id argument is invalid\"");
  EXPECT_EQ(
      records_at(1, [] { add(kUnknownId, "Added", TypeBool); }),
      Texts({"logentry_i:# _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, entry id is invalid\n"}));
}

TEST_F(AttributeDefinition, OfAnId_WritesLevel2Record) {
  EXPECT_EQ(records_at(2, [] { add(4294967295U, "Added", TypeSInt4); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, id=-1, name=Added, "
                   "type=7 \n"}));
}

TEST_F(AttributeDefinition, OfAnUnknownId_WritesLevel2RecordBeforeTheFailure) {
  const DebugLogFile log(2);
  EXPECT_NE(thrown_by([] { add(kUnknownId, "Added", TypeGUID); }), "nothing");
  EXPECT_EQ(
      entry_records(log),
      Texts({"logentry_i:# _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, id=77, name=Added, "
             "type=24 \n",
             "logentry_i:# _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, entry id is invalid\n"}));
}

TEST_F(AttributeDefinition, Global_WritesNoRecord) {
  EXPECT_EQ(records_at(3, [] { add(0, "Added", TypeSInt4); }), Texts());
}

TEST_F(AttributeDefinition, DefinitionsCleared_ForgetsTheAddedOnes) {
  EXPECT_TRUE(add(0, "AddedGlobal", TypeSInt4));
  EXPECT_TRUE(add(kPlainId, "Added", TypeSInt4));
  load({.tag = "2.5", .entries = standard_entries()});
  qz_AttributeType type = TypeBool;
  EXPECT_EQ(Entry(kPlainId, 0).check_attribute("AddedGlobal", type), -1);
  EXPECT_EQ(Entry(kPlainId, 0).check_attribute("Added", type), -1);
}

}  // namespace
