#include "definitions/entry_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;
using qz_test::SeededRandom;

constexpr unsigned kFirstSize = 23;
constexpr unsigned kMany = 100000;

/// The most IDs that share a bucket.
unsigned longest_chain(const qzlog::EntryIndex& index) {
  unsigned longest = 0;
  for (unsigned i = 0; i < index.size; ++i) {
    unsigned length = 0;
    for (const auto* node = index.slots[i].head; node != nullptr; node = node->next) ++length;
    longest = std::max(longest, length);
  }
  return longest;
}

std::size_t count_of(const qzlog::EntryIndex& index) {
  std::size_t count = 0;
  qz_MISC_hash_tbl_walker<unsigned, _qz_LOG_log_definition_file_info_holder> walker(index);
  while (walker._next_key() != nullptr) ++count;
  return count;
}

class EntryIndex : public testing::Test {
 protected:
  void fill(unsigned count, unsigned step) {
    index_.reserve(count);
    for (unsigned i = 0; i < count; ++i) index_.put(i * step, {false, i + 1});
  }
  void expect_filled(unsigned count, unsigned step) {
    for (unsigned i = 0; i < count; ++i) {
      const auto* const place = index_.find(i * step);
      ASSERT_NE(place, nullptr) << i;
      ASSERT_EQ(place->offset, i + 1) << i;
    }
  }

  qzlog::EntryIndex index_{kFirstSize};
};

TEST_F(EntryIndex, Empty_FindsNothing) {
  for (const unsigned id : {0U, 1U, 23U, 0xFFFFFFFFU}) EXPECT_EQ(index_.find(id), nullptr) << id;
  index_.reserve(0);
  EXPECT_EQ(index_.size, kFirstSize);
  EXPECT_EQ(index_.find(0), nullptr);
}

TEST_F(EntryIndex, IdsInSteps_FoundWithinShortChains) {
  // Files number their entries in steps.
  for (const unsigned step : {1U, 2U, 10U, 100U, 1000U, 1U << 10, 1U << 12, 65535U, 65537U}) {
    index_.clear();
    fill(kMany, step);
    EXPECT_LE(longest_chain(index_), 16U) << step;
    expect_filled(kMany, step);
    EXPECT_EQ(index_.find(kMany * step), nullptr) << step;
  }
}

TEST_F(EntryIndex, IdsInStepsOfTheNumberOfBuckets_FoundWithinShortChains) {
  constexpr unsigned kCount = 5000;
  const unsigned buckets = QZ_recommended_hash_size(kCount);
  for (const unsigned step : {buckets, 2 * buckets, buckets + 1, buckets - 1}) {
    index_.clear();
    fill(kCount, step);
    EXPECT_LE(longest_chain(index_), 16U) << step;
    expect_filled(kCount, step);
  }
}

TEST_F(EntryIndex, IdsInStepsOf65536_FoundWithinShortChains) {
  // There are no more of them.
  fill(1U << 16, 1U << 16);
  EXPECT_LE(longest_chain(index_), 16U);
  expect_filled(1U << 16, 1U << 16);
  EXPECT_EQ(index_.find(1), nullptr);
}

TEST_F(EntryIndex, IdsWithoutRoomReserved_FoundAllTheSame) {
  for (unsigned i = 0; i < 3000; ++i) index_.put(i * 7, {true, i + 1});
  EXPECT_EQ(index_.size, kFirstSize);
  expect_filled(3000, 7);
  EXPECT_TRUE(index_.find(0)->is_aux);
}

TEST_F(EntryIndex, RoomReservedForMore_FormerIdsStay) {
  fill(100, 3);
  index_.reserve(kMany);
  EXPECT_GE(index_.size, kMany);
  EXPECT_EQ(count_of(index_), 100U);
  expect_filled(100, 3);
  EXPECT_EQ(index_.find(301), nullptr);
}

TEST_F(EntryIndex, IdPutAgain_LastPlaceAndOneEntry) {
  index_.put(5, {false, 10});
  index_.put(5, {true, 20});
  EXPECT_EQ(index_.find(5)->offset, 20U);
  EXPECT_TRUE(index_.find(5)->is_aux);
  EXPECT_EQ(count_of(index_), 1U);
}

TEST_F(EntryIndex, SameIdsPutOverAndOver_NoRoomForMoreThanThereAre) {
  for (unsigned i = 0; i < kMany; ++i) index_.put(i % 10, {true, i});
  index_.reserve(10);
  EXPECT_EQ(index_.size, kFirstSize);
}

TEST_F(EntryIndex, Cleared_FindsNothingAndTakesIdsAgain) {
  fill(1000, 1);
  const unsigned size = index_.size;
  index_.clear();
  EXPECT_EQ(index_.find(1), nullptr);
  EXPECT_EQ(index_.size, size);
  index_.reserve(1000);
  EXPECT_EQ(index_.size, size);
  fill(1000, 5);
  expect_filled(1000, 5);
}

TEST_F(EntryIndex, NoMemoryToReserve_MemoryAllocAndNothingChanged) {
  fill(20, 3);
  const unsigned size = index_.size;
  EXPECT_GT(FailEveryAllocation([&] { index_.reserve(1000); },
                                [&] {
                                  EXPECT_EQ(index_.size, size);
                                  expect_filled(20, 3);
                                }),
            20U);
  EXPECT_GE(index_.size, 1000U);
  expect_filled(20, 3);
}

TEST_F(EntryIndex, RandomIds_AsAMap) {
  SeededRandom random;
  std::map<unsigned, unsigned> model;
  for (unsigned i = 0; i < 30000; ++i) {
    const auto id = static_cast<unsigned>(random.one_in(2) ? random.between(0, 2000) : random.between(0, 0xFFFFFFFF));
    if (random.one_in(500)) {
      const auto additional = static_cast<unsigned>(random.between(0, 3000));
      index_.reserve(additional);
      ASSERT_GE(index_.size, model.size() + additional);
    }
    if (random.one_in(3)) {
      index_.put(id, {false, i});
      model[id] = i;
    }
    const auto found = model.find(id);
    const auto* const place = index_.find(id);
    ASSERT_EQ(place != nullptr, found != model.end());
    ASSERT_TRUE(place == nullptr || place->offset == found->second);
  }
  EXPECT_EQ(count_of(index_), model.size());
}

}  // namespace
