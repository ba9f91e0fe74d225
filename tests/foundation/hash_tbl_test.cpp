#include "foundation/hash_tbl.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/support.h"

namespace {

using qz_test::FailEveryAllocation;
using qz_test::Texts;

using TextTable = qz_MISC_hash_tbl<qz_String, unsigned>;
using TextWalker = qz_MISC_hash_tbl_walker<qz_String, unsigned>;
using TextSlot = _qz_MISC_hash_slot<qz_String, unsigned>;

constexpr const char* kLongKey = "a key that is far too long to be kept inside the string object itself";

/// Puts keys by their first character: '0' into bucket 0, '1' into bucket 1, ...
class PlacedTable : public TextTable {
 public:
  explicit PlacedTable(unsigned requested) : TextTable(requested) {}
  unsigned _get_slot_index(const qz_String& key) const override {
    return static_cast<unsigned>(key.c_str()[0] - '0') % size;
  }
};

template <typename Table, typename K, typename V>
void add(Table& table, const K& key, const V& value) {
  table.slots[table._get_slot_index(key)].add_entry(key, value);
}

Texts walk(const TextTable& table) {
  Texts pairs;
  TextWalker walker(table);
  qz_String key;
  unsigned value = 0;
  while (walker.next(key, value)) pairs.push_back(std::string(key.c_str()) + "=" + std::to_string(value));
  return pairs;
}

Texts forward(const TextSlot& slot) {
  Texts keys;
  for (const auto* node = slot.head; node != nullptr; node = node->next) keys.emplace_back(node->key.c_str());
  return keys;
}

/// The keys from the tail to the head by the backward links alone.
Texts backward(const TextSlot& slot) {
  const auto* node = slot.head;
  while (node != nullptr && node->next != nullptr) node = node->next;
  Texts keys;
  for (; node != nullptr; node = node->prev) keys.emplace_back(node->key.c_str());
  return keys;
}

class ThreeNodeChain : public testing::Test {
 protected:
  ThreeNodeChain() {
    for (unsigned i = 1; i <= 3; ++i) slot_.add_entry(qz_String(std::to_string(i).c_str()), i);
  }
  ~ThreeNodeChain() override { slot_._clear(); }
  TextSlot slot_;
};

TEST(HashTable, Construction_HasTheRecommendedNumberOfEmptyBuckets) {
  for (const unsigned requested : {0U, 1U, 3U, 7U, 23U, 100U}) {
    const TextTable table(requested);
    ASSERT_EQ(table.size, QZ_recommended_hash_size(requested));
    ASSERT_NE(table.slots, nullptr);
    for (unsigned i = 0; i < table.size; ++i) EXPECT_EQ(table.slots[i].head, nullptr);
  }
}

TEST(HashTable, Type_IsPolymorphicWithoutVirtualDestructorAndNotCopyable) {
  static_assert(std::is_polymorphic_v<TextTable>);
  static_assert(!std::has_virtual_destructor_v<TextTable>);
  static_assert(!std::is_copy_constructible_v<TextTable> && !std::is_copy_assignable_v<TextTable>);
  SUCCEED();
}

TEST(HashTable, BucketIndex_IsTheHashOfTheKey) {
  const TextTable table(7);
  const qz_String key("PRODUCT_ID");
  EXPECT_EQ(table._get_slot_index(key), QZ_hash(key, table.size));
  const qz_MISC_hash_tbl<unsigned, unsigned> numbers(23);
  EXPECT_EQ(numbers._get_slot_index(4711U), QZ_hash(4711U, numbers.size));
}

TEST(HashTable, SameKeyTwice_OneNodeWithTheSecondValue) {
  TextTable table(7);
  add(table, qz_String("key"), 1U);
  add(table, qz_String("key"), 2U);
  EXPECT_EQ(walk(table), Texts({"key=2"}));
}

TEST(HashTable, SameKeyAgain_KeepsItsPlaceInTheChain) {
  PlacedTable table(7);
  for (const char* key : {"1a", "1b", "1c"}) add(table, qz_String(key), 1U);
  add(table, qz_String("1b"), 2U);
  EXPECT_EQ(walk(table), Texts({"1c=1", "1b=2", "1a=1"}));
}

TEST(HashTable, OwnersHashing_DecidesTheBucket) {
  PlacedTable table(7);
  TextTable& base = table;
  add(base, qz_String("3x"), 1U);
  EXPECT_EQ(forward(table.slots[3]), Texts({"3x"}));
}

TEST(HashTableWalker, KeysOfOneBucket_NewestFirst) {
  PlacedTable table(7);
  add(table, qz_String("2old"), 1U);
  add(table, qz_String("2new"), 2U);
  EXPECT_EQ(walk(table), Texts({"2new=2", "2old=1"}));
}

TEST(HashTableWalker, SeveralBuckets_AscendingIndex) {
  PlacedTable table(7);
  for (const char* key : {"6a", "0a", "3a", "6b", "0b", "3b"}) add(table, qz_String(key), 9U);
  EXPECT_EQ(walk(table), Texts({"0b=9", "0a=9", "3b=9", "3a=9", "6b=9", "6a=9"}));
}

TEST(HashTableWalker, EmptyTable_FalseAtOnceAndForEver) {
  const TextTable table(7);
  TextWalker walker(table);
  qz_String key("untouched");
  unsigned value = 77;
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(walker.next(key, value));
  EXPECT_STREQ(key.c_str(), "untouched");
  EXPECT_EQ(value, 77U);
  EXPECT_EQ(walker._next_key(), nullptr);
}

TEST(HashTableWalker, OnePair_ThenFalseWithArgumentsUntouched) {
  for (const char* name : {"0first bucket", "3middle bucket", "6last bucket"}) {
    PlacedTable table(7);
    add(table, qz_String(name), 5U);
    TextWalker walker(table);
    qz_String key;
    unsigned value = 0;
    ASSERT_TRUE(walker.next(key, value));
    EXPECT_STREQ(key.c_str(), name);
    EXPECT_EQ(value, 5U);
    key = qz_String("untouched");
    value = 77;
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(walker.next(key, value));
    EXPECT_STREQ(key.c_str(), "untouched");
    EXPECT_EQ(value, 77U);
  }
}

TEST(HashTableWalker, DestinationIsTheNodesOwnKey_KeyStaysIntact) {
  PlacedTable table(7);
  add(table, qz_String(kLongKey), 5U);
  auto* node = table.slots[table._get_slot_index(kLongKey)].head;
  TextWalker walker(table);
  EXPECT_TRUE(walker.next(node->key, node->value));
  EXPECT_STREQ(node->key.c_str(), kLongKey);
  EXPECT_EQ(node->value, 5U);
}

TEST(HashTableWalker, KeyWithZeroBytes_CopiedInItsFullLength) {
  TextTable table(7);
  qz_String stored;
  stored._assign("a\0b", 3);
  add(table, stored, 1U);
  TextWalker walker(table);
  qz_String key;
  unsigned value = 0;
  ASSERT_TRUE(walker.next(key, value));
  EXPECT_EQ(std::string(key.c_str(), key.length()), std::string("a\0b", 3));
}

TEST(HashTableWalker, NextKey_GivesTheNodesThemselves) {
  PlacedTable table(7);
  for (const char* key : {"1a", "1b", "5a"}) add(table, qz_String(key), 0U);
  TextWalker walker(table);
  EXPECT_EQ(walker._next_key(), table.slots[1].head);
  EXPECT_EQ(walker._next_key(), table.slots[1].head->next);
  EXPECT_EQ(walker._next_key(), table.slots[5].head);
  EXPECT_EQ(walker._next_key(), nullptr);
  EXPECT_EQ(walker._next_key(), nullptr);
}

TEST(HashTableWalker, TwoWalkers_AreIndependent) {
  PlacedTable table(7);
  for (const char* key : {"1a", "2a"}) add(table, qz_String(key), 0U);
  TextWalker ahead(table);
  EXPECT_NE(ahead._next_key(), nullptr);
  TextWalker behind(table);
  EXPECT_STREQ(ahead._next_key()->key.c_str(), "2a");
  EXPECT_STREQ(behind._next_key()->key.c_str(), "1a");
}

TEST_F(ThreeNodeChain, Insertion_LinksBothWays) {
  EXPECT_EQ(forward(slot_), Texts({"3", "2", "1"}));
  EXPECT_EQ(backward(slot_), Texts({"1", "2", "3"}));
  EXPECT_EQ(slot_.head->prev, nullptr);
}

TEST_F(ThreeNodeChain, RemoveHead_LeavesTheOthersLinkedBothWays) {
  EXPECT_TRUE(slot_.remove_entry(qz_String("3")));
  EXPECT_EQ(forward(slot_), Texts({"2", "1"}));
  EXPECT_EQ(backward(slot_), Texts({"1", "2"}));
}

TEST_F(ThreeNodeChain, RemoveMiddle_LeavesTheOthersLinkedBothWays) {
  EXPECT_TRUE(slot_.remove_entry(qz_String("2")));
  EXPECT_EQ(forward(slot_), Texts({"3", "1"}));
  EXPECT_EQ(backward(slot_), Texts({"1", "3"}));
}

TEST_F(ThreeNodeChain, RemoveTail_LeavesTheOthersLinkedBothWays) {
  EXPECT_TRUE(slot_.remove_entry(qz_String("1")));
  EXPECT_EQ(forward(slot_), Texts({"3", "2"}));
  EXPECT_EQ(backward(slot_), Texts({"2", "3"}));
}

TEST_F(ThreeNodeChain, RemoveAbsentKey_FalseAndNothingChanges) {
  EXPECT_FALSE(slot_.remove_entry(qz_String("4")));
  EXPECT_FALSE(slot_.remove_entry(qz_String("")));
  EXPECT_EQ(forward(slot_), Texts({"3", "2", "1"}));
  EXPECT_EQ(backward(slot_), Texts({"1", "2", "3"}));
}

TEST_F(ThreeNodeChain, RemoveAll_EmptyAndUsableAgain) {
  for (const char* key : {"2", "3", "1"}) EXPECT_TRUE(slot_.remove_entry(qz_String(key)));
  EXPECT_EQ(slot_.head, nullptr);
  EXPECT_FALSE(slot_.remove_entry(qz_String("1")));
  slot_.add_entry(qz_String("new"), 1);
  EXPECT_EQ(forward(slot_), Texts({"new"}));
}

TEST_F(ThreeNodeChain, RemoveByTheNodesOwnKey_Works) {
  EXPECT_TRUE(slot_.remove_entry(slot_.head->next->key));
  EXPECT_EQ(forward(slot_), Texts({"3", "1"}));
}

TEST_F(ThreeNodeChain, Find_GivesTheNodeToReadAndWrite) {
  auto* node = slot_.find_entry(qz_String("2"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->value, 2U);
  node->value = 20;
  EXPECT_EQ(slot_.find_entry(qz_String("2"))->value, 20U);
  EXPECT_EQ(slot_.find_entry(qz_String("5")), nullptr);
}

TEST_F(ThreeNodeChain, Clear_EmptiesTheChain) {
  slot_._clear();
  EXPECT_EQ(slot_.head, nullptr);
  slot_._clear();
  EXPECT_EQ(slot_.head, nullptr);
}

TEST(HashTable, SetSizeOfAFilledTable_LeavesItEmpty) {
  TextTable table(7);
  for (const char* key : {"a", "b", "c", kLongKey}) add(table, qz_String(key), 1U);
  table.set_size(100);
  EXPECT_EQ(table.size, QZ_recommended_hash_size(100));
  EXPECT_EQ(walk(table), Texts());
}

TEST(HashTable, SetSizeOfTheCurrentSize_KeepsTheSize) {
  TextTable table(7);
  add(table, qz_String("a"), 1U);
  const unsigned size = table.size;
  table.set_size(table.size);
  EXPECT_EQ(table.size, size);
  EXPECT_EQ(walk(table), Texts());
}

TEST(HashTable, Clear_EmptiesButKeepsTheBuckets) {
  TextTable table(7);
  for (const char* key : {"a", "b", "c", kLongKey}) add(table, qz_String(key), 1U);
  const auto* slots = table.slots;
  table.clear();
  EXPECT_EQ(table.slots, slots);
  EXPECT_EQ(table.size, 7U);
  EXPECT_EQ(walk(table), Texts());
  add(table, qz_String("again"), 2U);
  EXPECT_EQ(walk(table), Texts({"again=2"}));
}

// What a pointer value points to belongs to the table's owner.
TEST(HashTable, PointerValues_AreNotDeleted) {
  int number = 42;
  {
    qz_MISC_hash_tbl<qz_String, int*> table(7);
    add(table, qz_String("a"), &number);
    add(table, qz_String("b"), &number);
    EXPECT_TRUE(table.slots[table._get_slot_index("a")].remove_entry("a"));
    table.clear();
    add(table, qz_String("c"), &number);
    table.set_size(7);
    add(table, qz_String("d"), &number);
  }
  EXPECT_EQ(number, 42);
}

struct FilePlace {
  unsigned file;
  unsigned offset;
};

TEST(HashTable, NumberKeysAndStructValues_FoundByEquality) {
  qz_MISC_hash_tbl<unsigned, FilePlace> table(23);
  for (unsigned id = 0; id < 100; ++id) add(table, id * 23, FilePlace{id, id + 1});
  for (unsigned id = 0; id < 100; ++id) {
    const auto* node = table.slots[table._get_slot_index(id * 23)].find_entry(id * 23);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->value.file, id);
    EXPECT_EQ(node->value.offset, id + 1);
    EXPECT_EQ(table.slots[table._get_slot_index(id * 23 + 1)].find_entry(id * 23 + 1), nullptr);
  }
}

TEST(HashTable, TextKeys_AreCaseSensitiveAndCompareUnsignedBytes) {
  TextTable table(1);
  for (const char* key : {"key", "Key", "\xE9", "e", ""}) add(table, qz_String(key), 1U);
  EXPECT_EQ(walk(table).size(), 5U);
  EXPECT_NE(table.slots[table._get_slot_index("")].find_entry(""), nullptr);
}

TEST(HashTable, AddWithoutMemory_InsertsNothing) {
  PlacedTable table(7);
  add(table, qz_String("1old"), 1U);
  const qz_String long_key((std::string("1") + kLongKey).c_str());
  const auto nothing_inserted = [&] {
    EXPECT_EQ(walk(table), Texts({"1old=1"}));
    EXPECT_EQ(backward(table.slots[1]), Texts({"1old"}));
  };
  EXPECT_EQ(FailEveryAllocation([&] { add(table, long_key, 2U); }, nothing_inserted), 2U);
  EXPECT_EQ(walk(table).size(), 2U);
}

TEST(HashTable, ReplaceWithoutMemory_NeedsNone) {
  TextTable table(7);
  add(table, qz_String("key"), 1U);
  const qz_String key("key");
  {
    const qz_test::AllocationFailure failure(1, qz_test::AllocationFailure::kFromThenOn);
    add(table, key, 2U);
  }
  EXPECT_EQ(walk(table), Texts({"key=2"}));
}

TEST(HashTable, SetSizeWithoutMemory_NoBucketsAndTheNewSize) {
  TextTable table(7);
  add(table, qz_String(kLongKey), 1U);
  const auto no_buckets = [&] {
    EXPECT_EQ(table.slots, nullptr);
    EXPECT_EQ(table.size, 53U);
  };
  EXPECT_EQ(FailEveryAllocation([&] { table.set_size(53); }, no_buckets), 1U);
  ASSERT_NE(table.slots, nullptr);
  EXPECT_EQ(walk(table), Texts());
  add(table, qz_String("usable"), 3U);
  EXPECT_EQ(walk(table), Texts({"usable=3"}));
}

TEST(HashTable, DestructionAfterAFailedSetSize_IsSafe) {
  TextTable table(7);
  add(table, qz_String("key"), 1U);
  EXPECT_EQ(qz_test::thrown_by([&] {
              const qz_test::AllocationFailure failure(1);
              table.set_size(11);
            }),
            qz_test::kNoMemory);
  EXPECT_EQ(table.slots, nullptr);
}

TEST(HashTable, ConstructionWithoutMemory_Throws) {
  EXPECT_EQ(FailEveryAllocation([] { const TextTable table(7); }), 1U);
}

}  // namespace
