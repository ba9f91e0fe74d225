#include "foundation/thread_blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "tests/foundation/after_thread_end.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

struct Large {
  unsigned char bytes[700];
};
using Blocks = ThreadBlocks<Large>;

/// A block whose every byte is written, so that the sanitizers see one that is too small or used twice.
void* take_filled(unsigned char filling) {
  void* const block = Blocks::take();
  EXPECT_NE(block, nullptr);
  return std::memset(block, filling, sizeof(Large));
}

bool is_filled(const void* block, unsigned char filling) {
  const auto* const bytes = static_cast<const unsigned char*>(block);
  return std::count(bytes, bytes + sizeof(Large), filling) == sizeof(Large);
}

/// How often memory is asked for while `count` blocks are taken and given back.
unsigned allocations_of_taking(unsigned count) {
  unsigned allocations = 0;
  std::vector<void*> blocks(count);
  for (void*& block : blocks) {
    const AllocationFailure failure(1);
    block = Blocks::take();
    if (block == nullptr) ++allocations;
  }
  for (void* const block : blocks) {
    if (block != nullptr) Blocks::give(block);
  }
  return allocations;
}

TEST(ThreadBlocks, GivenBack_TheLatestIsTakenNext) {
  if (Blocks::kMost == 0) GTEST_SKIP() << "nothing is kept under the address sanitizer";
  in_thread([] {
    Blocks::give(take_filled(1));  // begins to keep
    void* const block = take_filled(2);
    Blocks::give(block);
    EXPECT_EQ(allocations_of_taking(1), 0U);
    EXPECT_EQ(Blocks::take(), block);
    Blocks::give(block);
  });
}

TEST(ThreadBlocks, Kept_HasItsCacheLinesForItself) {
  if (Blocks::kMost == 0) GTEST_SKIP() << "nothing is kept under the address sanitizer";
  in_thread([] {
    Blocks::give(take_filled(0));
    std::vector<void*> blocks;
    for (unsigned i = 0; i < 40; ++i) blocks.push_back(take_filled(1));
    EXPECT_EQ(std::count_if(blocks.begin(), blocks.end(), is_apart), Blocks::kMost) << "as many as can be kept";
    for (void* const block : blocks) Blocks::give(block);
    void* const kept = Blocks::take();
    EXPECT_TRUE(is_apart(kept));
    Blocks::give(kept);
  });
}

TEST(ThreadBlocks, AllInUse_Different) {
  in_thread([] {
    std::vector<void*> blocks;
    for (unsigned char i = 0; i < 50; ++i) blocks.push_back(take_filled(i));
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), 50U);
    for (unsigned char i = 0; i < 50; ++i) EXPECT_TRUE(is_filled(blocks[i], i));
    for (void* const block : blocks) Blocks::give(block);
  });
}

TEST(ThreadBlocks, MoreGivenBackThanAreKept_OnlyTheMostKept) {
  in_thread([] {
    Blocks::give(take_filled(0));
    std::vector<void*> blocks;
    for (unsigned i = 0; i < 40; ++i) blocks.push_back(take_filled(1));
    for (void* const block : blocks) Blocks::give(block);
    EXPECT_EQ(allocations_of_taking(40), 40U - Blocks::kMost);
  });
}

TEST(ThreadBlocks, FirstGivenBackWithoutMemory_FreedAndKeptLater) {
  in_thread([] {
    void* const first = take_filled(1);
    void* const second = take_filled(2);
    {
      const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
      Blocks::give(first);
    }
    EXPECT_EQ(allocations_of_taking(1), 1U);
    Blocks::give(second);
    Blocks::give(take_filled(3));
    EXPECT_EQ(allocations_of_taking(1), Blocks::kMost == 0 ? 1U : 0U);
  });
}

TEST(ThreadBlocks, NoMemory_NullUnlessOneIsKept) {
  in_thread([] {
    EXPECT_EQ(allocations_of_taking(3), 3U);
    void* const block = Blocks::take();
    EXPECT_NE(block, nullptr);
    Blocks::give(block);
  });
}

TEST(ThreadBlocks, ThreadEndsWithBlocksKept_NothingLeaks) {
  for (int i = 0; i < 20; ++i) {
    in_thread([] {
      std::vector<void*> blocks;
      for (unsigned char filling = 0; filling < 20; ++filling) blocks.push_back(take_filled(filling));
      for (void* const block : blocks) Blocks::give(block);
    });
  }
  in_thread([] { EXPECT_EQ(allocations_of_taking(1), 1U) << "another thread's blocks"; });
}

TEST(ThreadBlocks, TakenAndGivenAfterTheThreadsEnd_FreedAtOnce) {
  void* left = nullptr;
  AfterThreadEnd after([&] {
    Blocks::give(left);
    Blocks::give(take_filled(7));
    left = take_filled(8);
  });
  in_thread([&] {
    after.arm();
    left = take_filled(1);
    Blocks::give(take_filled(2));
    Blocks::give(take_filled(3));
  });
  EXPECT_TRUE(is_filled(left, 8));
  Blocks::give(left);
}

TEST(ThreadBlocks, GivenBackByOtherThreads_EveryBlockOnePiece) {
  constexpr std::size_t kThreads = 6;
  std::array<void*, 16> places = {};
  std::array<std::mutex, 16> mutexes;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      for (std::size_t i = 0; i < 3000; ++i) {
        const std::size_t place = (i * 7 + number) % places.size();
        void* block = take_filled(static_cast<unsigned char>(place));
        {
          const std::lock_guard<std::mutex> lock(mutexes[place]);
          std::swap(block, places[place]);
        }
        if (block == nullptr) continue;
        wrong += is_filled(block, static_cast<unsigned char>(place)) ? 0 : 1;
        Blocks::give(block);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  for (void* const block : places) Blocks::give(block);
}

}  // namespace
