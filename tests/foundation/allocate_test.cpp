#include "foundation/allocate.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;

struct Pair {
  int first;
  int second;
};

TEST(QzNew, Arguments_ReachTheConstructor) {
  const std::unique_ptr<Pair> pair(new_object<Pair>(Pair{3, 4}));
  EXPECT_EQ(pair->first, 3);
  EXPECT_EQ(pair->second, 4);
}

TEST(QzNew, NoMemory_ThrowsMemoryAllocWithoutText) {
  EXPECT_EQ(FailEveryAllocation([] { delete new_object<Pair>(Pair{1, 2}); }), 1U);
}

TEST(QzNewArray, Count_GivesThatManyElements) {
  const std::unique_ptr<int[]> numbers(new_array<int>(1000));
  for (int i = 0; i < 1000; ++i) numbers[static_cast<std::size_t>(i)] = i;
  EXPECT_EQ(numbers[999], 999);
}

TEST(QzNewArray, NoMemory_ThrowsMemoryAllocWithoutText) {
  EXPECT_EQ(FailEveryAllocation([] { delete[] new_array<char>(100); }), 1U);
}

}  // namespace
