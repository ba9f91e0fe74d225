#include "tools/definitions/entry_view.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/check_fixture.h"

namespace {

using qzlog_compiler::DefinitionModel;
using qzlog_tool::DefinitionPair;

constexpr std::string_view kAuxiliary = R"(
version: "1.1"
globals: [{name: SITE, type: MBChar64}]
entries:
  - id: 1
    name: FULL
    mask: 9
    word: 7
    message: "Other"
    attributes: [{name: Pool, type: Char32}, {name: Why, type: UInt4}]
    selector: {attribute: Why, messages: [{index: 2, value: 20, id: pool, text: "Pool"}]}
  - {id: 2, name: GONE, message_id: "", message: ""}
  - {id: 3, name: NEW, message: "New"}
  - {id: 4, name: KEYLESS, message_id: "", message: "Without a key"}
  - {id: 5, name: TEXTLESS, raw: "", mask: 3, word: 4, attributes: [{name: Pool, type: Char32}]}
)";

class EntryView : public ::testing::Test {
 protected:
  static DefinitionModel model_of(std::string_view source) {
    return qzlog_compiler::compile_source(source, "", {}).model;
  }

  const DefinitionModel standard_ = model_of(check_fixture::kSource);
  const DefinitionModel auxiliary_ = model_of(kAuxiliary);
  const DefinitionPair pair_{standard_, &auxiliary_};
};

TEST_F(EntryView, EntryOfBoth_IsMergedAsTheLibraryMerges) {
  const auto entry = pair_.find_entry(1);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->mask, 1U);  // the standard one's
  EXPECT_EQ(entry->word, 7U);
  EXPECT_EQ(entry->message.written, "Other");
  ASSERT_EQ(entry->attributes.size(), 3U);
  EXPECT_EQ(entry->attributes[0].name + entry->attributes[1].name + entry->attributes[2].name, "NamePoolWhy");
  EXPECT_EQ(entry->attributes[2].type, TypeUInt4);
  EXPECT_EQ(entry->selector.messages.size(), 2U);
}

TEST_F(EntryView, MessageLeftEmpty_IsTheStandardOnes) {
  EXPECT_EQ(pair_.find_entry(2)->message.written, "Disk {Name} is gone");
  EXPECT_EQ(pair_.find_entry(2)->message_id, "GONE");
}

/// As the library has none.
TEST_F(EntryView, EntryOfTheAuxiliaryFileAloneWithHalfAMessage_HasNone) {
  for (const std::uint32_t id : {4U, 5U}) {
    EXPECT_EQ(pair_.find_entry(id)->message.stored, "") << id;
    EXPECT_EQ(pair_.find_entry(id)->message_id, "") << id;
  }
  EXPECT_EQ(pair_.find_entry(3)->message.written, "New");
  const auto rest = *pair_.find_entry(5);
  EXPECT_EQ(rest.name, "TEXTLESS");
  EXPECT_EQ(rest.mask, 3U);
  EXPECT_EQ(rest.word, 4U);
  EXPECT_EQ(rest.attributes.size(), 1U);
}

TEST_F(EntryView, StandardFileAlone_KeepsHalfAMessage) {
  EXPECT_EQ(DefinitionPair(auxiliary_, nullptr).find_entry(4)->message.written, "Without a key");
}

TEST_F(EntryView, Lookups_KnowBothFiles) {
  EXPECT_EQ(pair_.entry_ids(), (std::vector<std::uint32_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(pair_.find_by_name("NEW")->id, 3U);
  EXPECT_EQ(pair_.find_by_name("OLD"), nullptr);
  EXPECT_FALSE(pair_.find_entry(6));
  EXPECT_EQ(pair_.find_global("SITE")->type, TypeMBChar64);
  EXPECT_EQ(pair_.version_of(3), "1.1");
  EXPECT_EQ(DefinitionPair(standard_, nullptr).version_of(1), "1.0");
}

TEST_F(EntryView, AttributesOfAnEntry_OwnOnesFirst) {
  const auto entry = *pair_.find_entry(1);
  const auto lookup = attributes_of(entry, pair_);
  EXPECT_EQ(lookup("Why"), TypeUInt4);
  EXPECT_EQ(lookup("SITE"), TypeMBChar64);
  EXPECT_EQ(lookup("Nobody"), std::nullopt);
}

}  // namespace
