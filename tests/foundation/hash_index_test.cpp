#include "foundation/hash_index.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

/// A list with an index, as owners use it; keys are numbers, whose hashes a test chooses.
class IndexedList {
 public:
  explicit IndexedList(std::function<unsigned(int)> hash) : hash_(std::move(hash)) {}

  void add(int key) {
    index_.reserve(count() + 1, count(), [this](unsigned i) { return hash_(keys_[i]); });
    keys_.push_back(key);
    index_.insert(hash_(key), count() - 1);
  }
  void remove_at(unsigned position) {
    keys_.erase(keys_.begin() + position);
    index_.reindex(count(), [this](unsigned i) { return hash_(keys_[i]); });
  }
  unsigned find(int key) const {
    return index_.find(hash_(key), [&](unsigned i) {
      EXPECT_LT(i, count());
      return keys_[i] == key;
    });
  }
  unsigned count() const { return static_cast<unsigned>(keys_.size()); }
  int key_at(unsigned position) const { return keys_[position]; }
  HashIndex& index() { return index_; }

 private:
  std::function<unsigned(int)> hash_;
  std::vector<int> keys_;
  HashIndex index_;
};

void expect_every_key_found(const IndexedList& list) {
  for (unsigned i = 0; i < list.count(); ++i) ASSERT_EQ(list.find(list.key_at(i)), i);
  ASSERT_EQ(list.find(-1), HashIndex::kNone);
}

const struct {
  const char* name;
  unsigned (*hash)(int);
} kHashes[] = {{"distinct", [](int key) { return static_cast<unsigned>(key); }},
               {"all alike", [](int) { return 7U; }},
               {"all ones", [](int) { return 0xFFFFFFFFU; }},
               {"high bits", [](int key) { return static_cast<unsigned>(key) << 24; }},
               {"few", [](int key) { return static_cast<unsigned>(key % 5); }}};

TEST(HashIndex, NeverReserved_Empty) {
  HashIndex index;
  EXPECT_TRUE(index.empty());
  index.clear();
  EXPECT_TRUE(index.empty());
  index.reindex(0, [](unsigned) { return 0U; });
  EXPECT_TRUE(index.empty());
}

TEST(HashIndex, Reserved_NotEmptyAndFindsNothing) {
  HashIndex index;
  index.reserve(1, 0, [](unsigned) { return 0U; });
  EXPECT_FALSE(index.empty());
  EXPECT_EQ(index.find(0, [](unsigned) { return true; }), HashIndex::kNone);
  index.clear();
  EXPECT_TRUE(index.empty());
}

TEST(HashIndex, PositionsUpTo600AnyHashes_EachFound) {
  for (const auto& hash : kHashes) {
    SCOPED_TRACE(hash.name);
    IndexedList list(hash.hash);
    for (int key = 0; key < 600; ++key) {
      list.add(key * 3);
      ASSERT_EQ(list.find(key * 3), static_cast<unsigned>(key));
      ASSERT_EQ(list.find(key * 3 + 1), HashIndex::kNone);
    }
    expect_every_key_found(list);
  }
}

TEST(HashIndex, PositionsOfATableWithoutRoomToSpare_EachFound) {
  // Exactly what was reserved for, at the sizes at which the table grows.
  for (const unsigned room : {1U, 15U, 16U, 17U, 31U, 32U, 33U, 255U, 256U, 257U}) {
    IndexedList list(kHashes[0].hash);
    list.index().reserve(room, 0, [](unsigned) { return 0U; });
    for (unsigned key = 0; key < room; ++key) list.add(static_cast<int>(key) * 1000);
    expect_every_key_found(list);
  }
}

TEST(HashIndex, AllPositionsThatItCanName_EachFound) {
  IndexedList list(kHashes[0].hash);
  for (int key = 0; key < 0xFFFF; ++key) list.add(key);
  expect_every_key_found(list);
}

TEST(HashIndex, ElementsOfTheSameHash_TheMatchingOne) {
  IndexedList list(kHashes[1].hash);
  for (int key = 0; key < 20; ++key) list.add(key);
  for (unsigned key = 0; key < 20; ++key) EXPECT_EQ(list.find(static_cast<int>(key)), key);
}

TEST(HashIndex, RandomAddingAndRemoving_AsLookingThrough) {
  SeededRandom random;
  for (const auto& hash : kHashes) {
    SCOPED_TRACE(hash.name);
    IndexedList list(hash.hash);
    int next = 0;
    for (int i = 0; i < 1500; ++i) {
      if (list.count() == 0 || random.one_in(2)) {
        list.add(next += static_cast<int>(random.between(1, 1000)));
      } else {
        const auto position = static_cast<unsigned>(random.between(0, list.count() - 1));
        const int key = list.key_at(position);
        list.remove_at(position);
        ASSERT_EQ(list.find(key), HashIndex::kNone);
      }
      if (i % 20 == 0) expect_every_key_found(list);
    }
  }
}

TEST(HashIndex, NoMemory_MemoryAllocAndTheIndexUnchanged) {
  IndexedList list(kHashes[0].hash);
  for (int key = 0; key < 16; ++key) list.add(key);
  const auto hash_of = [&](unsigned i) { return kHashes[0].hash(list.key_at(i)); };
  EXPECT_EQ(FailEveryAllocation([&] { list.index().reserve(17, 16, hash_of); }, [&] { expect_every_key_found(list); }),
            1U);
  expect_every_key_found(list);
  HashIndex index;
  EXPECT_EQ(FailEveryAllocation([&] { index.reserve(1, 0, [](unsigned) { return 0U; }); },
                                [&] { EXPECT_TRUE(index.empty()); }),
            1U);
}

}  // namespace
