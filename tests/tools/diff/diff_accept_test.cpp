#include "tools/diff/diff_accept.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/report/source_rules.h"

namespace {

using namespace qzlog_compiler;

std::vector<AcceptedBreak> load_without_mistakes(std::string_view text) {
  Findings diagnostics("meant.yaml");
  std::vector<AcceptedBreak> accepted = load_accepted_breaks(text, diagnostics);
  EXPECT_FALSE(diagnostics.has_errors());
  return accepted;
}

std::vector<Finding> mistakes(std::string_view text) {
  Findings diagnostics("meant.yaml");
  load_accepted_breaks(text, diagnostics);
  return diagnostics.take_sorted();
}

TEST(LoadAcceptedBreaks, EveryField_IsRead) {
  const auto accepted = load_without_mistakes(
      "\xEF\xBB\xBF- {rule: text-changed, entry: 0x10, selector_index: 3, reason: Because.}\n"
      "- {rule: type-changed, entry: FULL, attribute: Name, reason: '1'}\n");
  ASSERT_EQ(accepted.size(), 2U);
  EXPECT_EQ(accepted[0].rule, DiffRule::kTextChanged);
  EXPECT_EQ(accepted[0].entry_id, 16U);
  EXPECT_EQ(accepted[0].selector_index, 3U);
  EXPECT_EQ(accepted[0].reason, "Because.");
  EXPECT_EQ(accepted[1].entry_id, std::nullopt);
  EXPECT_EQ(accepted[1].entry_name, "FULL");
  EXPECT_EQ(accepted[1].attribute, "Name");
  EXPECT_EQ(accepted[1].position, (SourcePosition{2, 3}));
}

TEST(LoadAcceptedBreaks, EmptyList_AcceptsNothing) { EXPECT_TRUE(load_without_mistakes("[]").empty()); }

TEST(LoadAcceptedBreaks, ItemWithAMistake_IsLeftOut) {
  Findings diagnostics("meant.yaml");
  const auto accepted = load_accepted_breaks(
      "- {rule: nonsense, reason: a}\n"
      "- {rule: text-changed, reason: a}\n"
      "- {rule: text-changed}\n",
      diagnostics);
  ASSERT_EQ(accepted.size(), 1U);
  EXPECT_EQ(accepted[0].position.line, 2U);
}

TEST(LoadAcceptedBreaks, SafeRule_NeedsNoAcceptance) {
  const auto found = mistakes("- {rule: entry-added, entry: 1, reason: a}");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].rule, Rule::kRuleNotAcceptable);
}

TEST(LoadAcceptedBreaks, BrokenYaml_IsOneMistake) { EXPECT_EQ(mistakes("- {rule: [").size(), 1U); }

class AcceptedBreakTest : public ::testing::Test {
 protected:
  AcceptedBreakTest() {
    old_entry_.id = 7;
    old_entry_.name = "OLD";
    new_entry_.id = 8;
    new_entry_.name = "NEW";
    old_attribute_.name = "Before";
    new_attribute_.name = "After";
    old_message_.index = 1;
    new_message_.index = 2;
  }

  static bool accepts(const std::string& fields, const DiffPlace& place) {
    const auto accepted = load_without_mistakes("- {rule: mask-changed, reason: a" + fields + "}");
    return accepted.at(0).matches({DiffRule::kMaskChanged, place, {}, {}});
  }

  EntryDefinition old_entry_;
  EntryDefinition new_entry_;
  AttributeDefinition old_attribute_;
  AttributeDefinition new_attribute_;
  SelectorMessage old_message_;
  SelectorMessage new_message_;
};

TEST_F(AcceptedBreakTest, Entry_IsNamedByEitherIdOrName) {
  DiffPlace place;
  place.old_entry = &old_entry_;
  place.new_entry = &new_entry_;
  for (const char* entry : {"7", "8", "OLD", "NEW"}) EXPECT_TRUE(accepts(std::string(", entry: ") + entry, place));
  for (const char* entry : {"9", "OTHER"}) EXPECT_FALSE(accepts(std::string(", entry: ") + entry, place));
  EXPECT_FALSE(accepts("", place));
}

TEST_F(AcceptedBreakTest, WithoutAnEntry_MatchesOnlyOutsideEntries) {
  DiffPlace place;
  EXPECT_TRUE(accepts("", place));
  EXPECT_FALSE(accepts(", entry: 7", place));
  EXPECT_FALSE(accepts(", attribute: Before", place));
  place.old_attribute = &old_attribute_;
  EXPECT_TRUE(accepts("", place));
  EXPECT_TRUE(accepts(", attribute: Before", place));
}

TEST_F(AcceptedBreakTest, AttributeAndIndex_NarrowIt) {
  DiffPlace place;
  place.old_entry = &old_entry_;
  place.old_attribute = &old_attribute_;
  place.new_attribute = &new_attribute_;
  EXPECT_TRUE(accepts(", entry: 7", place));
  EXPECT_TRUE(accepts(", entry: 7, attribute: After", place));
  EXPECT_FALSE(accepts(", entry: 7, attribute: Else", place));
  EXPECT_FALSE(accepts(", entry: 7, selector_index: 1", place));
  place = {};
  place.old_entry = &old_entry_;
  place.old_message = &old_message_;
  place.new_message = &new_message_;
  EXPECT_TRUE(accepts(", entry: 7, selector_index: 1", place));
  EXPECT_TRUE(accepts(", entry: 7, selector_index: 2", place));
  EXPECT_FALSE(accepts(", entry: 7, selector_index: 3", place));
}

TEST_F(AcceptedBreakTest, AnotherRule_DoesNotMatch) {
  const auto accepted = load_without_mistakes("- {rule: text-changed, reason: a}");
  EXPECT_FALSE(accepted.at(0).matches({DiffRule::kMaskChanged, {}, {}, {}}));
}

}  // namespace
