#include <gtest/gtest.h>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/support.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of counter_fixture.h

/// An open counter with the keys 1 and 2.
class ForkedCounter : public testing::Test {
 protected:
  ForkedCounter() {
    folder_.write("events.cnt", record_bytes(2026, 11, 1, 1, 5) + record_bytes(2026, 11, 2, 2, 5));
    counter_.OpenEntryCounterFile(folder_.path().c_str(), "events");
  }
  int remove_all() { return counter_.DeleteEntryElement(moment(2026, 1, 1), moment(2026, 12, 31)); }

  TempDir folder_;
  _qz_LOG_EntryCounter counter_;
};

// Where the parent goes on is its own position, which the child's operations do not move.
TEST_F(ForkedCounter, ChildCounted_ParentDeletesFromItsOwnPosition) {
  expect_child_succeeds([&] { return counter_.IncreaseCount(2026, 11, 2, 2); });
  EXPECT_EQ(remove_all(), 0);
  EXPECT_TRUE(same_records(folder_.read("events.cnt"), free_record() + free_record()));
}

TEST_F(ForkedCounter, ChildCountedBetweenTwoOperations_ParentDeletesFromItsOwnPosition) {
  EXPECT_EQ(counter_.IncreaseCount(2026, 11, 1, 1), 0);
  expect_child_succeeds([&] { return counter_.IncreaseCount(2026, 11, 2, 2); });
  EXPECT_EQ(remove_all(), 0);
  const std::string first = record_bytes(2026, 11, 1, 1, 6);
  EXPECT_TRUE(same_records(folder_.read("events.cnt"), first + free_record()));
}

TEST_F(ForkedCounter, ManyProcesses_EachCountsItsOwnKeys) {
  constexpr int kTimes = 200;
  expect_child_succeeds([&] {
    for (int i = 0; i < kTimes; ++i) counter_.IncreaseCount(2026, 11, 1, 1);
    return 0;
  });
  for (int i = 0; i < kTimes; ++i) counter_.IncreaseCount(2026, 11, 2, 2);
  EXPECT_TRUE(same_records(folder_.read("events.cnt"),
                           record_bytes(2026, 11, 1, 1, 5 + kTimes) + record_bytes(2026, 11, 2, 2, 5 + kTimes)));
}

}  // namespace
