#include "tools/inspect/model_yaml.h"

#include <gtest/gtest.h>

#include "tests/support/rounds.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

// Templates made up at random may end in a percent sign, which the compiler takes for ICU alone.
std::string compiled(const std::string& source, CompileOptions options = {}) {
  options.names = false;
  options.path = RenderingPaths::kIcu;
  const CompileResult result = compile_source(source, "made.yaml", options);
  std::string errors;
  for (const Finding& found : result.diagnostics) {
    if (found.severity == Severity::kError) errors += found.text + "\n";
  }
  EXPECT_TRUE(result.ok()) << errors << source;
  return result.bytes;
}

std::vector<std::string> obstacles_of(const DefinitionModel& model) {
  const ModelYaml yaml = write_yaml(model, nullptr);
  EXPECT_EQ(yaml.source, "");
  std::vector<std::string> texts;
  for (const YamlObstacle& obstacle : yaml.obstacles) {
    texts.push_back((obstacle.entry ? std::to_string(*obstacle.entry) : "-") + " " + obstacle.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

DefinitionModel model_with(const EntryDefinition& entry) {
  DefinitionModel model;
  model.version = "1.0";
  model.entries = {entry};
  return model;
}

TEST(WriteYaml, ExampleModel_IsASourceThatAPersonCanRead) {
  EXPECT_EQ(write_yaml(example_model(), nullptr).source,
            R"(version: "2.5"
globals:
  - {name: "HOST", type: MBChar64}
entries:
  - id: 16909060
    name: ENTRY_16909060
    mask: 0x00000000
    word: 0
    raw: ""
    message_id: ""
  - id: 7
    name: M
    mask: 0x00000005
    word: 9
    raw: "%d%R%"
    message_id: "m"
    attributes:
      - {name: "R", type: UInt2, redirect: "r"}
    selector:
      attribute: "R"
      messages:
        - {index: 1, value: 16, id: "s", raw: "é"}
)");
}

TEST(WriteYaml, NoEntries_GiveAnEmptyList) {
  DefinitionModel model;
  model.version = "1.0";
  const ModelYaml yaml = write_yaml(model, nullptr);
  EXPECT_EQ(yaml.source, "version: \"1.0\"\nentries: []\n");
  EXPECT_EQ(compiled(yaml.source), write_ldf(model));
}

TEST(WriteYaml, RandomModels_CompileBackToTheSameFile) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < qz_test::rounds(2000); ++round) {
    const DefinitionModel model = maker.make();
    const ModelYaml yaml = write_yaml(model, nullptr);
    ASSERT_TRUE(yaml.obstacles.empty()) << yaml.obstacles[0].text;
    ASSERT_EQ(compiled(yaml.source), write_ldf(model)) << yaml.source;
  }
}

TEST(WriteYaml, AuxiliaryModel_CompilesBackAgainstItsStandard) {
  const std::string standard_source =
      "version: \"1.0\"\nentries:\n"
      "  - {id: 1, name: A, mask: 6, word: 9, message: m, attributes: [{name: K, type: UInt1}], "
      "selector: {attribute: K, messages: []}}\n";
  const CompileResult standard = compile_source(standard_source, "", {});
  ASSERT_TRUE(standard.ok());
  CompileOptions options;
  options.standard = &standard.model;
  EntryDefinition entry;
  entry.id = 1;
  entry.mask = 1;
  entry.selector.attribute = "K";
  entry.selector.messages = {{1, 2, "s", {}, {}, {}}};
  const DefinitionModel model = model_with(entry);
  const ModelYaml yaml = write_yaml(model, &standard.model);
  ASSERT_TRUE(yaml.obstacles.empty()) << yaml.obstacles[0].text;
  EXPECT_EQ(compiled(yaml.source, options), write_ldf(model));
  EXPECT_EQ(obstacles_of(model), Texts{"0 the entry has no attribute 'K' to select its messages by"});
}

TEST(WriteYaml, TemplateThatEndsInAPercentSign_IsNoObstacle) {
  EntryDefinition entry;
  entry.message.stored = "used to 100%";
  const DefinitionModel model = model_with(entry);
  const ModelYaml yaml = write_yaml(model, nullptr);
  ASSERT_TRUE(yaml.obstacles.empty());
  EXPECT_EQ(compiled(yaml.source), write_ldf(model));
  EXPECT_FALSE(compile_source(yaml.source, "", {}).ok());
}

TEST(WriteYaml, TextsThatAreNotUtf8_AreObstacles) {
  EntryDefinition entry;
  entry.message_id = "\x80";
  entry.message.stored = "caf\xE9";
  entry.attributes = {{"\xFF", TypeBool, "\xFE", {}}};
  DefinitionModel model = model_with(entry);
  model.globals = {{"g\xC0", TypeBool, "", {}}};
  EXPECT_EQ(obstacles_of(model),
            (Texts{"- global attribute 'g\uFFFD' is not UTF-8", "0 the message 'caf\uFFFD' is not UTF-8",
                   "0 the message ID '\uFFFD' is not UTF-8", "0 attribute '\uFFFD' is not UTF-8",
                   "0 the redirection name '\uFFFD' is not UTF-8"}));
}

TEST(WriteYaml, MoreThan255OfAList_IsAnObstacle) {
  EntryDefinition entry;
  entry.attributes.resize(256);
  entry.selector.messages.resize(300);
  DefinitionModel model = model_with(entry);
  model.globals.resize(257);
  EXPECT_EQ(obstacles_of(model), (Texts{"- 257 global attributes are too many", "0 256 attributes are too many",
                                        "0 300 selector messages are too many"}));
}

TEST(WriteYaml, TypeWithoutAName_IsAnObstacle) {
  EntryDefinition entry;
  entry.attributes = {{"a", static_cast<qz_AttributeType>(99), "", {}}};
  EXPECT_EQ(obstacles_of(model_with(entry)), Texts{"0 the attribute 'a' has the type code 99, which has no name"});
}

TEST(WriteYaml, WhatTheCompilerRefuses_IsAnObstacleOfItsEntry) {
  DefinitionModel model = model_with({});
  model.version = "two";
  model.entries.resize(2);
  model.entries[1].id = 5;
  model.entries[1].attributes = {{"a", TypeBool, "", {}}, {"a", TypeUInt1, "", {}}};
  EXPECT_EQ(obstacles_of(model), (Texts{"- bad version 'two'", "1 'a' is the name of another of these attributes"}));
}

}  // namespace
}  // namespace qzlog_compiler
