#include "definitions/file_blocks.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/support.h"
#include "tests/support/temp_dir.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr std::size_t kBlock = FileBlocks::kBlockSize;

class FileBlocksTest : public testing::Test {
 protected:
  ~FileBlocksTest() override { close(descriptor_); }

  void open_with(const std::string& content) {
    descriptor_ = open(folder_.write("file", content).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor_, 0);
    blocks_.emplace(descriptor_);
  }
  /// What is read, or nothing.
  std::optional<std::string> read(std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '?');
    if (!blocks_->read(offset, bytes.data(), size)) return std::nullopt;
    return bytes;
  }

  TempDir folder_;
  int descriptor_ = -1;
  std::optional<FileBlocks> blocks_;
};

TEST_F(FileBlocksTest, RandomPlacesAndRooms_AsInTheFile) {
  SeededRandom random;
  const std::string content = random.text(37 * kBlock + 123);
  open_with(content);
  for (int i = 0; i < rounds(20000); ++i) {
    if (random.one_in(50)) blocks_->set_room(random.below(60) * kBlock);
    if (random.one_in(200)) blocks_->forget();
    const std::size_t offset = random.below(content.size() + 100);
    const std::size_t size = random.below(random.one_in(10) ? 5 * kBlock : 40);
    const bool is_there = size == 0 || offset + size <= content.size();
    const std::optional<std::string> bytes = read(offset, size);
    ASSERT_EQ(bytes.has_value(), is_there) << offset << ' ' << size;
    if (!is_there || size == 0) continue;
    ASSERT_EQ(*bytes, content.substr(offset, size)) << offset << ' ' << size;
  }
}

TEST_F(FileBlocksTest, EmptyFile_HasNothing) {
  open_with("");
  EXPECT_EQ(read(0, 1), std::nullopt);
  EXPECT_TRUE(blocks_->has_bytes(0));
  EXPECT_FALSE(blocks_->has_bytes(1));
}

TEST_F(FileBlocksTest, OffsetsBeyondEveryFile_HaveNothing) {
  open_with("abc");
  EXPECT_EQ(read(std::uint64_t{1} << 63, 2), std::nullopt);
  EXPECT_EQ(read(UINT64_MAX - kBlock, 2), std::nullopt);
  EXPECT_FALSE(blocks_->has_bytes(UINT64_MAX));
}

TEST_F(FileBlocksTest, DescriptorThatCannotBeRead_HasNothing) {
  open_with("abc");
  FileBlocks none(-1);
  char byte = 0;
  EXPECT_FALSE(none.read(0, &byte, 1));
  EXPECT_FALSE(none.has_bytes(0));
}

TEST_F(FileBlocksTest, OverwrittenFile_IsReadAgainWhenWhatWasReadIsForgotten) {
  for (const std::size_t room : {std::size_t{0}, 8 * kBlock}) {
    open_with(std::string(3 * kBlock, 'a'));
    blocks_->set_room(room);
    ASSERT_EQ(read(kBlock, 3), "aaa");
    folder_.write("file", std::string(3 * kBlock, 'b'));
    EXPECT_EQ(read(kBlock + 5, 3), "aaa");
    blocks_->forget();
    EXPECT_EQ(read(kBlock, 3), "bbb");
    close(descriptor_);
  }
}

TEST_F(FileBlocksTest, FileThatIsCut_EndsThere) {
  open_with(std::string(3 * kBlock, 'a'));
  ASSERT_EQ(read(0, 1), "a");
  ASSERT_EQ(truncate(folder_.path("file").c_str(), kBlock + 10), 0);
  EXPECT_EQ(read(kBlock + 7, 3), "aaa");
  EXPECT_EQ(read(kBlock + 8, 3), std::nullopt);
  EXPECT_EQ(read(2 * kBlock, 1), std::nullopt);
}

TEST_F(FileBlocksTest, NoMemoryForBlocks_IsReadAllTheSame) {
  const std::string content = SeededRandom().text(4 * kBlock);
  open_with(content);
  {
    const MemoryOutage outage;
    blocks_->set_room(4 * kBlock);
  }
  EXPECT_EQ(read(kBlock - 2, 4), content.substr(kBlock - 2, 4));
  blocks_->set_room(4 * kBlock);
  std::string bytes(4, '?');
  bool was_read = false;
  {
    const MemoryOutage outage;
    was_read = blocks_->read(3 * kBlock - 2, bytes.data(), bytes.size());
  }
  EXPECT_TRUE(was_read);
  EXPECT_EQ(bytes, content.substr(3 * kBlock - 2, 4));
}

TEST_F(FileBlocksTest, BytesBehindAnOffset_AreReadOneAfterTheOther) {
  open_with("0123456789");
  BlockBytes bytes(*blocks_, 3);
  std::string text(4, '?');
  ASSERT_TRUE(bytes.read(text.data(), 4));
  EXPECT_EQ(text, "3456");
  EXPECT_TRUE(bytes.has_left(3));
  EXPECT_FALSE(bytes.has_left(4));
  EXPECT_FALSE(bytes.read(text.data(), 4));
  ASSERT_TRUE(bytes.read(text.data(), 3));
  EXPECT_EQ(text, "7896");
}

}  // namespace
}  // namespace qz_test
