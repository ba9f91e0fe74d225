#ifndef QZLOG_TESTS_SUPPORT_ALLOCATION_FAILURE_H
#define QZLOG_TESTS_SUPPORT_ALLOCATION_FAILURE_H

#include <gtest/gtest.h>

#include <string>

#include "tests/support/thrown_by.h"

namespace qz_test {

/// While it lives, the `nth` allocation (from 1) of the thread that made it fails: operator new throws std::bad_alloc,
/// its nothrow forms and strdup return null. What malloc gives directly, ICU's memory for one, is not counted.
/// One at a time in a thread. Make no assertion meanwhile: it would allocate too.
class AllocationFailure {
 public:
  enum Reach { kOnce, kFromThenOn };

  explicit AllocationFailure(unsigned nth, Reach reach = kOnce);
  ~AllocationFailure();
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;

  /// Whether an allocation has failed by now.
  bool happened() const;
};

/// While it lives, no thread gets memory in these ways. One at a time in a process, under the same condition.
class MemoryOutage {
 public:
  MemoryOutage();
  ~MemoryOutage();
  MemoryOutage(const MemoryOutage&) = delete;
  MemoryOutage& operator=(const MemoryOutage&) = delete;
};

/// Runs `operation` with its first, then its second, ... allocation failing until none is left to fail, and returns how
/// many there were. Each failing run must throw QZX_memory_alloc; `check` is called after each, with memory available.
template <typename Operation, typename Check>
unsigned FailEveryAllocation(Operation&& operation, Check&& check) {
  constexpr unsigned kTooMany = 100000;
  for (unsigned nth = 1; nth < kTooMany; ++nth) {
    bool happened = false;
    const std::string thrown = thrown_by([&] {
      const AllocationFailure failure(nth);
      struct Note {
        ~Note() { happened = failure.happened(); }
        const AllocationFailure& failure;
        bool& happened;
      } note{failure, happened};
      operation();
    });
    if (!happened) return nth - 1;
    EXPECT_EQ(thrown, kNoMemory) << "at allocation " << nth;
    check();
  }
  ADD_FAILURE() << "the operation never stops allocating";
  return kTooMany;
}

template <typename Operation>
unsigned FailEveryAllocation(Operation&& operation) {
  return FailEveryAllocation(operation, [] {});
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_ALLOCATION_FAILURE_H
