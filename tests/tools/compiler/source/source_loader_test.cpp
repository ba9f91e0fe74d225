#include "tools/compiler/source/source_loader.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

DefinitionModel load(ParsedSource& source) {
  AcceptedWarnings accepted;
  return load_source(source.text(), source.tree(), RenderingPaths::kBoth, nullptr, accepted, source.diagnostics());
}

TEST(LoadSource, GlobalsBehindEntries_AreKnownInMessages) {
  ParsedSource source("entries: [{id: 1, name: A, message: '{G}'}]\nglobals: [{name: G, type: Bool}]\nversion: 1.10\n");
  const DefinitionModel model = load(source);
  EXPECT_EQ(source.printed_diagnostics(), "");
  EXPECT_EQ(model.version, "1.10");
  ASSERT_EQ(model.entries.size(), 1U);
  EXPECT_EQ(model.entries[0].message.stored, "%d%G%");
  ASSERT_EQ(model.globals.size(), 1U);
  EXPECT_EQ(model.globals[0].type, TypeBool);
}

TEST(LoadSource, EntriesWithOneIdOrName_AreReported) {
  ParsedSource source(
      "version: 1.0\nentries:\n- {id: 10, name: A, message: m}\n- {id: 0x0A, name: B, message: m}\n"
      "- {id: 11, name: A, message: m}\n");
  load(source);
  EXPECT_EQ(source.printed_diagnostics(),
            "f:4:8: error: the ID 10 is the ID of another entry [duplicate-id]\n"
            "f:5:18: error: 'A' is the name of another entry [duplicate-entry-name]\n");
}

TEST(LoadSource, EntriesWithoutReadableIdAndName_AreNotTakenForDuplicates) {
  ParsedSource source("version: 1.0\nentries: [{id: x, name: a, message: m}, {id: y, name: b, message: m}, 3]\n");
  load(source);
  const std::string found = source.printed_diagnostics();
  EXPECT_EQ(found.find("duplicate"), std::string::npos) << found;
  EXPECT_NE(found.find("found a text [wrong-type]"), std::string::npos) << found;
}

TEST(LoadSource, EmptySource_LacksEverything) {
  ParsedSource source("");
  load(source);
  EXPECT_EQ(
      source.printed_diagnostics(),
      "f:1:1: error: expected a definition source, a mapping with the keys version, product, globals, entries, accept, "
      "found no value "
      "[wrong-type]\n");
}

}  // namespace
}  // namespace qzlog_compiler
