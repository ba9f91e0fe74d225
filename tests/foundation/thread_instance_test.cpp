#include "foundation/thread_instance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/foundation/after_thread_end.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

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
  in_thread([] { EXPECT_EQ(qzlog::ThreadInstance<Counting<1>>::find(), nullptr); });
  EXPECT_EQ(made, 0);
}

TEST_F(ThreadInstance, UsedOften_OneUntilTheThreadEnds) {
  in_thread([] {
    for (int i = 1; i <= 5; ++i) {
      EXPECT_EQ(with_thread_instance<Counting<2>>([](auto& mine) { return ++mine.calls; }), i);
    }
    EXPECT_EQ(qzlog::ThreadInstance<Counting<2>>::find()->calls, 5);
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
      EXPECT_EQ(qzlog::ThreadInstance<Counting<5>>::find()->calls, 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(made, kThreads);
  EXPECT_EQ(alive, 0);
}

TEST_F(ThreadInstance, ReferenceReturned_NotCopied) {
  in_thread([] {
    auto& mine = with_thread_instance<Counting<6>>([](auto& instance) -> auto& { return instance; });
    EXPECT_EQ(&mine, qzlog::ThreadInstance<Counting<6>>::find());
  });
}

TEST_F(ThreadInstance, UseThrows_ExceptionAndTheInstanceStays) {
  in_thread([] {
    EXPECT_EQ(thrown_by([] { with_thread_instance<Counting<7>>([](auto&) { throw QZX_logging_misc("mine", 0); }); }),
              thrown<QZX_logging_misc>("mine"));
    EXPECT_NE(qzlog::ThreadInstance<Counting<7>>::find(), nullptr);
  });
  EXPECT_EQ(made, 1);
}

TEST_F(ThreadInstance, NoMemory_MemoryAllocAndMadeByTheNextUse) {
  in_thread([] {
    const auto use = [] { with_thread_instance<Counting<8>>([](auto& mine) { ++mine.calls; }); };
    EXPECT_EQ(FailEveryAllocation(use, [] { EXPECT_EQ(qzlog::ThreadInstance<Counting<8>>::find(), nullptr); }), 1U);
    EXPECT_EQ(qzlog::ThreadInstance<Counting<8>>::find()->calls, 1);
    EXPECT_EQ(thrown_by([] { with_thread_instance<Counting<8>>([](auto&) { throw std::bad_alloc(); }); }), kNoMemory);
  });
  EXPECT_EQ(alive, 0);
}

struct UseInDestructor {
  ~UseInDestructor() {
    if (calls != nullptr) *calls = with_thread_instance<Counting<9>>([](auto& mine) { return ++mine.calls; });
  }
  int* calls = nullptr;
};

TEST_F(ThreadInstance, UsedInDestructorsOfTheThread_StillThere) {
  int calls = 0;
  in_thread([&] {
    static thread_local UseInDestructor in_destructor;
    in_destructor.calls = &calls;
    with_thread_instance<Counting<9>>([](auto& mine) { ++mine.calls; });
  });
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(made, 1);
  EXPECT_EQ(alive, 0);
}

TEST_F(ThreadInstance, UsedAfterItsEnd_OneOfItsOwnPerCall) {
  AfterThreadEnd after([] {
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(qzlog::ThreadInstance<Counting<10>>::find(), nullptr);
    for (int i = 0; i < 2; ++i) {
      with_thread_instance<Counting<10>>([](auto& mine) { EXPECT_EQ(++mine.calls, 1); });
      with_thread_instance<Counting<11>>([](auto& mine) { EXPECT_EQ(++mine.calls, 1); });  // used for the first time
      EXPECT_EQ(qzlog::ThreadInstance<Counting<10>>::find(), nullptr);
    }
  });
  in_thread([&] {
    with_thread_instance<Counting<10>>([](auto& mine) { ++mine.calls; });
    after.arm();
  });
  EXPECT_EQ(made, 5);
  EXPECT_EQ(alive, 0);
}

/// Finds itself while it is destroyed, and the others that are not yet.
struct Looking {
  ~Looking() {
    found_itself = qzlog::ThreadInstance<Looking>::find() == this;
    found_earlier = qzlog::ThreadInstance<Counting<12>>::find() != nullptr;
  }
  static inline bool found_itself = false;
  static inline bool found_earlier = false;
};

TEST_F(ThreadInstance, Destroyed_TheLatestFirstAndFoundMeanwhile) {
  in_thread([] {
    with_thread_instance<Counting<12>>([](auto&) {});
    with_thread_instance<Looking>([](auto&) {});
  });
  EXPECT_TRUE(Looking::found_itself);
  EXPECT_TRUE(Looking::found_earlier);
  EXPECT_EQ(alive, 0);
}

}  // namespace
