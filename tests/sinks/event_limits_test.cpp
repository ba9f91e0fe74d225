#include "sinks/event_limits.h"

#include <map>

#include "tests/sinks/sinks_fixture.h"
#include "tests/support/child_process.h"

namespace {

using namespace qz_test;
using qzlog::EventLimits;
using Which = EventLimits::Which;

std::timespec at(std::time_t second) { return {second, 0}; }

TEST(EventLimits, MoreThanTheLimit_AreHeldBackUntilTheSecondIsOver) {
  EventLimits limits(2);
  EXPECT_TRUE(limits.admit(1, 3, at(10)));
  EXPECT_TRUE(limits.admit(1, 3, at(10)));
  EXPECT_FALSE(limits.admit(1, 3, at(10)));
  EXPECT_FALSE(limits.admit(1, 7, at(10)));
  EXPECT_FALSE(limits.admit(1, 5, at(10)));
  EXPECT_TRUE(limits.admit(2, 3, at(10)));
  EXPECT_FALSE(limits.is_due(at(10)));
  EXPECT_TRUE(limits.is_due(at(11)));
  EXPECT_TRUE(limits.is_due(at(9)));
  EXPECT_TRUE(limits.admit(1, 3, at(11)));
  EXPECT_TRUE(limits.rows(Which::kOfOtherSeconds, at(10)).empty());
  EXPECT_TRUE(limits.has_held());
  const auto rows = limits.rows(Which::kOfOtherSeconds, at(11));
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].id, 1U);
  EXPECT_EQ(rows[0].level, 7U);
  EXPECT_EQ(rows[0].count, 3U);
  EXPECT_EQ(rows[0].since.tv_sec, 10);
  limits.take(rows[0]);
  EXPECT_FALSE(limits.has_held());
  EXPECT_TRUE(limits.rows(Which::kAll, at(11)).empty());
}

TEST(EventLimits, ManyEvents_AreKnownOneByOne) {
  EventLimits limits(1);
  unsigned limited = 0;
  for (unsigned id = 0; id < 1024; ++id) {
    EXPECT_TRUE(limits.admit(id, 3, at(10)));
    if (!limits.admit(id, 3, at(10))) ++limited;
  }
  EXPECT_GT(limited, 900U);
  unsigned held = 0;
  for (const auto& row : limits.rows(Which::kAll, at(10))) held += row.count;
  EXPECT_EQ(held, limited);
}

/// Nothing is forgotten of what was held back, however many events come by.
TEST(EventLimits, MoreEventsThanItKnows_PassAndForgetNothing) {
  EventLimits limits(1);
  limits.admit(7, 3, at(10));
  EXPECT_FALSE(limits.admit(7, 3, at(10)));
  for (unsigned id = 100; id < 100'000; ++id)
    EXPECT_TRUE(limits.admit(id, 3, at(static_cast<std::time_t>(11 + id / 5000))));
  const auto rows = limits.rows(Which::kAll, at(99));
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].id, 7U);
}

TEST(EventLimits, RandomEntries_AreThoseOfThePlainCount) {
  SeededRandom random;
  for (int round = 0; round < rounds(40); ++round) {
    const auto most = static_cast<unsigned>(random.between(1, 5));
    EventLimits limits(most);
    std::map<unsigned, unsigned> passed;
    std::map<unsigned, unsigned> held;
    std::time_t second = 100;
    for (int i = 0; i < 1000; ++i) {
      if (random.one_in(20)) {
        second += random.between(-3, 3);
        passed.clear();
      }
      if (random.one_in(50)) {
        for (const auto& row : limits.rows(Which::kAll, at(second))) {
          EXPECT_EQ(held[row.id], row.count);
          limits.take(row);
          held.erase(row.id);
        }
        std::erase_if(held, [](const auto& each) { return each.second == 0; });
        EXPECT_TRUE(held.empty());
      }
      const auto id = static_cast<unsigned>(random.below(12));
      const bool is_within = passed[id] < most;
      // An event that did not come meanwhile still has its count when the clock comes back to its second.
      const bool admitted = limits.admit(id, 3, at(second));
      if (admitted && is_within) ++passed[id];
      if (!admitted) ++held[id];
      EXPECT_TRUE(is_within || !admitted);
    }
    unsigned total = 0;
    for (const auto& row : limits.rows(Which::kAll, at(second))) total += row.count;
    unsigned plain = 0;
    for (const auto& [id, count] : held) plain += count;
    EXPECT_EQ(total, plain);
  }
}

TEST(EventLimits, ForkedProcess_HasNothingOfItsParentsToTell) {
  EventLimits limits(1);
  limits.admit(1, 3, at(10));
  EXPECT_FALSE(limits.admit(1, 3, at(10)));
  expect_child_succeeds([&] {
    if (!limits.rows(Which::kAll, at(11)).empty()) return 1;
    limits.admit(1, 3, at(12));
    if (limits.admit(1, 3, at(12))) return 2;
    return limits.rows(Which::kAll, at(13)).at(0).count == 1 ? 0 : 3;
  });
  EXPECT_EQ(limits.rows(Which::kAll, at(11)).size(), 1U);
}

}  // namespace
