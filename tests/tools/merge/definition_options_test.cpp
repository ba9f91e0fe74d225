#include "tools/merge/definition_options.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace {

using qzlog_tool::DefinitionPaths;
using Paths = std::vector<DefinitionPaths>;

/// What a subcommand takes from its arguments, when its callback runs.
Paths parse(const std::string& arguments) {
  CLI::App app;
  CLI::App* const command = app.add_subcommand("render");
  Paths paths;
  Paths seen;
  std::vector<std::string> entries;
  qzlog_tool::add_definition_options(*command, paths);
  command->add_option("ENTRIES", entries);
  command->callback([&] { seen = paths; });
  app.parse("render " + arguments);
  return seen;
}

TEST(DefinitionOptions, AuxiliaryFile_BelongsToTheDefinitionsBeforeIt) {
  EXPECT_EQ(parse("--definitions a"), (Paths{{"a", ""}}));
  EXPECT_EQ(parse("--definitions a --aux x e.jsonl"), (Paths{{"a", "x"}}));
  EXPECT_EQ(parse("--aux x e.jsonl --definitions a"), (Paths{{"a", "x"}}));
  EXPECT_EQ(parse("--definitions a --definitions b --aux x --definitions=c --aux=y e f"),
            (Paths{{"a", ""}, {"b", "x"}, {"c", "y"}}));
  EXPECT_EQ(parse("e --definitions a f --aux x --definitions b"), (Paths{{"a", "x"}, {"b", ""}}));
}

TEST(DefinitionOptions, SecondAuxiliaryFile_IsAnErrorOfUsage) {
  try {
    parse("--definitions a --aux x --aux y");
    FAIL();
  } catch (const CLI::ParseError& error) {
    EXPECT_STREQ(error.what(), "--aux: 'a' has 'x' already: one belongs to each --definitions");
  }
}

TEST(DefinitionOptions, NoDefinitions_AreAnErrorOfUsage) { EXPECT_THROW(parse("--aux x"), CLI::RequiredError); }

TEST(DefinitionOptions, FilesOfAll_AreListed) {
  EXPECT_EQ(qzlog_tool::files_of({{"a", ""}, {"b", "x"}}), (std::vector<std::string>{"a", "", "b", "x"}));
}

}  // namespace
