#include "tools/compiler/file/ldf_records.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/example_model.h"

namespace qzlog_compiler {
namespace {

TEST(ReadLdfHeader, ExampleFile_GivesCountsAndOffsets) {
  const std::string bytes = example_bytes();
  LdfCursor cursor(bytes, 0);
  const LdfHeader header = read_ldf_header(cursor);
  EXPECT_EQ(header.version(), "2.5");
  EXPECT_EQ(header.global_count, 1U);
  EXPECT_EQ(header.global_offset, 0x80U);
  EXPECT_EQ(header.entry_count, 2U);
  EXPECT_EQ(header.entry_map_offset, 0x91U);
  EXPECT_EQ(cursor.offset(), 128U);
}

TEST(ReadLdfHeader, VersionOfEightBytes_IsWhole) {
  std::string bytes = example_bytes();
  bytes.replace(16, 8, "12345.78");
  LdfCursor cursor(bytes, 0);
  EXPECT_EQ(read_ldf_header(cursor).version(), "12345.78");
}

TEST(ReadLdfEntry, ExampleRecord_HasEveryOffset) {
  const std::string bytes = example_bytes();
  LdfCursor cursor(bytes, 0xA1);
  const LdfEntryRecord entry = read_ldf_entry(cursor);
  EXPECT_FALSE(entry.cut);
  EXPECT_EQ(entry.size, 0xF0U - 0xA1U);
  EXPECT_EQ(entry.message_id.offset, 0xADU);
  ASSERT_EQ(entry.attributes.size(), 1U);
  EXPECT_EQ(entry.attributes[0].offset, 0xC7U);
  EXPECT_EQ(entry.attributes[0].redirect.text(), "r");
  ASSERT_EQ(entry.selector_messages.size(), 1U);
  EXPECT_EQ(entry.selector_messages[0].text.text(), "é");
}

TEST(ReadLdfEntry, WithSinks_ItemsGoThereInsteadOfIntoTheRecord) {
  const std::string bytes = example_bytes();
  std::vector<std::size_t> offsets;
  const LdfItemSinks sinks{[&](const LdfAttributeRecord& item) { offsets.push_back(item.offset); },
                           [&](const LdfSelectorRecord& item) { offsets.push_back(item.offset); }};
  LdfCursor cursor(bytes, 0xA1);
  const LdfEntryRecord entry = read_ldf_entry(cursor, sinks);
  EXPECT_EQ(offsets, (std::vector<std::size_t>{0xC7, 0xDB}));
  EXPECT_EQ(entry.size, 0xF0U - 0xA1U);
  EXPECT_EQ(entry.attribute_count, 1U);
  EXPECT_EQ(entry.selector_message_count, 1U);
  EXPECT_TRUE(entry.attributes.empty());
  EXPECT_TRUE(entry.selector_messages.empty());
  LdfCursor again(bytes, 0xA1);
  EXPECT_EQ(read_ldf_entry(again, {}).size, entry.size);
}

TEST(ReadLdfEntry, EveryPrefix_GivesWhatStandsBeforeTheCut) {
  const std::string bytes = example_bytes();
  for (std::size_t size = 0xA1; size < 0xF0; ++size) {
    LdfCursor cursor(std::string_view(bytes).substr(0, size), 0xA1);
    const LdfEntryRecord entry = read_ldf_entry(cursor);
    ASSERT_TRUE(entry.cut) << size;
    ASSERT_EQ(entry.cut->offset, 0xA1 + entry.size) << size;
    EXPECT_EQ(entry.has_numbers(), size >= 0xAD) << size;
    EXPECT_EQ(entry.message_id.whole, size >= 0xB3) << size;
    EXPECT_EQ(entry.attribute_count.has_value(), size >= 0xC7) << size;
    EXPECT_EQ(entry.attributes.size(), size >= 0xD7 ? 1U : 0U) << size;
    EXPECT_EQ(entry.selector_messages.size(), 0U) << size;
  }
}

}  // namespace
}  // namespace qzlog_compiler
