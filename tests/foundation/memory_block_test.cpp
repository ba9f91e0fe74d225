#include "foundation/memory_block.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

struct Block {
  void* memory;
  std::size_t size_bytes;
  bool apart;
};

/// Blocks of many sizes, those that stand apart between the others, each filled with bytes of its own.
std::vector<Block> make_blocks() {
  std::vector<Block> blocks;
  for (std::size_t size = 1; size <= 200; ++size) {
    for (const bool apart : {false, true, false}) {
      blocks.push_back({make_block(size, apart), size, apart});
      std::memset(blocks.back().memory, static_cast<int>(size), size);
    }
  }
  return blocks;
}

void destroy(const std::vector<Block>& blocks) {
  for (const Block& block : blocks) destroy_block(block.memory);
}

std::set<std::uintptr_t> lines_of(const Block& block) {
  const auto begin = reinterpret_cast<std::uintptr_t>(block.memory);
  std::set<std::uintptr_t> lines;
  for (std::size_t i = 0; i < block.size_bytes; ++i) lines.insert((begin + i) / kCacheLine);
  return lines;
}

TEST(MemoryBlock, AnySize_AlignedAndItsOwn) {
  const std::vector<Block> blocks = make_blocks();
  for (const Block& block : blocks) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.memory) % alignof(std::max_align_t), 0U);
    const auto* const bytes = static_cast<const unsigned char*>(block.memory);
    for (std::size_t i = 0; i < block.size_bytes; ++i) ASSERT_EQ(bytes[i], block.size_bytes);
  }
  destroy(blocks);
}

TEST(MemoryBlock, Apart_SharesNoLineWithOthers) {
  if (QZLOG_HAS_ADDRESS_SANITIZER) GTEST_SKIP() << "no block stands apart under the address sanitizer";
  const std::vector<Block> blocks = make_blocks();
  std::set<std::uintptr_t> lines_apart;
  for (const Block& block : blocks) {
    EXPECT_EQ(is_apart(block.memory), block.apart);
    if (!block.apart) continue;
    for (const std::uintptr_t line : lines_of(block)) EXPECT_TRUE(lines_apart.insert(line).second);
  }
  for (const Block& block : blocks) {
    if (block.apart) continue;
    for (const std::uintptr_t line : lines_of(block)) EXPECT_EQ(lines_apart.count(line), 0U);
  }
  destroy(blocks);
}

TEST(MemoryBlock, NoMemory_Null) {
  for (const bool apart : {false, true}) {
    void* block = nullptr;
    {
      const AllocationFailure failure(1);
      block = make_block(100, apart);
    }
    EXPECT_EQ(block, nullptr);
  }
}

}  // namespace
