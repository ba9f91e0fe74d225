#include "tools/choice/known_definitions.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"

namespace {

using namespace qzlog_tool;

class KnownDefinitionsTest : public qz_test::ChoiceTest {};

TEST_F(KnownDefinitionsTest, Attribute_HasEachTypeWithItsFirstPlace) {
  const KnownAttribute* const known = known_.find_attribute("Free");
  ASSERT_NE(known, nullptr);
  EXPECT_EQ(known->places, (std::map<qz_AttributeType, std::string>{{TypeUInt2, "entry 1"}, {TypeUInt4, "entry 2"}}));
  EXPECT_TRUE(known->types.has(TypeUInt2));
  EXPECT_TRUE(known->types.is_within(kIntegerTypes));
  EXPECT_FALSE(known->types.meets(kTextTypes));
  EXPECT_EQ(known_.find_attribute("Pool")->places.at(TypeChar32), "the globals");
  EXPECT_EQ(known_.find_attribute("free"), nullptr);
}

TEST_F(KnownDefinitionsTest, SeveralFiles_EventsHaveTheNamesOfAll) {
  EXPECT_TRUE(known_.knows_all_names());
  qzlog_compiler::DefinitionModel other;
  other.entries.resize(2);
  other.entries[0].id = 1;
  other.entries[0].name = "FULL";
  other.entries[0].mask = 4;
  other.entries[1].id = 9;
  known_.add(other);
  EXPECT_EQ(known_.find_event(1)->names, (std::vector<std::string>{"DISK_FULL", "FULL"}));
  EXPECT_EQ(known_.find_event(1)->masks, (std::vector<std::uint32_t>{1, 4}));
  EXPECT_EQ(known_.find_event(8), nullptr);
  EXPECT_FALSE(known_.knows_all_names());
  EXPECT_EQ(known_.event_names(), (std::vector<std::string_view>{"DISK_FULL", "FULL", "DISK_OK", "LINK_DOWN"}));
}

}  // namespace
