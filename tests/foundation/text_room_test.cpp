#include "foundation/text_room.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/support.h"

namespace {

using qzlog::TextRoom;

bool is_inside(TextRoom& room) {
  const auto* const begin = reinterpret_cast<const char*>(&room);
  return room.data() >= begin && room.data() < begin + sizeof(room);
}

TEST(TextRoom, UpToTheInlineSize_InsideTheObject) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, TextRoom::kInlineSize}) {
    TextRoom room(size);
    EXPECT_TRUE(is_inside(room)) << size;
    EXPECT_EQ(room.size(), static_cast<int>(TextRoom::kInlineSize)) << size;
    std::memset(room.data(), 'x', TextRoom::kInlineSize);
  }
}

TEST(TextRoom, MoreThanTheInlineSize_ThatManyBytesOfMemory) {
  TextRoom room(TextRoom::kInlineSize + 1);
  EXPECT_FALSE(is_inside(room));
  EXPECT_EQ(room.size(), static_cast<int>(TextRoom::kInlineSize) + 1);
  std::memset(room.data(), 'x', TextRoom::kInlineSize + 1);
}

TEST(TextRoom, NoMemory_MemoryAlloc) {
  EXPECT_EQ(qz_test::FailEveryAllocation([] { const TextRoom room(TextRoom::kInlineSize + 1); }, [] {}), 1U);
}

}  // namespace
