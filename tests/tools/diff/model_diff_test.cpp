#include "tools/diff/model_diff.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"

namespace {

using namespace qzlog_compiler;

DefinitionModel model(const std::string& entries, const std::string& globals = "[]") {
  const std::string source = "version: \"2.5\"\nglobals: " + globals + "\nentries:\n" + entries;
  CompileResult result = compile_source(source, "events.yaml", {});
  EXPECT_TRUE(result.ok()) << (result.diagnostics.empty() ? "" : result.diagnostics[0].text);
  return std::move(result.model);
}

std::string shown(const std::optional<std::string>& text) { return text ? '<' + *text + '>' : "-"; }

/// One line per change: the rule, the place, before and after.
std::string described(const std::vector<DiffChange>& changes) {
  std::string text;
  for (const DiffChange& change : changes) {
    const DiffPlace& place = change.place;
    text += std::string(diff_rule_info(change.rule).name);
    if (place.entry() != nullptr) text += " " + std::to_string(place.entry()->id);
    if (place.attribute() != nullptr) text += " " + place.attribute()->name;
    if (place.message() != nullptr) text += " #" + std::to_string(place.message()->index);
    text += " " + shown(change.before) + " " + shown(change.after) + "\n";
  }
  return text;
}

std::string diff(const std::string& before, const std::string& after) {
  const DefinitionModel old_model = model(before);
  const DefinitionModel new_model = model(after);
  return described(compare_models(old_model, new_model));
}

TEST(CompareModels, EntriesByIdBeforeName) {
  EXPECT_EQ(diff("  - {id: 1, name: A, message: x, message_id: a}\n  - {id: 2, name: B, message: x, message_id: a}\n",
                 "  - {id: 1, name: B, message: x, message_id: a}\n  - {id: 2, name: A, message: x, message_id: a}\n"),
            "entry-renamed 1 <A> <B>\nentry-renamed 2 <B> <A>\n");
  EXPECT_EQ(diff("  - {id: 1, name: A, message: x, message_id: a}\n",
                 "  - {id: 1, name: B, message: x, message_id: a}\n  - {id: 2, name: A, message: x, message_id: a}\n"),
            "entry-renamed 1 <A> <B>\nentry-added 2 - <x>\n");
}

TEST(CompareModels, RenumberedEntry_IsComparedOn) {
  EXPECT_EQ(diff("  - {id: 1, name: A, message: x, mask: 1}\n", "  - {id: 2, name: A, message: x, mask: 2}\n"),
            "entry-renumbered 2 <1> <2>\nmask-changed 2 <0x00000001> <0x00000002>\n");
}

TEST(CompareModels, CompiledFilesWithNames_KnowThem) {
  const CompileResult before = compile_source(
      "version: \"1.0\"\nentries: [{id: 1, name: A, message: x, attributes: [{name: N, type: Char32}]}]", "a.yaml", {});
  const CompileResult after = compile_source(
      "version: \"1.0\"\nentries: [{id: 2, name: A, summary: s, message: x, "
      "attributes: [{name: N, type: Char32, sensitive: hash}]}]",
      "b.yaml", {});
  EXPECT_EQ(described(compare_models(read_ldf(before.bytes).model, read_ldf(after.bytes).model)),
            described(compare_models(before.model, after.model)));
  EXPECT_EQ(described(compare_models(before.model, after.model)),
            "entry-renumbered 2 <1> <2>\nsummary-changed 2 - <s>\nsensitivity-changed 2 N <keep> <hash>\n");
}

TEST(CompareModels, CompiledFilesWithoutNames_DoNotKnowThem) {
  CompileResult before =
      compile_source("version: \"1.0\"\nentries: [{id: 1, name: A, message: x}]", "a.yaml", {.names = false});
  CompileResult after = compile_source("version: \"1.0\"\nentries: [{id: 2, name: A, message: x}]", "b.yaml", {});
  const DefinitionModel compiled = read_ldf(before.bytes).model;
  EXPECT_EQ(described(compare_models(compiled, after.model)),
            "entry-removed 1 <x%_%TIMESTAMP%> -\nentry-added 2 - <x>\n");
  EXPECT_EQ(described(compare_models(compiled, before.model)), "");
  EXPECT_EQ(described(compare_models(before.model, compiled)), "");
}

TEST(CompareModels, WholeSelector_IsOneChange) {
  const std::string entry = "  - id: 1\n    name: A\n    message: x\n    attributes: [{name: N, type: UInt1}]\n";
  const std::string selector =
      "    selector: {attribute: N, messages: [{index: 1, value: 2, id: a, text: b}, {index: 2, value: 3, id: c, text: "
      "d}]}\n";
  EXPECT_EQ(diff(entry, entry + selector), "selector-added 1 - <N>\n");
  EXPECT_EQ(diff(entry + selector, entry), "selector-removed 1 <N> -\n");
}

TEST(CompareModels, SelectorThatLosesItsAttributeAlone_KeepsItsMessages) {
  const std::string entry = "  - id: 1\n    name: A\n    message: x\n    attributes: [{name: N, type: UInt1}]\n";
  const std::string messages = "messages: [{index: 1, value: 2, id: a, text: b}]}\n";
  const std::string with = entry + "    selector: {attribute: N, " + messages;
  const std::string without = entry + "    selector: {" + messages;
  EXPECT_EQ(diff(with, without), "selector-removed 1 <N> -\n");
  EXPECT_EQ(diff(without, with), "selector-added 1 - <N>\n");
  EXPECT_EQ(diff(entry, without), "selector-message-added 1 #1 - <b>\n");
  EXPECT_EQ(diff(without, entry), "selector-message-removed 1 #1 <b> -\n");
}

TEST(CompareModels, SelectorMessages_MatchByIndexValueAndKey) {
  const std::string entry =
      "  - id: 1\n    name: A\n    message: x\n    attributes: [{name: N, type: UInt1}]\n    selector: {attribute: N, "
      "messages: [";
  EXPECT_EQ(diff(entry + "{index: 1, value: 1, id: a, text: t}, {index: 2, value: 2, id: b, text: t}]}\n",
                 entry + "{index: 1, value: 2, id: a, text: t}, {index: 2, value: 1, id: b, text: t}]}\n"),
            "selector-value-changed 1 #1 <1> <2>\nselector-value-changed 1 #2 <2> <1>\n");
  EXPECT_EQ(
      diff(entry + "{index: 1, value: 1, id: a, text: t}]}\n", entry + "{index: 5, value: 6, id: a, text: t}]}\n"),
      "selector-index-changed 1 #5 <1> <5>\nselector-value-changed 1 #5 <1> <6>\n");
  EXPECT_EQ(
      diff(entry + "{index: 1, value: 1, id: a, text: t}]}\n", entry + "{index: 5, value: 6, id: b, text: t}]}\n"),
      "selector-message-removed 1 #1 <t> -\nselector-message-added 1 #5 - <t>\n");
}

TEST(CompareModels, NewDefaultFormat_IsPartOfTheTypeChange) {
  EXPECT_EQ(diff("  - {id: 1, name: A, message: '{N} x', attributes: [{name: N, type: UInt4}]}\n",
                 "  - {id: 1, name: A, message: '{N} x', attributes: [{name: N, type: Float}]}\n"),
            "type-changed 1 N <UInt4> <Float>\n");
}

TEST(CompareModels, GlobalAttributes_ComeFirst) {
  const std::string entry = "  - {id: 1, name: A, message: x}\n";
  const DefinitionModel old_model = model(entry, "[{name: G, type: Char32}, {name: H, type: Date}]");
  const DefinitionModel new_model =
      model(entry + "  - {id: 2, name: B, message: x}\n", "[{name: I, type: UInt1}, {name: G, type: Char64}]");
  EXPECT_EQ(described(compare_models(old_model, new_model)),
            "text-limit-raised G <Char32> <Char64>\nglobal-removed H <Date> -\nglobal-added I - <UInt1>\n"
            "entry-added 2 - <x>\n");
}

TEST(CompareModels, AttributeBetweenEntryAndGlobals_StaysKnown) {
  const std::string with = "  - {id: 1, name: A, message: x, attributes: [{name: G, type: UInt2}]}\n";
  const std::string without = "  - {id: 1, name: A, message: x}\n";
  const DefinitionModel own = model(with);
  const DefinitionModel global = model(without, "[{name: G, type: UInt2}]");
  const DefinitionModel wider = model(without, "[{name: G, type: UInt4}]");
  EXPECT_EQ(described(compare_models(own, global)),
            "global-added G - <UInt2>\nattribute-made-global 1 G <entry> <global>\n");
  EXPECT_EQ(described(compare_models(global, own)),
            "global-removed G <UInt2> -\nattribute-made-own 1 G <global> <entry>\n");
  EXPECT_EQ(
      described(compare_models(own, wider)),
      "global-added G - <UInt4>\nattribute-made-global 1 G <entry> <global>\nnumber-widened 1 G <UInt2> <UInt4>\n");
}

TEST(CompareModels, AnotherNameBesideAGlobalOfTheOldOne_IsNoRenaming) {
  const std::string entry = "  - {id: 1, name: A, message: x, attributes: [{name: ";
  const DefinitionModel before = model(entry + "G, type: UInt2}]}\n", "[{name: G, type: UInt2}]");
  const DefinitionModel after = model(entry + "H, type: UInt2}]}\n", "[{name: G, type: UInt2}]");
  EXPECT_EQ(described(compare_models(before, after)),
            "attribute-made-global 1 G <entry> <global>\nattribute-added 1 H - <UInt2>\n");
  EXPECT_EQ(described(compare_models(after, before)),
            "attribute-removed 1 H <UInt2> -\nattribute-made-own 1 G <global> <entry>\n");
}

TEST(CompareModels, EmptyModels_AreEqual) { EXPECT_TRUE(compare_models({}, {}).empty()); }

}  // namespace
