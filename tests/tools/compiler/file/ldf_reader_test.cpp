#include "tools/compiler/file/ldf_reader.h"

#include <gtest/gtest.h>

#include "tests/support/seeded_random.h"
#include "tests/tools/compiler/example_model.h"
#include "tools/compiler/file/ldf_writer.h"

namespace qzlog_compiler {
namespace {

std::string big_endian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

TEST(ReadLdf, ExampleFile_GivesTheModel) {
  const LdfFile file = read_ldf(example_bytes());
  ASSERT_FALSE(file.damage) << file.damage->reason;
  EXPECT_EQ(file.model.version, "2.5");
  ASSERT_EQ(file.model.globals.size(), 1U);
  EXPECT_EQ(file.model.globals[0].name, "HOST");
  EXPECT_EQ(file.model.globals[0].type, TypeMBChar64);
  ASSERT_EQ(file.model.entries.size(), 2U);
  const EntryDefinition& entry = file.model.entries[0];
  EXPECT_EQ(entry.id, 7U);
  EXPECT_EQ(entry.word, 9U);
  EXPECT_EQ(entry.mask, 5U);
  EXPECT_EQ(entry.message_id, "m");
  EXPECT_TRUE(entry.message.raw);
  EXPECT_EQ(entry.message.written, "%d%R%");
  ASSERT_NE(selector_attribute(entry), nullptr);
  EXPECT_EQ(selector_attribute(entry)->redirect, "r");
  EXPECT_EQ(entry.selector.messages.at(0).value, 0x10U);
  EXPECT_EQ(entry.selector.messages.at(0).message.stored, "é");
  EXPECT_EQ(write_ldf(file.model), example_bytes());
}

TEST(ReadLdf, EveryPrefix_IsDamaged) {
  const std::string bytes = example_bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const LdfFile file = read_ldf(std::string_view(bytes).substr(0, size));
    ASSERT_TRUE(file.damage) << size;
    EXPECT_LE(file.damage->offset, bytes.size()) << size;
  }
}

struct DamageCase {
  std::size_t at;
  std::string bytes;
  std::size_t offset;
  const char* reason;
};

TEST(ReadLdf, Damage_IsNamedWithItsOffset) {
  const DamageCase cases[] = {
      {0, "FDL.", 0, "the file does not begin with \".LDF\""},
      {40, big_endian(0xFFFFFFFF), 164, "the file ends within the global attributes"},
      {44, big_endian(0xFFFFFFFF), 0xFFFFFFFF, "the file ends within the global attributes"},
      {48, big_endian(0xFFFFFFFF), 269, "the file ends within the entry map"},
      {56, big_endian(0x7FFFFFFF), 0x7FFFFFFF, "the file ends within the entry map"},
      {0x91 + 3, "\x08", 0xA1, "the record of entry 8 has another ID"},
      {0xA1 + 12, big_endian(0xFFFFFFFF), 0xA1 + 16, "the file ends within an entry record"},
  };
  for (const DamageCase& entry : cases) {
    std::string bytes = example_bytes();
    bytes.replace(entry.at, entry.bytes.size(), entry.bytes);
    const LdfFile file = read_ldf(bytes);
    ASSERT_TRUE(file.damage) << entry.reason;
    EXPECT_EQ(file.damage->reason, entry.reason);
    EXPECT_EQ(file.damage->offset, entry.offset) << entry.reason;
  }
}

TEST(ReadLdf, AnyFlippedByte_IsReadWithoutHarm) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = example_bytes();
    for (int flips = 0; flips < 3; ++flips) bytes[random.below(bytes.size())] = static_cast<char>(random.below(256));
    const LdfFile file = read_ldf(bytes);
    ASSERT_LE(file.model.entries.size(), bytes.size() / 8);
  }
}

TEST(ReadLdf, StringWithAnInnerZero_EndsThereAndOneWithoutIsWhole) {
  DefinitionModel model;
  model.globals = {{"abcd", TypeBool, "", {}}};
  std::string bytes = write_ldf(model);
  bytes[128 + 4 + 4] = 'e';
  EXPECT_EQ(read_ldf(bytes).model.globals.at(0).name, "abcde");
  bytes[128 + 4 + 2] = '\0';
  EXPECT_EQ(read_ldf(bytes).model.globals.at(0).name, "ab");
}

TEST(ReadLdf, TypeCodeOver255_IsKeptModulo256) {
  DefinitionModel model;
  model.globals = {{"", TypeBool, "", {}}};
  std::string bytes = write_ldf(model);
  bytes[128 + 4 + 2] = '\x01';
  EXPECT_EQ(read_ldf(bytes).model.globals.at(0).type, TypeBool);
}

TEST(ReadLdf, IdListedTwice_TakesTheLaterPair) {
  DefinitionModel model;
  model.entries.resize(2);
  model.entries[0].id = model.entries[1].id = 3;
  model.entries[0].word = 1;
  model.entries[1].word = 2;
  const LdfFile file = read_ldf(write_ldf(model));
  ASSERT_EQ(file.model.entries.size(), 1U);
  EXPECT_EQ(file.model.entries[0].word, 2U);
}

TEST(ReadLdf, OverlappingRecords_AreDamage) {
  // Eight short records in a row, each with a text that runs over all those behind it to the end of the file.
  DefinitionModel model;
  model.entries.resize(8);
  for (std::uint32_t i = 0; i < 8; ++i) {
    model.entries[i].id = i;
  }
  std::string bytes = write_ldf(model);
  const std::size_t map = 128;
  const std::size_t base = bytes.size();
  for (std::uint32_t i = 0; i < 8; ++i) {
    bytes.replace(map + i * 8 + 4, 4, big_endian(static_cast<std::uint32_t>(base + i * 20)));
  }
  for (std::uint32_t i = 0; i < 8; ++i) {
    const auto rest = static_cast<std::uint32_t>((7 - i) * 20 + 4000);
    bytes += big_endian(i) + big_endian(0) + big_endian(0) + big_endian(0) + big_endian(rest);
  }
  bytes += std::string(4000, 'y') + std::string(12, '\0');
  const LdfFile file = read_ldf(bytes);
  ASSERT_TRUE(file.damage);
  EXPECT_EQ(file.damage->reason, "entry records overlap");
}

TEST(LooksLikeLdf, FirstFourBytes_Decide) {
  EXPECT_TRUE(looks_like_ldf(example_bytes()));
  EXPECT_FALSE(looks_like_ldf(".LD"));
  EXPECT_FALSE(looks_like_ldf("version: 1.0"));
}

}  // namespace
}  // namespace qzlog_compiler
