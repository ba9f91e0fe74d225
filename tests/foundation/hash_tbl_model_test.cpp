#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "foundation/hash_tbl.h"
#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;

/// The plain form of the table: a list of (key, value) for each bucket, the newest first.
template <typename K>
class Model {
 public:
  using Pairs = std::vector<std::pair<K, unsigned>>;

  void set_size(unsigned size) { buckets_.assign(size, {}); }

  void add(unsigned bucket, const K& key, unsigned value) {
    Pairs& pairs = buckets_[bucket];
    if (const auto found = find(pairs, key); found != pairs.end()) {
      found->second = value;
    } else {
      pairs.insert(pairs.begin(), {key, value});
    }
  }
  bool remove(unsigned bucket, const K& key) {
    Pairs& pairs = buckets_[bucket];
    const auto found = find(pairs, key);
    if (found == pairs.end()) return false;
    pairs.erase(found);
    return true;
  }
  const unsigned* value(unsigned bucket, const K& key) {
    const auto found = find(buckets_[bucket], key);
    return found == buckets_[bucket].end() ? nullptr : &found->second;
  }
  Pairs walk() const {
    Pairs all;
    for (const Pairs& pairs : buckets_) all.insert(all.end(), pairs.begin(), pairs.end());
    return all;
  }

 private:
  static auto find(Pairs& pairs, const K& key) {
    return std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == key; });
  }
  std::vector<Pairs> buckets_;
};

qz_String stored_key(const std::string& key) { return qz_String(key.c_str()); }
unsigned stored_key(unsigned key) { return key; }
std::string plain_key(const qz_String& key) { return key.c_str(); }
unsigned plain_key(unsigned key) { return key; }

/// Table and model side by side.
template <typename StoredKey, typename K>
class Comparison {
 public:
  explicit Comparison(unsigned size) : table_(size) { model_.set_size(table_.size); }

  void set_size(unsigned size) {
    table_.set_size(size);
    model_.set_size(table_.size);
  }
  void clear() {
    table_.clear();
    model_.set_size(table_.size);
  }
  void add(const K& key, unsigned value) {
    slot(key).add_entry(stored_key(key), value);
    model_.add(bucket(key), key, value);
  }
  void remove(const K& key) { EXPECT_EQ(slot(key).remove_entry(stored_key(key)), model_.remove(bucket(key), key)); }
  void find(const K& key) {
    const auto* node = slot(key).find_entry(stored_key(key));
    const unsigned* expected = model_.value(bucket(key), key);
    ASSERT_EQ(node != nullptr, expected != nullptr);
    if (node != nullptr) {
      EXPECT_EQ(node->value, *expected);
    }
  }
  void compare_walks() const {
    qz_MISC_hash_tbl_walker<StoredKey, unsigned> walker(table_);
    StoredKey key{};
    unsigned value = 0;
    typename Model<K>::Pairs pairs;
    while (walker.next(key, value)) pairs.emplace_back(plain_key(key), value);
    ASSERT_EQ(pairs, model_.walk());
  }

 private:
  unsigned bucket(const K& key) const { return table_._get_slot_index(stored_key(key)); }
  auto& slot(const K& key) { return table_.slots[bucket(key)]; }

  qz_MISC_hash_tbl<StoredKey, unsigned> table_;
  Model<K> model_;
};

template <typename Comparison, typename MakeKey>
void run_random_operations(SeededRandom& random, Comparison& tables, MakeKey make_key) {
  for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
    const long long operation = random.between(1, 1000);
    if (operation <= 450) {
      tables.add(make_key(), static_cast<unsigned>(random.between(0, 4294967295LL)));
    } else if (operation <= 750) {
      tables.remove(make_key());
    } else if (operation <= 980) {
      tables.find(make_key());
    } else if (operation <= 997) {
      tables.compare_walks();
    } else if (operation <= 999) {
      tables.clear();
    } else {
      tables.set_size(static_cast<unsigned>(random.between(0, 60)));
    }
  }
  tables.compare_walks();
}

TEST(HashTableModel, RandomOperationsOnTexts_AgreeWithPlainLists) {
  SeededRandom random;
  Comparison<qz_String, std::string> tables(7);
  run_random_operations(random, tables, [&] {
    const auto number = static_cast<std::size_t>(random.between(0, 99));
    return std::string(number / 2, 'k') + std::to_string(number);
  });
}

TEST(HashTableModel, RandomOperationsOnNumbers_AgreeWithPlainLists) {
  SeededRandom random;
  Comparison<unsigned, unsigned> tables(23);
  run_random_operations(random, tables, [&] { return static_cast<unsigned>(random.between(0, 150)) * 40000000U; });
}

TEST(HashTableModel, ManyMoreKeysThanBuckets_AllFound) {
  Comparison<unsigned, unsigned> tables(3);
  for (unsigned key = 0; key < 3000; ++key) tables.add(key, key);
  tables.compare_walks();
  for (unsigned key = 0; key < 3000; key += 3) tables.remove(key);
  for (unsigned key = 0; key < 3000; ++key) tables.find(key);
  tables.compare_walks();
}

}  // namespace
