#include "counter/record_index.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/counter/counter_fixture.h"

using namespace qzlog;

namespace {

using namespace qz_test;

constexpr std::uint32_t kNone = RecordIndex::kNone;

RecordTag live(std::uint32_t hash) { return {hash, false}; }
RecordTag free_tag() { return {0, true}; }

RecordIndex index_of(const std::vector<RecordTag>& tags) {
  RecordIndex index;
  for (const RecordTag tag : tags) index.append(tag);
  index.link();
  return index;
}

std::vector<std::uint32_t> numbers_with(const RecordIndex& index, std::uint32_t hash) {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t number = index.first(hash); number != kNone; number = index.next(number))
    numbers.push_back(number);
  return numbers;
}

using Numbers = std::vector<std::uint32_t>;

RecordTag tag_of(const std::string& record) {
  return tag_of_record(reinterpret_cast<const unsigned char*>(record.data()));
}

TEST(TagOfRecord, CombinationDiffers_HashDiffers) {
  const RecordTag tag = tag_of(record_bytes(2020, 1, 2, 3, 4));
  EXPECT_NE(tag_of(record_bytes(2021, 1, 2, 3, 4)).hash, tag.hash);
  EXPECT_NE(tag_of(record_bytes(2020, 2, 2, 3, 4)).hash, tag.hash);
  EXPECT_NE(tag_of(record_bytes(2020, 1, 1, 3, 4)).hash, tag.hash);
  EXPECT_NE(tag_of(record_bytes(2020, 1, 2, -3, 4)).hash, tag.hash);
  EXPECT_NE(tag_of(record_bytes(2020, 2, 1, 3, 4)).hash, tag.hash);
  EXPECT_FALSE(tag.is_free);
}

TEST(TagOfRecord, SizeCountAndReservedBytesDiffer_SameHash) {
  EXPECT_EQ(tag_of(record_bytes(2020, 1, 2, 3, 4)).hash, tag_of(record_bytes(2020, 1, 2, 3, 99, 31, "reserved")).hash);
}

TEST(TagOfRecord, NoDate_IsFree) {
  EXPECT_TRUE(tag_of(free_record()).is_free);
  EXPECT_TRUE(tag_of(record_bytes(0, 0, 0, 7, 7, 7, "reserved")).is_free);
  EXPECT_FALSE(tag_of(record_bytes(1, 0, 0, 0, 0)).is_free);
  EXPECT_FALSE(tag_of(record_bytes(0, 1, 0, 0, 0)).is_free);
  EXPECT_FALSE(tag_of(record_bytes(0, 0, 1, 0, 0)).is_free);
}

TEST(RecordIndex, NoRecord_NothingFound) {
  const RecordIndex index = index_of({});
  EXPECT_EQ(index.size(), 0U);
  EXPECT_EQ(index.first(7), kNone);
  EXPECT_EQ(index.first_free(), kNone);
}

TEST(RecordIndex, EqualHashes_InTheOrderOfTheFile) {
  const RecordIndex index = index_of({live(7), free_tag(), live(8), live(7), free_tag(), live(7)});
  EXPECT_EQ(numbers_with(index, 7), Numbers({0, 3, 5}));
  EXPECT_EQ(numbers_with(index, 8), Numbers({2}));
  EXPECT_EQ(numbers_with(index, 9), Numbers());
  EXPECT_EQ(index.first_free(), 1U);
}

TEST(RecordIndex, RecordReplaced_FoundUnderItsNewHashAlone) {
  RecordIndex index = index_of({live(7), live(7), live(7)});
  index.set(1, live(9));
  EXPECT_EQ(numbers_with(index, 7), Numbers({0, 2}));
  EXPECT_EQ(numbers_with(index, 9), Numbers({1}));
  index.set(1, live(7));
  EXPECT_EQ(numbers_with(index, 7), Numbers({0, 1, 2}));
}

TEST(RecordIndex, RecordFreedAndUsedAgain_FirstFreeFollows) {
  RecordIndex index = index_of({live(7), live(8), live(9)});
  index.set(2, free_tag());
  EXPECT_EQ(index.first_free(), 2U);
  index.set(0, free_tag());
  EXPECT_EQ(index.first_free(), 0U);
  EXPECT_EQ(index.first(7), kNone);
  index.set(0, live(5));
  EXPECT_EQ(index.first_free(), 2U);
  EXPECT_EQ(numbers_with(index, 5), Numbers({0}));
}

TEST(RecordIndex, RecordsAddedOneByOne_AllFound) {
  RecordIndex index = index_of({});
  for (std::uint32_t number = 0; number < 1000; ++number)
    index.set(number, number % 5 == 4 ? free_tag() : live(number / 2));
  EXPECT_EQ(index.size(), 1000U);
  EXPECT_EQ(numbers_with(index, 0), Numbers({0, 1}));
  EXPECT_EQ(numbers_with(index, 2), Numbers({5}));
  EXPECT_EQ(numbers_with(index, 499), Numbers({998}));
  EXPECT_EQ(index.first_free(), 4U);
}

TEST(RecordIndex, Holds_ComparesHashOnlyOfRecordsThatAreNotFree) {
  const RecordIndex index = index_of({live(7), {3, true}});
  EXPECT_TRUE(index.holds(0, live(7)));
  EXPECT_FALSE(index.holds(0, live(8)));
  EXPECT_FALSE(index.holds(0, {7, true}));
  EXPECT_TRUE(index.holds(1, {4, true}));
  EXPECT_FALSE(index.holds(1, live(3)));
}

/// The same as a plain list of tags.
class TagList {
 public:
  explicit TagList(const std::vector<RecordTag>& tags) : tags_(tags) {}

  void set(std::uint32_t number, RecordTag tag) {
    tags_.resize(std::max<std::size_t>(tags_.size(), number + 1));
    tags_[number] = tag;
  }
  std::uint32_t size() const { return static_cast<std::uint32_t>(tags_.size()); }
  Numbers numbers_with(std::uint32_t hash) const {
    Numbers numbers;
    for (std::uint32_t number = 0; number < tags_.size(); ++number) {
      if (!tags_[number].is_free && tags_[number].hash == hash) numbers.push_back(number);
    }
    return numbers;
  }
  std::uint32_t first_free() const {
    for (std::uint32_t number = 0; number < tags_.size(); ++number) {
      if (tags_[number].is_free) return number;
    }
    return kNone;
  }

 private:
  std::vector<RecordTag> tags_;
};

TEST(RecordIndex, RandomChanges_SameAsAList) {
  SeededRandom random;
  const auto random_tag = [&] {
    return RecordTag{static_cast<std::uint32_t>(random.between(0, 20)), random.one_in(4)};
  };
  for (int round = 0; round < 100; ++round) {
    std::vector<RecordTag> tags;
    for (auto left = random.between(0, 40); left > 0; --left) tags.push_back(random_tag());
    RecordIndex index = index_of(tags);
    TagList list(tags);
    for (int i = 0; i < 200; ++i) {
      const auto number = static_cast<std::uint32_t>(random.between(random.one_in(4) ? list.size() : 0, list.size()));
      const RecordTag tag = random_tag();
      index.set(number, tag);
      list.set(number, tag);
      const auto hash = static_cast<std::uint32_t>(random.between(0, 20));
      ASSERT_EQ(numbers_with(index, hash), list.numbers_with(hash));
      ASSERT_EQ(index.first_free(), list.first_free());
      ASSERT_EQ(index.size(), list.size());
    }
  }
}

}  // namespace
