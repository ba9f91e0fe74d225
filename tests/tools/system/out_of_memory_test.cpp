#include "tools/system/out_of_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <new>

#include "tools/system/signal_delay.h"

// The sanitizers' own operator new ends the process without asking the handler.
#ifndef QZLOG_SANITIZED

namespace {

constexpr std::size_t kMoreThanThereIs = SIZE_MAX / 4;
constexpr const char* kText = "^qzlog: error: out of memory\n$";

void take_too_much() { ::operator delete(::operator new(kMoreThanThereIs)); }

/// In a process of its own, which the tests below are run in.
void take_too_much_at_last() {
  qzlog_tool::end_where_memory_runs_out();
  take_too_much();
}

TEST(OutOfMemory, Allocation_EndsTheProcessWithATextAndStatus2) {
  EXPECT_EXIT(take_too_much_at_last(), testing::ExitedWithCode(2), kText);
}

TEST(OutOfMemory, AllocationThatMayFail_EndsTheProcessToo) {
  EXPECT_EXIT(
      {
        qzlog_tool::end_where_memory_runs_out();
        ::operator delete(::operator new(kMoreThanThereIs, std::nothrow));
      },
      testing::ExitedWithCode(2), kText);
}

template <class Guard>
void take_too_much_under_a_guard() {
  qzlog_tool::end_where_memory_runs_out();
  {
    const Guard outer;
    const Guard inner;
    EXPECT_THROW(take_too_much(), std::bad_alloc);
    EXPECT_EQ(::operator new(kMoreThanThereIs, std::nothrow), nullptr);
  }
  if (testing::Test::HasFailure()) ::_exit(1);
  take_too_much();
}

TEST(OutOfMemory, WhileSignalsWait_IsAnException) {
  EXPECT_EXIT(take_too_much_under_a_guard<qzlog_tool::SignalDelay>(), testing::ExitedWithCode(2), kText);
}

TEST(OutOfMemory, WhereItIsPartOfTheWork_IsAnException) {
  EXPECT_EXIT(take_too_much_under_a_guard<qzlog_tool::MemoryErrors>(), testing::ExitedWithCode(2), kText);
}

}  // namespace

#endif
