#include "tools/compiler/file/entry_map.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

std::string example() {
  return compile_source(
             "version: \"1.0\"\nentries:\n  - {id: 7, name: A, message: A}\n  - {id: 9, name: B, message: B}\n", "", {})
      .bytes;
}

TEST(EntryMap, Pairs_AsTheFileListsThem) {
  const std::vector<EntryMapPair> pairs = read_entry_map(example());
  ASSERT_EQ(pairs.size(), 2U);
  EXPECT_EQ(pairs[0].id, 7U);
  EXPECT_EQ(pairs[1].id, 9U);
  EXPECT_GT(pairs[1].record_offset, pairs[0].record_offset);
}

TEST(EntryMap, ShortFile_GivesThePairsThatItHas) {
  const std::string bytes = example();
  const std::size_t map = 128;
  EXPECT_EQ(read_entry_map(bytes.substr(0, map + 15)).size(), 1U);
  EXPECT_EQ(read_entry_map(bytes.substr(0, map)).size(), 0U);
  EXPECT_EQ(read_entry_map(bytes.substr(0, 127)).size(), 0U);
  EXPECT_EQ(read_entry_map("").size(), 0U);
}

TEST(EntryMap, MapBeyondTheFile_IsEmpty) {
  std::string bytes = example();
  bytes.replace(56, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(read_entry_map(bytes).size(), 0U);
}

TEST(EntryMap, AppendedPairs_AreReadOnceTheHeaderSaysSo) {
  std::string bytes = example();
  const std::vector<EntryMapPair> pairs = read_entry_map(bytes);
  const std::size_t offset = append_map_pairs(bytes, {pairs[1], pairs[0]});
  EXPECT_EQ(read_ldf(bytes).model.entries[0].id, 7U);
  set_entry_map(bytes, offset, 1);
  const LdfFile file = read_ldf(bytes);
  EXPECT_FALSE(file.damage);
  ASSERT_EQ(file.model.entries.size(), 1U);
  EXPECT_EQ(file.model.entries[0].id, 9U);
}

TEST(EntryMap, GlobalsLeftOut_TheRestStays) {
  std::string bytes = compile_source(
                          "version: \"1.0\"\nglobals: [{name: SITE, type: Char32}]\nentries: [{id: 7, name: A, "
                          "message: A}]\n",
                          "", {})
                          .bytes;
  ASSERT_EQ(read_ldf(bytes).model.globals.size(), 1U);
  leave_out_globals(bytes);
  const LdfFile file = read_ldf(bytes);
  EXPECT_FALSE(file.damage);
  EXPECT_TRUE(file.model.globals.empty());
  ASSERT_EQ(file.model.entries.size(), 1U);
  EXPECT_EQ(file.model.entries[0].id, 7U);
}

}  // namespace
}  // namespace qzlog_compiler
