#include "tools/diff/attribute_diff.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using namespace qzlog_compiler;

using Attributes = std::vector<AttributeDefinition>;

AttributeDefinition attribute(std::string name, qz_AttributeType type) { return {std::move(name), type, "", {}}; }

std::string described(const AttributeMatch& match) {
  std::string text;
  for (const AttributePair& pair : match.pairs) {
    text += (text.empty() ? "" : " ") + (pair.before != nullptr ? pair.before->name : "-") + ":" +
            (pair.after != nullptr ? pair.after->name : "-");
  }
  return text + (match.reordered ? " reordered" : "");
}

const Attributes kOld = {attribute("A", TypeUInt1), attribute("B", TypeUInt2), attribute("C", TypeChar32)};

TEST(MatchAttributes, SameList_MatchesByName) { EXPECT_EQ(described(match_attributes(kOld, kOld)), "A:A B:B C:C"); }

TEST(MatchAttributes, AnotherType_StillMatchesByName) {
  EXPECT_EQ(described(match_attributes(kOld, {kOld[0], attribute("B", TypeChar32), kOld[2]})), "A:A B:B C:C");
}

TEST(MatchAttributes, NewNameAtThePlace_IsRenamedWhenTheTypeStays) {
  EXPECT_EQ(described(match_attributes(kOld, {kOld[0], attribute("X", TypeUInt2), kOld[2]})), "A:A B:X C:C");
  EXPECT_EQ(described(match_attributes(kOld, {kOld[0], attribute("X", TypeUInt4), kOld[2]})), "A:A B:- C:C -:X");
}

TEST(MatchAttributes, PlaceOfAKnownName_IsNoNewName) {
  EXPECT_EQ(described(match_attributes(kOld, {kOld[1], attribute("X", TypeUInt2)})), "A:- B:B C:- -:X");
}

TEST(MatchAttributes, InsertedAndRemoved_LeaveTheOrderOfTheOthers) {
  EXPECT_EQ(described(match_attributes(kOld, {attribute("X", TypeDate), kOld[0], kOld[1], kOld[2]})),
            "A:A B:B C:C -:X");
  EXPECT_EQ(described(match_attributes(kOld, {kOld[0], kOld[2]})), "A:A B:- C:C");
}

TEST(MatchAttributes, Exchanged_AreReordered) {
  EXPECT_EQ(described(match_attributes(kOld, {kOld[0], kOld[2], kOld[1]})), "A:A B:B C:C reordered");
}

TEST(MatchAttributes, NamesTwiceInAList_MatchInTheirOrder) {
  const Attributes twice = {kOld[0], kOld[1], kOld[0]};
  EXPECT_EQ(described(match_attributes(twice, twice)), "A:A B:B A:A");
}

TEST(MatchAttributes, EmptyLists_HaveNoPairs) {
  EXPECT_EQ(described(match_attributes({}, {})), "");
  EXPECT_EQ(described(match_attributes({}, kOld)), "-:A -:B -:C");
  EXPECT_EQ(described(match_attributes(kOld, {})), "A:- B:- C:-");
}

struct TypeChange {
  qz_AttributeType before;
  qz_AttributeType after;
  std::optional<DiffRule> rule;
};

const TypeChange kTypeChanges[] = {
    {TypeUInt4, TypeUInt4, std::nullopt},
    {TypeUInt1, TypeUInt2, DiffRule::kNumberWidened},
    {TypeUInt1, TypeSInt2, DiffRule::kNumberWidened},
    {TypeUInt2, TypeSInt4, DiffRule::kNumberWidened},
    {TypeSInt1, TypeSInt4, DiffRule::kNumberWidened},
    {TypeUInt1, TypeSInt1, DiffRule::kNumberNarrowed},
    {TypeSInt1, TypeUInt4, DiffRule::kNumberNarrowed},
    {TypeUInt4, TypeSInt4, DiffRule::kNumberNarrowed},
    {TypeSInt4, TypeSInt2, DiffRule::kNumberNarrowed},
    {TypeChar32, TypeChar2K, DiffRule::kTextLimitRaised},
    {TypeMBChar64, TypeMBChar128, DiffRule::kTextLimitRaised},
    {TypeChar1K, TypeChar256, DiffRule::kTextLimitLowered},
    {TypeMBChar2K, TypeMBChar32, DiffRule::kTextLimitLowered},
    {TypeDate, TypeTime, DiffRule::kTimeKindChanged},
    {TypeTimestamp, TypeDate, DiffRule::kTimeKindChanged},
    {TypeChar32, TypeMBChar32, DiffRule::kTypeChanged},
    {TypeMBChar2K, TypeChar2K, DiffRule::kTypeChanged},
    {TypeChar2K, TypeGUID, DiffRule::kTypeChanged},
    {TypeBool, TypeUInt1, DiffRule::kTypeChanged},
    {TypeUInt4, TypeFloat, DiffRule::kTypeChanged},
    {TypeFloat, TypeDate, DiffRule::kTypeChanged},
    {TypeUnknown, TypeUInt1, DiffRule::kTypeChanged},
};

TEST(TypeChangeTest, EachPair_HasItsRule) {
  for (const TypeChange& change : kTypeChanges) {
    EXPECT_EQ(type_change(change.before, change.after), change.rule) << change.before << " -> " << change.after;
  }
}

}  // namespace
