#include "tools/compiler/model/definition_model.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(SelectorAttribute, NameOfNoOwnAttribute_MakesNoSelector) {
  EntryDefinition entry;
  entry.attributes = {{"Reason", TypeUInt2, "", {}}};
  EXPECT_EQ(selector_attribute(entry), nullptr);
  entry.selector.attribute = "Other";
  EXPECT_EQ(selector_attribute(entry), nullptr);
  entry.selector.attribute = "Reason";
  EXPECT_EQ(selector_attribute(entry), &entry.attributes[0]);
}

TEST(ModelIndex, Lookups_FindEntriesAndGlobals) {
  DefinitionModel model;
  model.globals = {{"G", TypeBool, "", {}}, {"G", TypeDate, "", {}}};
  model.entries.resize(2);
  model.entries[0].id = 5;
  model.entries[0].name = "FIVE";
  model.entries[1].id = 6;
  const ModelIndex index(model);
  EXPECT_EQ(index.find_entry(5), &model.entries[0]);
  EXPECT_EQ(index.find_entry(7), nullptr);
  EXPECT_EQ(index.find_entry_by_name("FIVE"), &model.entries[0]);
  EXPECT_EQ(index.find_entry_by_name(""), nullptr);
  EXPECT_EQ(index.find_global("G"), &model.globals[1]);
  EXPECT_EQ(index.find_global("H"), nullptr);
}

}  // namespace
}  // namespace qzlog_compiler
