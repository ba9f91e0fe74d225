#include "tools/catalog/catalog_messages.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/tools/catalog/source_messages.h"

namespace qzlog_catalog {
namespace {

const SourceText kStandard = {"std.yaml", R"(version: "2.5"
globals: [{name: SITE, type: MBChar32}]
entries:
  - id: 1
    name: FULL
    message: "{Name} at {SITE}"
    attributes: [{name: Name, type: Char32}, {name: Reason, type: UInt2}]
    selector:
      attribute: Reason
      messages: [{index: 1, value: 10, id: quota, text: "quota of {Name}"}]
  - {id: 2, name: SAME, message: "quota of {Name}", message_id: quota, attributes: [{name: Name, type: Char64}]}
)"};

const SourceText kAuxiliary = {"aux.yaml", R"(version: "2.5"
globals: [{name: RACK, type: UInt4}]
entries:
  - id: 1
    name: FULL
    attributes: [{name: Owner, type: MBChar32}]
    selector:
      attribute: Reason
      messages: [{index: 2, value: 11, id: grace, text: "{Owner}, {Name}, {SITE}, {RACK}"}]
)"};

TEST(CatalogMessages, StandardAndAuxiliary_InTheirOrder) {
  const CatalogMessages messages = messages_of({kStandard, kAuxiliary});
  ASSERT_EQ(messages.messages().size(), 3u);
  EXPECT_EQ(messages.messages()[0].id, "FULL");
  EXPECT_EQ(messages.messages()[1].id, "quota");
  EXPECT_EQ(messages.messages()[2].id, "grace");
  EXPECT_EQ(messages.version(), "2.5");
}

TEST(CatalogMessages, Find_KnowsEveryIdAndNoOther) {
  const CatalogMessages messages = messages_of({kStandard});
  ASSERT_NE(messages.find("quota"), nullptr);
  EXPECT_EQ(messages.find("quota")->text->written, "quota of {Name}");
  EXPECT_EQ(messages.find("SAME"), nullptr);
  EXPECT_EQ(messages.find(""), nullptr);
}

TEST(CatalogMessages, SharedMessage_KnowsAllItsUses) {
  const CatalogMessages messages = messages_of({kStandard});
  const std::vector<MessageUse>& uses = messages.find("quota")->uses;
  ASSERT_EQ(uses.size(), 2u);
  EXPECT_EQ(uses[0].selected->value, 10u);
  EXPECT_EQ(uses[0].selector_attribute, "Reason");
  EXPECT_EQ(uses[0].position.line, 10u);
  EXPECT_EQ(uses[1].selected, nullptr);
  EXPECT_EQ(uses[1].entry->name, "SAME");
}

TEST(MessageScope, AuxiliaryMessage_FindsTheAttributesOfBothFiles) {
  const CatalogMessages messages = messages_of({kStandard, kAuxiliary});
  const MessageScope& scope = messages.find("grace")->uses[0].scope;
  EXPECT_EQ(scope.find("Owner"), TypeMBChar32);
  EXPECT_EQ(scope.find("Name"), TypeChar32);
  EXPECT_EQ(scope.find("RACK"), TypeUInt4);
  EXPECT_EQ(scope.find("SITE"), TypeMBChar32);
  EXPECT_EQ(scope.find("Other"), std::nullopt);
  EXPECT_EQ(messages.find("FULL")->uses[0].scope.find("Owner"), std::nullopt);
}

TEST(CatalogMessages, AuxiliaryDefaultMessages_ThoseThatTheLibraryAsksFor) {
  const SourceText auxiliary = {"aux.yaml", R"(version: "2.5"
entries:
  - {id: 1, name: FULL, message: "{Name}, {Owner}", message_id: full.owned, attributes: [{name: Owner, type: Char32}]}
  - {id: 2, name: SAME, message_id: only.a.key}
  - {id: 7, name: NEW, message_id: a.key.alone, message: ""}
  - {id: 8, name: NEWER, message: "new"}
)"};
  const CatalogMessages messages = messages_of({kStandard, auxiliary});
  ASSERT_NE(messages.find("full.owned"), nullptr);
  EXPECT_EQ(messages.find("full.owned")->uses[0].scope.find("Name"), TypeChar32);
  EXPECT_NE(messages.find("FULL"), nullptr);
  EXPECT_EQ(messages.find("only.a.key"), nullptr);
  EXPECT_EQ(messages.find("a.key.alone"), nullptr);
  EXPECT_NE(messages.find("NEWER"), nullptr);
}

TEST(CatalogMessages, Moved_StaysUsable) {
  CatalogMessages messages = messages_of({kStandard, kAuxiliary});
  const CatalogMessages moved = std::move(messages);
  EXPECT_EQ(moved.find("grace")->uses[0].file, "aux.yaml");
  EXPECT_EQ(moved.find("FULL")->text->stored, "%s%Name% at %s%SITE%");
}

}  // namespace
}  // namespace qzlog_catalog
