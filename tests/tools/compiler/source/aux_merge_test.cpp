#include "tools/compiler/source/aux_merge.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

constexpr SourcePosition kHere{9, 9};

DefinitionModel standard_model() {
  DefinitionModel model;
  model.globals = {{"SITE", TypeMBChar32, "", {}}};
  EntryDefinition entry;
  entry.id = 1;
  entry.name = "ONE";
  entry.mask = 5;
  entry.message_id = "one";
  entry.attributes = {{"Reason", TypeUInt2, "", {}}, {"Free", TypeUInt4, "", {}}};
  entry.selector.attribute = "Reason";
  entry.selector.messages.resize(1);
  entry.selector.messages[0].index = 1;
  entry.selector.messages[0].value = 10;
  model.entries = {entry};
  return model;
}

/// An auxiliary entry for the same ID that adds nothing.
EntryDefinition extension() {
  EntryDefinition entry;
  entry.id = 1;
  entry.name = "ONE";
  entry.position = {1, 1};
  entry.name_position = {1, 2};
  entry.selector.position = {1, 3};
  return entry;
}

SelectorMessage selector_message(std::uint32_t index, std::uint32_t value) {
  SelectorMessage message;
  message.index = index;
  message.value = value;
  message.index_position = {7, 1};
  message.value_position = {7, 2};
  return message;
}

std::string check(const DefinitionModel& aux, const DefinitionModel& standard = standard_model()) {
  Findings diagnostics("f");
  check_aux_merge(aux, ModelIndex(standard), "std", diagnostics);
  return printed(diagnostics.take_sorted());
}

std::string check(const EntryDefinition& entry) {
  DefinitionModel aux;
  aux.entries = {entry};
  return check(aux);
}

TEST(CheckAuxMerge, NewAttributesAndSelectorMessages_AreFine) {
  EntryDefinition entry = extension();
  entry.attributes = {{"More", TypeBool, "", kHere}};
  entry.selector.attribute = "Reason";
  entry.selector.messages = {selector_message(2, 11)};
  EXPECT_EQ(check(entry), "");
}

TEST(CheckAuxMerge, AnotherSelectorAttribute_IsAConflict) {
  EntryDefinition entry = extension();
  entry.attributes = {{"More", TypeUInt2, "", kHere}};
  entry.selector.attribute = "More";
  EXPECT_EQ(check(entry),
            "f:1:3: error: the entry has the selector attribute 'Reason' in the standard definitions; it cannot have "
            "'More' as well [aux-selector-conflict]\n");
}

TEST(CheckAuxMerge, SelectorForAnEntryWithoutOne_IsFine) {
  DefinitionModel standard = standard_model();
  standard.entries[0].selector.attribute.clear();
  DefinitionModel aux;
  aux.entries = {extension()};
  aux.entries[0].attributes = {{"Free", TypeUInt4, "", kHere}};
  aux.entries[0].selector.attribute = "Free";
  EXPECT_EQ(check(aux, standard), "");
}

TEST(CheckAuxMerge, RepeatedAttribute_ExistsAlready) {
  EntryDefinition entry = extension();
  entry.attributes = {{"Free", TypeUInt4, "", kHere}};
  EXPECT_EQ(check(entry),
            "f:9:9: error: the entry has the attribute 'Free' in the standard definitions already "
            "[aux-attribute-exists]\n");
}

TEST(CheckAuxMerge, RepeatedSelectorAttribute_IsReplaced) {
  EntryDefinition entry = extension();
  entry.selector.attribute = "Reason";
  entry.attributes = {{"Reason", TypeUInt2, "", kHere}};
  EXPECT_EQ(check(entry), "");
  entry.attributes[0].type = TypeUInt4;
  EXPECT_EQ(check(entry),
            "f:9:9: warning: the selector attribute 'Reason' becomes UInt4; the standard definitions have it as UInt2 "
            "[aux-type-changed]\n");
}

TEST(CheckAuxMerge, SelectorMessageOfOneIndexOrValue_IsAConflict) {
  EntryDefinition entry = extension();
  entry.selector.attribute = "Reason";
  entry.selector.messages = {selector_message(1, 11), selector_message(2, 10)};
  EXPECT_EQ(check(entry),
            "f:7:1: error: the index 1 belongs to a selector message of the entry in the standard definitions "
            "[aux-selector-message-conflict]\n"
            "f:7:2: error: the value 10 belongs to a selector message of the entry in the standard definitions "
            "[aux-selector-message-conflict]\n");
}

TEST(CheckAuxMerge, AnotherMask_IsIgnoredUnlessTheStandardOneIsZero) {
  EntryDefinition entry = extension();
  entry.mask = 4;
  entry.mask_position = kHere;
  EXPECT_EQ(check(entry),
            "f:9:9: warning: the entry keeps the mask 0x00000005 of the standard definitions [aux-mask-ignored]\n");
  entry.mask = 5;
  EXPECT_EQ(check(entry), "");
  entry.mask = 4;
  DefinitionModel standard = standard_model();
  standard.entries[0].mask = 0;
  DefinitionModel aux;
  aux.entries = {entry};
  EXPECT_EQ(check(aux, standard), "");
}

TEST(CheckAuxMerge, MessageWithoutTextOrId_IsIgnored) {
  const std::string ignored =
      "f:9:9: warning: the entry keeps the message of the standard definitions [aux-message-ignored]\n";
  EntryDefinition entry = extension();
  entry.message.position = kHere;
  entry.message_id = "ONE";
  EXPECT_EQ(check(entry), ignored);
  entry.message.written = entry.message.stored = "text";
  EXPECT_EQ(check(entry), "");
  entry.message_id.clear();
  EXPECT_EQ(check(entry), ignored);
  entry.message = {};
  entry.message_id = "one";
  entry.message_id_position = kHere;
  EXPECT_EQ(check(entry), ignored);
}

TEST(CheckAuxMerge, NewEntryWithHalfAMessage_HasNone) {
  const std::string ignored = "f:9:9: warning: the entry has no message [aux-message-ignored]\n";
  EntryDefinition entry = extension();
  entry.id = 2;
  entry.name = "TWO";
  entry.message = {"text", false, "text", kHere};
  entry.message_id = "two";
  EXPECT_EQ(check(entry), "");
  entry.message_id.clear();
  EXPECT_EQ(check(entry), ignored);
  entry.message.written.clear();
  entry.message.stored.clear();
  EXPECT_EQ(check(entry), "");  // nothing is lost
  entry.message_id = "two";
  EXPECT_EQ(check(entry), ignored);
}

TEST(CheckAuxMerge, NamesAndIdsThatDoNotGoTogether_AreReported) {
  DefinitionModel aux;
  aux.entries = {extension(), extension()};
  aux.entries[0].name = "OTHER";
  aux.entries[1].id = 2;
  EXPECT_EQ(check(aux),
            "f:1:2: warning: the entry 1 is named 'ONE' in the standard definitions [aux-name-mismatch]\n"
            "f:1:2: warning: 'ONE' is the name of the entry 1 in the standard definitions [aux-name-mismatch]\n");
}

TEST(CheckAuxMerge, CountsTogether_StayWithin255) {
  DefinitionModel aux;
  aux.entries = {extension()};
  aux.entries[0].selector.attribute = "Reason";
  for (std::uint32_t i = 0; i < 254; ++i) {
    aux.entries[0].attributes.push_back({"A" + std::to_string(i), TypeBool, "", kHere});
    aux.entries[0].selector.messages.push_back(selector_message(100 + i, 100 + i));
    aux.globals.push_back({"G" + std::to_string(i), TypeBool, "", kHere});
  }
  EXPECT_EQ(check(aux),
            "f:1:1: error: together with the standard definitions the entry has 256 attributes; 255 are allowed "
            "[too-many-attributes]\n");
  aux.entries[0].selector.messages.push_back(selector_message(99, 99));
  aux.globals.push_back({"G", TypeBool, "", kHere});
  EXPECT_EQ(check(aux),
            "f:1:1: error: together with the standard definitions the entry has 256 attributes; 255 are allowed "
            "[too-many-attributes]\n"
            "f:1:1: error: together with the standard definitions the entry has 256 selector messages; 255 are allowed "
            "[too-many-selector-messages]\n"
            "f:9:9: error: together with the standard definitions there are more than 255 global attributes "
            "[too-many-globals]\n");
}

TEST(CheckAuxMerge, GlobalOfAnotherType_IsReported) {
  DefinitionModel aux;
  aux.globals = {{"SITE", TypeMBChar64, "", kHere}};
  EXPECT_EQ(
      check(aux),
      "f:9:9: warning: the global attribute 'SITE' becomes MBChar64; the standard definitions have it as MBChar32 "
      "[aux-type-changed]\n");
  aux.globals[0].type = TypeMBChar32;
  EXPECT_EQ(check(aux), "");
}

}  // namespace
}  // namespace qzlog_compiler
