#include "tools/inspect/ldf_yaml.h"

#include <gtest/gtest.h>

#include "tests/support/ldf_file.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tests/tools/inspect/ldf_forms.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

LdfYaml yaml_of(const std::string& bytes) { return write_yaml(LdfSurvey(bytes), nullptr); }

// Templates made up at random may end in a percent sign, which the compiler takes for ICU alone.
std::string compiled(const std::string& source, bool names = false) {
  return compile_source(source, "", {.path = RenderingPaths::kIcu, .names = names}).bytes;
}

TEST(WriteYamlOfAFile, RandomFiles_CompileBackToTheSameBytes) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 1000; ++round) {
    const std::string bytes = write_ldf(maker.make());
    const LdfYaml yaml = yaml_of(bytes);
    ASSERT_TRUE(yaml.obstacles.empty()) << yaml.obstacles[0].text;
    ASSERT_EQ(compiled(yaml.source), bytes) << yaml.source;
  }
}

TEST(WriteYamlOfAFile, RandomFilesWithNames_CompileBackToTheSameBytes) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 1000; ++round) {
    DefinitionModel model = maker.make();
    maker.name_everything(model);
    std::string bytes = write_ldf(model);
    append_names(model, bytes);
    const LdfYaml yaml = yaml_of(bytes);
    ASSERT_TRUE(yaml.obstacles.empty()) << yaml.obstacles[0].text;
    ASSERT_EQ(compiled(yaml.source, true), bytes) << yaml.source;
  }
}

TEST(WriteYamlOfAFile, RegionsInAnotherOrder_GiveTheSameRecords) {
  qz_test::LdfFile file{.tag = "1.0",
                        .globals = {{"G", TypeBool, "g"}},
                        .entries = {{.id = 9, .mask = 2, .message_id = "m"}, {.id = 3, .word = 4, .message_text = "t"}},
                        .region_order = "rmg",
                        .gap = "gap"};
  const LdfYaml yaml = yaml_of(file.bytes());
  ASSERT_TRUE(yaml.obstacles.empty()) << yaml.obstacles[0].text;
  DefinitionModel model = read_ldf(file.bytes()).model;
  EXPECT_EQ(compiled(yaml.source), write_ldf(model));
}

TEST(WriteYamlOfAFile, DamagedRecords_AreLeftOut) {
  const std::string bytes = qz_test::with_int4(example_bytes(), 0xA1 + 12, 0xFFFFFFFF);
  const LdfYaml yaml = yaml_of(bytes);
  EXPECT_TRUE(yaml.obstacles.empty());
  const LdfFile file = read_ldf(compiled(yaml.source));
  EXPECT_FALSE(file.damage);
  ASSERT_EQ(file.model.entries.size(), 1U);
  EXPECT_EQ(file.model.entries[0].id, 0x01020304U);
}

TEST(WriteYamlOfAFile, IdListedTwice_IsAnObstacle) {
  const qz_test::LdfFile file{.tag = "1.0", .entries = {{.id = 3, .word = 1}, {.id = 3, .word = 2}}};
  const LdfYaml yaml = yaml_of(file.bytes());
  EXPECT_EQ(yaml.source, "");
  ASSERT_EQ(yaml.obstacles.size(), 1U);
  EXPECT_EQ(yaml.obstacles[0].offset, file.image().map_offset);
  EXPECT_EQ(yaml.obstacles[0].text, "entry 3: a later pair of the entry map has the same ID and replaces it");
}

TEST(WriteYamlOfAFile, ManyObstacles_AreCountedAndTheFirstAreKept) {
  qz_test::LdfFile file{.tag = "1.0", .entries = {{.id = 3}}};
  file.map.emplace(251, qz_test::LdfPair{3, 0});
  const LdfYaml yaml = yaml_of(file.bytes());
  EXPECT_EQ(yaml.obstacles.size(), LdfSurvey::kKeptDamages);
  EXPECT_EQ(yaml.obstacle_count, 250U);
}

TEST(WriteYamlOfAFile, ObstacleInARecord_HasTheRecordsOffset) {
  const qz_test::LdfFile file{.tag = "1.0", .entries = {{.id = 3}, {.id = 4, .message_text = "\xFF"}}};
  const LdfYaml yaml = yaml_of(file.bytes());
  EXPECT_EQ(yaml.source, "");
  ASSERT_EQ(yaml.obstacles.size(), 1U);
  EXPECT_EQ(yaml.obstacles[0].offset, file.image().record_offsets[1]);
  EXPECT_EQ(yaml.obstacles[0].text, "entry 4: the message '\uFFFD' is not UTF-8");
}

TEST(WriteYamlOfAFile, AnyDamage_GivesASourceThatCompilesOrAnObstacle) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 2000; ++round) {
    const std::string bytes = damaged(random_file(maker, random), random);
    const LdfYaml yaml = yaml_of(bytes);
    ASSERT_EQ(yaml.source.empty(), !yaml.obstacles.empty());
    if (!yaml.source.empty()) {
      ASSERT_NE(compiled(yaml.source), "") << yaml.source;
    }
  }
}

TEST(WriteYamlOfAFile, EveryPrefix_GivesASourceThatCompilesOrAnObstacle) {
  const std::string bytes = example_bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const LdfYaml yaml = yaml_of(bytes.substr(0, size));
    ASSERT_EQ(yaml.source.empty(), !yaml.obstacles.empty()) << size;
    if (!yaml.source.empty()) {
      ASSERT_NE(compiled(yaml.source), "") << size;
    }
  }
}

}  // namespace
}  // namespace qzlog_compiler
