#include "tools/compiler/model/model_merge.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

constexpr SourcePosition kHere{3, 4};

EntryDefinition entry(std::uint32_t id, const std::string& name) {
  EntryDefinition result;
  result.id = id;
  result.name = name;
  result.mask = 5;
  result.word = 7;
  result.message_id = "id." + name;
  result.message = {"text of " + name, false, "stored " + name, kHere};
  result.position = kHere;
  return result;
}

DefinitionModel model(std::vector<EntryDefinition> entries) { return {"1.0", {}, std::move(entries)}; }

EntryDefinition merged(const EntryDefinition& standard, const EntryDefinition& aux) {
  return merge_models(model({standard}), model({aux})).entries.at(0);
}

std::string names(const std::vector<AttributeDefinition>& attributes) {
  std::string result;
  for (const AttributeDefinition& attribute : attributes) result += attribute.name + ' ';
  return result;
}

SelectorMessage selector_message(std::uint32_t index) {
  SelectorMessage message;
  message.index = message.value = index;
  message.index_position = message.value_position = kHere;
  return message;
}

TEST(MergeModels, EntriesOfEither_StandAfterEachOther) {
  const DefinitionModel all = merge_models(model({entry(2, "B"), entry(1, "A")}), model({entry(3, "C")}));
  ASSERT_EQ(all.entries.size(), 3U);
  EXPECT_EQ(all.entries[0].name, "B");
  EXPECT_EQ(all.entries[2].name, "C");
  EXPECT_EQ(all.entries[2].mask, 5U);
  EXPECT_EQ(all.entries[2].message.stored, "stored C");
}

TEST(MergeModels, Version_IsTheStandardOne) {
  EXPECT_EQ(merge_models({"1.0", {}, {}}, {"2.0", {}, {}}).version, "1.0");
}

TEST(MergeModels, GlobalOfBoth_MovesToTheEndWithItsNewType) {
  DefinitionModel standard;
  standard.globals = {{"A", TypeBool, "", kHere}, {"B", TypeBool, "", kHere}};
  DefinitionModel aux;
  aux.globals = {{"C", TypeUInt1, "", kHere}, {"A", TypeUInt2, "r", kHere}};
  const DefinitionModel all = merge_models(standard, aux);
  EXPECT_EQ(names(all.globals), "B C A ");
  EXPECT_EQ(all.globals[2].type, TypeUInt2);
  EXPECT_EQ(all.globals[2].redirect, "r");
}

TEST(MergeModels, ExtendedEntry_GetsAttributesMessagesAndWord) {
  EntryDefinition standard = entry(1, "A");
  standard.attributes = {{"X", TypeUInt1, "", kHere}};
  standard.selector = {"X", {selector_message(1)}, kHere};
  EntryDefinition aux = entry(1, "A");
  aux.word = 9;
  aux.attributes = {{"Y", TypeBool, "", kHere}};
  aux.selector.messages = {selector_message(2)};
  const EntryDefinition all = merged(standard, aux);
  EXPECT_EQ(names(all.attributes), "X Y ");
  EXPECT_EQ(all.selector.attribute, "X");
  ASSERT_EQ(all.selector.messages.size(), 2U);
  EXPECT_EQ(all.selector.messages[1].index, 2U);
  EXPECT_EQ(all.word, 9U);
}

TEST(MergeModels, RepeatedSelectorAttribute_MovesToTheEnd) {
  EntryDefinition standard = entry(1, "A");
  standard.attributes = {{"X", TypeUInt1, "", kHere}, {"Y", TypeBool, "", kHere}};
  EntryDefinition aux = entry(1, "A");
  aux.attributes = {{"X", TypeUInt2, "", kHere}};
  aux.selector.attribute = "X";
  const EntryDefinition all = merged(standard, aux);
  EXPECT_EQ(names(all.attributes), "Y X ");
  EXPECT_EQ(all.attributes[1].type, TypeUInt2);
  EXPECT_EQ(all.selector.attribute, "X");
}

TEST(MergeModels, SelectorNameWithoutItsAttribute_MakesNoSelector) {
  EntryDefinition standard = entry(1, "A");
  standard.selector.attribute = "Y";  // nothing of that name
  EntryDefinition aux = entry(1, "A");
  aux.attributes = {{"Y", TypeUInt1, "", kHere}};
  EXPECT_EQ(merged(standard, aux).selector.attribute, "");
  standard.attributes = {{"X", TypeUInt1, "", kHere}};
  aux.attributes.clear();
  aux.selector.attribute = "X";  // listed by the other record only
  EXPECT_EQ(merged(standard, aux).selector.attribute, "");
}

TEST(MergeModels, Mask_IsTheStandardOneUnlessThatIsZero) {
  EntryDefinition aux = entry(1, "A");
  aux.mask = 2;
  EntryDefinition standard = entry(1, "A");
  EXPECT_EQ(merged(standard, aux).mask, 5U);
  standard.mask = 0;
  EXPECT_EQ(merged(standard, aux).mask, 2U);
}

TEST(MergeModels, Message_IsReplacedByTextAndKeyTogetherOnly) {
  const EntryDefinition standard = entry(1, "A");
  EntryDefinition aux = entry(1, "B");
  EXPECT_EQ(merged(standard, aux).message.stored, "stored B");
  EXPECT_EQ(merged(standard, aux).message_id, "id.B");
  aux.message_id.clear();
  EXPECT_EQ(merged(standard, aux).message.stored, "stored A");
  EXPECT_EQ(merged(standard, aux).message_id, "id.A");
  aux = entry(1, "B");
  aux.message.stored.clear();
  EXPECT_EQ(merged(standard, aux).message_id, "id.A");
}

TEST(MergeModels, NewEntryWithoutTextOrKey_HasNeither) {
  EntryDefinition aux = entry(1, "A");
  aux.message.stored.clear();
  const EntryDefinition all = merge_models({}, model({aux})).entries.at(0);
  EXPECT_EQ(all.message_id, "");
  EXPECT_EQ(all.message.written, "");
}

TEST(MergeModels, NewEntryWithoutKey_HasNoTextEither) {
  EntryDefinition aux = entry(1, "A");
  aux.message_id.clear();
  const EntryDefinition all = merge_models({}, model({aux})).entries.at(0);
  EXPECT_EQ(all.message.written, "");
  EXPECT_EQ(all.message.stored, "");
}

TEST(MergeEntry, StandardEntryOrNone_IsWhatTheWholeModelGets) {
  const EntryDefinition standard = entry(1, "A");
  EntryDefinition aux = entry(1, "B");
  aux.attributes = {{"Y", TypeBool, "", kHere}};
  const EntryDefinition extended = merge_entry(&standard, aux);
  EXPECT_EQ(extended.name, "A");
  EXPECT_EQ(extended.message.stored, "stored B");
  EXPECT_EQ(names(extended.attributes), "Y ");
  const EntryDefinition alone = merge_entry(nullptr, aux);
  EXPECT_EQ(alone.id, 1U);
  EXPECT_EQ(alone.name, "B");
  EXPECT_EQ(alone.message.stored, "stored B");
}

TEST(GivesMessage, KeyAndText_BothNeeded) {
  EntryDefinition aux = entry(1, "A");
  EXPECT_TRUE(gives_message(aux));
  aux.message_id.clear();
  EXPECT_FALSE(gives_message(aux));
  aux = entry(1, "A");
  aux.message.stored.clear();
  EXPECT_FALSE(gives_message(aux));
}

TEST(MergeModels, NameAndSummary_AreTheStandardOnesWhereThereAreAny) {
  EntryDefinition standard = entry(1, "A");
  EntryDefinition aux = entry(1, "B");
  aux.summary = "what it is";
  EXPECT_EQ(merged(standard, aux).name, "A");
  EXPECT_EQ(merged(standard, aux).summary, "what it is");
  standard.summary = "mine";
  standard.name.clear();
  EXPECT_EQ(merged(standard, aux).name, "B");
  EXPECT_EQ(merged(standard, aux).summary, "mine");
}

TEST(MergeModels, PlacesInTheAuxiliarySource_AreForgotten) {
  EntryDefinition aux = entry(1, "A");
  aux.attributes = {{"Y", TypeBool, "", kHere}};
  aux.selector.messages = {selector_message(2)};
  aux.selector.messages[0].message.position = kHere;
  const EntryDefinition extended = merged(entry(1, "A"), aux);
  EXPECT_TRUE(extended.position.known());
  EXPECT_FALSE(extended.message.position.known());
  EXPECT_FALSE(extended.attributes[0].position.known());
  EXPECT_FALSE(extended.selector.messages[0].index_position.known());
  EXPECT_FALSE(extended.selector.messages[0].message.position.known());
  EXPECT_FALSE(merge_models({}, model({aux})).entries[0].position.known());
}

}  // namespace
}  // namespace qzlog_compiler
