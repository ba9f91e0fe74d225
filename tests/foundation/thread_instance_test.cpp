#include "foundation/thread_instance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "tests/support/support.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

void in_thread(const std::function<void()>& work) { std::thread(work).join(); }

std::atomic<int> made{0};
std::atomic<int> alive{0};

template <int number>
struct Counting {
  Counting() {
    ++made;
    ++alive;
  }
  ~Counting() { --alive; }
  int calls = 0;
};

class ThreadInstance : public testing::Test {
 protected:
  ThreadInstance() { made = alive = 0; }
};

TEST_F(ThreadInstance, BeforeTheFirstUse_Null) {
  in_thread([] {
    EXPECT_EQ(qz_ThreadInstance<Counting<1>>::find(), nullptr);
    EXPECT_FALSE(qz_ThreadInstance<Counting<1>>::is_over());
  });
  EXPECT_EQ(made, 0);
}

TEST_F(ThreadInstance, UsedOften_OneUntilTheThreadEnds) {
  in_thread([] {
    for (int i = 1; i <= 5; ++i) {
      EXPECT_EQ(with_thread_instance<Counting<2>>([](auto& mine) { return ++mine.calls; }), i);
    }
    EXPECT_EQ(qz_ThreadInstance<Counting<2>>::find()->calls, 5);
    EXPECT_EQ(alive, 1);
  });
  EXPECT_EQ(made, 1);
  EXPECT_EQ(alive, 0);
}

TEST_F(ThreadInstance, DifferentTypes_OneEach) {
  in_thread([] {
    with_thread_instance<Counting<3>>([](auto& mine) { mine.calls = 3; });
    with_thread_instance<Counting<4>>([](auto& mine) { EXPECT_EQ(mine.calls, 0); });
    EXPECT_EQ(alive, 2);
  });
  EXPECT_EQ(alive, 0);
}

TEST_F(ThreadInstance, ManyThreads_OneEach) {
  constexpr int kThreads = 16;
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      with_thread_instance<Counting<5>>([](auto& mine) { ++mine.calls; });
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      EXPECT_EQ(qz_ThreadInstance<Counting<5>>::find()->calls, 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(made, kThreads);
  EXPECT_EQ(alive, 0);
}

TEST_F(ThreadInstance, ReferenceReturned_NotCopied) {
  in_thread([] {
    auto& mine = with_thread_instance<Counting<6>>([](auto& instance) -> auto& { return instance; });
    EXPECT_EQ(&mine, qz_ThreadInstance<Counting<6>>::find());
  });
}

TEST_F(ThreadInstance, UseThrows_ExceptionAndTheInstanceStays) {
  in_thread([] {
    EXPECT_TRUE(ThrowsExactly<QZX_logging_misc>(
        [] { with_thread_instance<Counting<7>>([](auto&) { throw QZX_logging_misc("mine", 0); }); }, "mine"));
    EXPECT_NE(qz_ThreadInstance<Counting<7>>::find(), nullptr);
  });
  EXPECT_EQ(made, 1);
}

TEST_F(ThreadInstance, NoMemory_MemoryAllocAndMadeByTheNextUse) {
  in_thread([] {
    const auto use = [] { with_thread_instance<Counting<8>>([](auto& mine) { ++mine.calls; }); };
    EXPECT_EQ(FailEveryAllocation(use, [] { EXPECT_EQ(qz_ThreadInstance<Counting<8>>::find(), nullptr); }), 1U);
    EXPECT_EQ(qz_ThreadInstance<Counting<8>>::find()->calls, 1);
    EXPECT_TRUE(ThrowsMemoryAlloc([] { with_thread_instance<Counting<8>>([](auto&) { throw std::bad_alloc(); }); }));
  });
  EXPECT_EQ(alive, 0);
}

struct UseAtTheEnd {
  ~UseAtTheEnd() {
    if (alive_then == nullptr) return;
    EXPECT_EQ(qz_ThreadInstance<Counting<9>>::find(), nullptr);
    EXPECT_TRUE(qz_ThreadInstance<Counting<9>>::is_over());
    for (int i = 0; i < 2; ++i) {
      with_thread_instance<Counting<9>>([](auto& mine) { EXPECT_EQ(++mine.calls, 1); });
      EXPECT_EQ(qz_ThreadInstance<Counting<9>>::find(), nullptr);
    }
    *alive_then = alive;
  }
  int* alive_then = nullptr;
};

TEST_F(ThreadInstance, UsedInDestructorsAfterItsEnd_OneOfItsOwnPerCall) {
  int alive_then = -1;
  in_thread([&] {
    static thread_local UseAtTheEnd at_end;  // made before the instance, so destroyed after it
    at_end.alive_then = &alive_then;
    with_thread_instance<Counting<9>>([](auto& mine) { ++mine.calls; });
  });
  EXPECT_EQ(alive_then, 0);
  EXPECT_EQ(made, 3);
}

}  // namespace
