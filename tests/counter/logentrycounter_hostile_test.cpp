#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <utility>

#include "counter/record_index.h"
#include "tests/counter/indexed_counter.h"

using namespace qzlog;

namespace {

using namespace qz_test;

/// Two keys, far from each other in what they say, that the index cannot tell apart; nothing where none were found.
std::pair<int, int> keys_of_one_hash() {
  std::map<std::uint32_t, int> keys;
  for (int key = 0; key < 1000000; ++key) {
    const RecordBytes bytes = encode_record({32, 2020, 1, 1, key, 1, {0, 0}});
    const auto [other, is_new] = keys.emplace(tag_of_record(bytes.data()).hash, key);
    if (!is_new) return {other->second, key};
  }
  return {0, 0};
}

TEST_F(IndexedCounter, TwoCombinationsOfOneHash_ToldApart) {
  const std::pair<int, int> keys = keys_of_one_hash();
  const int first = keys.first;
  const int second = keys.second;
  ASSERT_NE(first, second);
  open_indexed(record_bytes(2020, 1, 1, first, 10) + numbered(-200, -1));
  EXPECT_EQ(remove(second), 0);
  EXPECT_LE(read_by([&] { EXPECT_EQ(increase(second), 0); }), kFewBytes);
  EXPECT_EQ(increase(first), 0);
  EXPECT_LE(read_by([&] { EXPECT_EQ(increase(second), 0); }), kFewBytes);
  EXPECT_TRUE(same_as_model());
  EXPECT_EQ(remove(first), 0);
  EXPECT_EQ(update(second), 0);
  EXPECT_TRUE(same_as_model());
}

TEST_F(IndexedCounter, ManyEqualRecords_FirstOneCountsAndTheNextAfterItIsGone) {
  std::string bytes = numbered(0, 9);
  for (int i = 0; i < 300; ++i) bytes += record_bytes(2020, 1, 1, 70, i);
  open_indexed(bytes);
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(increase(70), 0);
    EXPECT_EQ(remove(70), 0);
    EXPECT_EQ(increase(2), 0);
    ASSERT_TRUE(same_as_model());
  }
  EXPECT_EQ(add(70), 0);
  EXPECT_EQ(increase(70), 0);
  EXPECT_TRUE(same_as_model());
}

/// The hash function's inner part, to make up combinations of one hash.
std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ value >> 33) * 0xFF51AFD7ED558CCDULL;
  value = (value ^ value >> 33) * 0xC4CEB9FE1A85EC53ULL;
  return value ^ value >> 33;
}

TEST_F(IndexedCounter, FileOfOneHash_ScannedWithTheSameResults) {
  std::string bytes;
  for (std::uint64_t first = 1; first <= 200; ++first) {
    const std::uint64_t halves[2] = {first, 1 - mixed(first)};
    std::string record = record_bytes(0, 0, 0, 0, 1);
    record.replace(qzlog::counter_record::kDateOffset, qzlog::counter_record::kCombinationSize,
                   reinterpret_cast<const char*>(halves), qzlog::counter_record::kCombinationSize);
    bytes += record;
  }
  const auto* const last_bytes = reinterpret_cast<const unsigned char*>(bytes.data() + bytes.size() - kRecordBytes);
  ASSERT_EQ(tag_of_record(last_bytes).hash, tag_of_record(reinterpret_cast<const unsigned char*>(bytes.data())).hash);
  open_indexed(bytes);
  const CounterRecord last = decode_record(last_bytes);
  EXPECT_GT(read_by([&] { update_as(last, 9); }), 200 * 32);
  for (int i = 0; i < 5; ++i) {
    update_as(last, i);
    EXPECT_EQ(increase(i), 0);
    EXPECT_TRUE(same_as_model());
  }
}

TEST_F(IndexedCounter, PositionsAtTheEndOfRangeDeletes_SameAsWithoutIndex) {
  open_indexed(numbered(0, 199));
  EXPECT_EQ(increase(197), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  model_.remove_range({2020, 1, 1}, {2020, 1, 1}, false);
  EXPECT_TRUE(same_as_model());
  EXPECT_TRUE(holds(numbered(0, 196) + record_bytes(2020, 1, 1, 197, 2) + free_record() + free_record()));
}

}  // namespace
