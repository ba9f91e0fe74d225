#include "tools/compiler/source/entry_loader.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

/// Loads one entry, standing alone or over standard definitions.
class EntryLoading {
 public:
  explicit EntryLoading(const std::string& text, const ModelIndex* standard = nullptr) : source_(text) {
    globals_.add("HOST", TypeMBChar64, {1, 1});
    EntryLoader loader(
        {source_.text(), RenderingPaths::kBoth, standard, &globals_, &source_.diagnostics(), &accepted_});
    loaded_ = loader.load(source_.root());
  }

  const EntryDefinition& entry() const { return loaded_.entry; }
  bool has_id() const { return loaded_.has_id; }
  std::string diagnostics() { return source_.printed_diagnostics(); }

 private:
  ParsedSource source_;
  AttributeNames globals_;
  AcceptedWarnings accepted_;
  LoadedEntry loaded_;
};

TEST(EntryLoader, KeysLeftOut_HaveTheirDefaults) {
  EntryLoading loading("{id: 0x3E9, name: DISK_FULL, message: 'on {HOST}'}");
  const EntryDefinition& entry = loading.entry();
  EXPECT_EQ(loading.diagnostics(), "");
  EXPECT_TRUE(loading.has_id());
  EXPECT_EQ(entry.id, 1001U);
  EXPECT_EQ(entry.mask, 1U);
  EXPECT_EQ(entry.word, 0U);
  EXPECT_EQ(entry.message_id, "DISK_FULL");
  EXPECT_EQ(entry.message.written, "on {HOST}");
  EXPECT_EQ(entry.message.stored, "on %s%HOST%");
  EXPECT_FALSE(entry.message.raw);
  EXPECT_TRUE(entry.attributes.empty());
  EXPECT_TRUE(entry.selector.attribute.empty());
}

TEST(EntryLoader, EveryKey_ReachesTheModel) {
  EntryLoading loading(
      "{id: 7, name: N, summary: S, mask: 0, word: 9, raw: '%s', message_id: m.id,\n"
      " attributes: [{name: R, type: UInt1, redirect: r}],\n"
      " selector: {attribute: R, messages: [{index: 3, value: 255, id: s.id, text: '{R}!'}]}}");
  const EntryDefinition& entry = loading.entry();
  EXPECT_EQ(loading.diagnostics(), "");
  EXPECT_EQ(entry.summary, "S");
  EXPECT_EQ(entry.mask, 0U);
  EXPECT_EQ(entry.word, 9U);
  EXPECT_EQ(entry.message_id, "m.id");
  EXPECT_TRUE(entry.message.raw);
  EXPECT_EQ(entry.message.stored, "%s");
  EXPECT_EQ(entry.selector.attribute, "R");
  ASSERT_EQ(entry.selector.messages.size(), 1U);
  EXPECT_EQ(entry.selector.messages[0].index, 3U);
  EXPECT_EQ(entry.selector.messages[0].value, 255U);
  EXPECT_EQ(entry.selector.messages[0].id, "s.id");
  EXPECT_EQ(entry.selector.messages[0].message.stored, "%d%R%!%_%TIMESTAMP%");
}

TEST(EntryLoader, SelectorWithoutAttribute_HasMessagesOfAnyValue) {
  EntryLoading loading(
      "{id: 1, name: N, message: m, attributes: [{name: R, type: UInt1}],\n"
      " selector: {messages: [{index: 3, value: 4294967295, id: i, text: t}, {index: 4, value: 0, id: j, text: u}]}}");
  EXPECT_EQ(loading.diagnostics(), "");
  EXPECT_EQ(loading.entry().selector.attribute, "");
  ASSERT_EQ(loading.entry().selector.messages.size(), 2U);
  EXPECT_EQ(loading.entry().selector.messages[0].value, 4294967295U);
}

TEST(EntryLoader, PlaceholderMistake_IsReportedAtItsPlace) {
  EntryLoading loading("{id: 1, name: N, message: \"\\u0041 'b' {Nobody}\"}");
  EXPECT_EQ(loading.diagnostics(), "f:1:39: error: unknown attribute 'Nobody' [unknown-attribute]\n");
}

TEST(EntryLoader, AttributeListInError_HidesNothingElse) {
  EntryLoading loading("{id: x, name: n, message: '{A} {B}', attributes: [{type: Bool}]}");
  EXPECT_EQ(loading.diagnostics(),
            "f:1:6: error: 'x' is no number [bad-number]\n"
            "f:1:15: error: bad entry name 'n' [bad-entry-name]\n"
            "f:1:51: error: an attribute lacks the key 'name' [missing-key]\n");
  EXPECT_FALSE(loading.has_id());
}

DefinitionModel standard_model() {
  DefinitionModel model;
  model.globals = {{"SITE", TypeMBChar32, "", {}}};
  model.entries.resize(1);
  EntryDefinition& entry = model.entries[0];
  entry.id = 1;
  entry.mask = 5;
  entry.word = 77;
  entry.attributes = {{"Free", TypeUInt4, "", {}}, {"Reason", TypeUInt2, "", {}}, {"Kind", TypeUInt1, "", {}}};
  entry.selector.attribute = "Reason";
  return model;
}

TEST(EntryLoader, ExtendedEntry_MayLeaveOutMessageAndMaskAndKeepsTheWord) {
  const DefinitionModel model = standard_model();
  const ModelIndex standard(model);
  EntryLoading loading("{id: 1, name: N}", &standard);
  EXPECT_EQ(loading.diagnostics(), "");
  EXPECT_EQ(loading.entry().mask, 0U);
  EXPECT_EQ(loading.entry().word, 77U);
  EXPECT_EQ(loading.entry().message_id, "");
  EXPECT_EQ(loading.entry().message.stored, "");
}

TEST(EntryLoader, ExtendedEntry_RefersToStandardAttributes) {
  const DefinitionModel model = standard_model();
  const ModelIndex standard(model);
  EntryLoading loading(
      "{id: 1, name: N, message: '{Free} {SITE} {HOST} {Own}', attributes: [{name: Own, type: Float}],\n"
      " selector: {attribute: Reason, messages: [{index: 1, value: 65535, id: i, text: t}]}}",
      &standard);
  EXPECT_EQ(loading.diagnostics(), "");
  EXPECT_EQ(loading.entry().message.stored, "%d%Free% %s%SITE% %s%HOST% %f%Own%");
}

TEST(EntryLoader, NewEntryOfAnAuxiliarySource_HasTheUsualDefaultsAndNoStandardAttributes) {
  const DefinitionModel model = standard_model();
  const ModelIndex standard(model);
  EntryLoading loading("{id: 2, name: N, message: '{Free}'}", &standard);
  EXPECT_EQ(loading.entry().mask, 1U);
  EXPECT_EQ(loading.entry().word, 0U);
  EXPECT_EQ(loading.diagnostics(), "f:1:28: error: unknown attribute 'Free' [unknown-attribute]\n");
}

TEST(EntryLoader, StandardAttributeThatIsNoSelector_HasToBeListedAgain) {
  const DefinitionModel model = standard_model();
  const ModelIndex standard(model);
  EntryLoading loading("{id: 1, name: N, selector: {attribute: Kind, messages: []}}", &standard);
  EXPECT_EQ(loading.diagnostics(),
            "f:1:40: error: 'Kind' is no selector in the standard definitions [unknown-selector-attribute]\n");
}

}  // namespace
}  // namespace qzlog_compiler
