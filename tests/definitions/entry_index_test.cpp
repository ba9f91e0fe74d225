#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "tests/definitions/table_test.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

// ---- the index by itself ----

constexpr unsigned kFirstSize = 23;
constexpr unsigned kMany = 100000;

/// The most IDs that share a bucket.
unsigned longest_chain(const _qz_LOG_entry_index& index) {
  unsigned longest = 0;
  for (unsigned i = 0; i < index.size; ++i) {
    unsigned length = 0;
    for (const auto* node = index.slots[i].head; node != nullptr; node = node->next) ++length;
    longest = std::max(longest, length);
  }
  return longest;
}

std::size_t count_of(const _qz_LOG_entry_index& index) {
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

  _qz_LOG_entry_index index_{kFirstSize};
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

// ---- files ----

using IndexedFiles = TableTest;

std::string text_of(const _qz_LOG_log_definition* definition) {
  if (definition == nullptr) return "(none)";
  const char* const text = definition->get_default_msg_text();
  return text == nullptr ? "(null)" : text;
}

TEST_F(IndexedFiles, ManyIds_EachFoundAndOthersNot) {
  set_std({.entries = numbered_entries(1, kMany)});
  for (const unsigned id : {1U, 2U, 50000U, kMany - 1, kMany}) {
    EXPECT_EQ(text_of(table_.find_entry(id)), "entry " + std::to_string(id) + " of %s%user%");
  }
  for (const unsigned id : {0U, kMany + 1, 0xFFFFFFFFU}) EXPECT_EQ(table_.find_entry(id), nullptr) << id;
  for (unsigned id = 7; id <= kMany; id += 997) ASSERT_EQ(at(id).get_entry_word(), id + 1);
}

TEST_F(IndexedFiles, IdsInStepsOf65536_EachFound) {
  LdfFile file;
  for (unsigned i = 0; i < 3000; ++i) file.entries.push_back({.id = i << 16, .message_text = std::to_string(i)});
  set_std(file);
  for (unsigned i = 0; i < 3000; ++i) ASSERT_EQ(text_of(table_.find_entry(i << 16)), std::to_string(i));
  EXPECT_EQ(table_.find_entry(1), nullptr);
}

TEST_F(IndexedFiles, IdTwiceInOneMap_TheLastRecord) {
  set_std({.entries = {{.id = 7, .message_text = "first"},
                       {.id = 8, .message_text = "eight"},
                       {.id = 7, .message_text = "second"}}});
  EXPECT_EQ(text_of(table_.find_entry(7)), "second");
  EXPECT_EQ(text_of(table_.find_entry(8)), "eight");
}

TEST_F(IndexedFiles, IdTwiceInOneMapTraced_TheLastRecord) {
  const DebugLogFile log(3);
  set_std({.entries = {{.id = 7, .message_text = "first"}, {.id = 7, .message_text = "second"}}});
  const std::string lookup =
      "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const n_entry_definitions_cached:0\n";
  const std::string nothing = "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const return 0 0\n";
  EXPECT_EQ(
      log.unnumbered_records(),
      Texts({"ldf_load:# _qz_LOG_log_definition_tbl::_set_definition_file_path\n",
             "ldf_load:# _qz_LOG_log_definition_tbl::clear() \n", lookup,
             "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false\n", nothing, lookup,
             "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false pfile=0\n", nothing}));
  EXPECT_EQ(text_of(table_.find_entry(7)), "second");
}

TEST_F(IndexedFiles, NewIdTwiceInAnAuxMap_BothRecordsMergedUntilEvicted) {
  set_std({.entries = numbered_entries(1, 200)});
  set_aux({.entries = {{.id = 300, .word = 1, .attributes = {{"one", 2}}},
                       {.id = 300, .word = 2, .attributes = {{"two", 2}}}}});
  EXPECT_EQ(own_attributes(at(300)), Texts({"one:2>", "two:2>"}));
  for (unsigned id = 1; id <= 128; ++id) at(id);
  EXPECT_EQ(own_attributes(at(300)), Texts({"two:2>"}));
  EXPECT_EQ(at(300).get_entry_word(), 2U);
}

TEST_F(IndexedFiles, TinyFileThatClaims4BillionEntries_UnreadableWithoutMuchMemory) {
  const std::string bytes = LdfFile{.entries = numbered_entries(1, 2)}.bytes();
  const std::string aux_bytes = LdfFile{.entries = numbered_entries(11, 12)}.bytes();
  for (const unsigned count : {1000U, 0x10000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    const std::string damaged = with_int4(bytes, 48, count);
    const std::string damaged_aux = with_int4(aux_bytes, 48, count);
    const AddressSpaceLimit limit(16 << 20);
    EXPECT_EQ(thrown_by([&] { set_std_bytes(damaged); }), invalid_definition(kUnreadable)) << count;
    set_std_bytes(bytes);
    EXPECT_EQ(thrown_by([&] { set_aux_bytes(damaged_aux); }), invalid_definition(kUnreadable)) << count;
  }
}

TEST_F(IndexedFiles, MapBehindTheEndOfTheFile_UnreadableWithoutMuchMemory) {
  const LdfImage image = LdfFile{.entries = numbered_entries(1, 2)}.image();
  for (const unsigned offset : {static_cast<unsigned>(image.bytes.size()), 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    const std::string damaged = with_int4(with_int4(image.bytes, 48, 0xFFFFFFFF), 56, offset);
    const AddressSpaceLimit limit(16 << 20);
    EXPECT_EQ(thrown_by([&] { set_std_bytes(damaged); }), invalid_definition(kUnreadable)) << offset;
    EXPECT_EQ(thrown_by([&] { set_std_bytes(with_int4(image.bytes, 56, offset)); }), invalid_definition(kUnreadable))
        << offset;
  }
}

// ---- maps of auxiliary files ----

TEST_F(IndexedFiles, AuxMapOfKnownAndUnknownIdsInTurn_EachPairRead) {
  set_std({.entries = numbered_entries(1, 300)});
  // Cached ones, and ones that are read while the map is.
  for (unsigned id = 1; id <= 40; ++id) at(id);
  LdfFile aux{.tag = "aux"};
  for (unsigned id = 1; id <= 100; ++id) {
    aux.entries.push_back({.id = id, .attributes = {{"more", 2}}});
    aux.entries.push_back({.id = 1000 + id, .message_id = "A", .message_text = "aux " + std::to_string(id)});
    if (id % 3 == 0) aux.entries.push_back({.id = 2000 + id, .message_id = "B", .message_text = "aux only"});
  }
  set_aux(aux);
  for (unsigned id = 1; id <= 100; ++id) ASSERT_EQ(own_attributes(at(id)), Texts({"user:9>", "more:2>"})) << id;
  for (unsigned id = 1; id <= 100; ++id) ASSERT_EQ(text_of(table_.find_entry(1000 + id)), "aux " + std::to_string(id));
  for (unsigned id = 1; id <= 100; ++id) {
    ASSERT_EQ(text_of(table_.find_entry(2000 + id)), id % 3 == 0 ? "aux only" : "(none)") << id;
  }
  for (unsigned id = 101; id <= 300; ++id) ASSERT_EQ(own_attributes(at(id)), Texts({"user:9>"})) << id;
}

TEST_F(IndexedFiles, AuxMapInAnyOrderOfRegionsAndRecords_EachPairRead) {
  for (const char* const order : {"gmr", "mrg", "rgm", "rmg"}) {
    set_std({.entries = numbered_entries(1, 20)});
    LdfFile aux{.region_order = order, .gap = "between"};
    std::vector<LdfPair> map;
    for (unsigned i = 0; i < 40; ++i) {
      const unsigned id = i % 2 == 0 ? 1 + i / 2 : 100 + i;
      aux.entries.push_back({.id = id, .attributes = {{"more", 2}}});
      map.push_back({id, i});
    }
    std::reverse(map.begin(), map.end());
    aux.map = map;
    set_aux(aux);
    for (unsigned id = 1; id <= 20; ++id) ASSERT_EQ(own_attributes(at(id)), Texts({"user:9>", "more:2>"})) << order;
    for (unsigned i = 1; i < 40; i += 2) ASSERT_EQ(own_attributes(at(100 + i)), Texts({"more:2>"})) << order;
  }
}

TEST_F(IndexedFiles, AuxMapLongerThanAStreamBuffer_EachPairRead) {
  set_std({.entries = numbered_entries(1, 2000)});
  LdfFile aux;
  for (unsigned id = 1; id <= 6000; ++id) {
    const bool known = id % 500 == 0;
    aux.entries.push_back({.id = known ? id / 500 : 10000 + id, .word = id, .attributes = {{"more", 2}}});
  }
  set_aux(aux);
  for (unsigned id = 1; id <= 12; ++id) ASSERT_EQ(own_attributes(at(id)), Texts({"user:9>", "more:2>"})) << id;
  for (unsigned id = 1; id <= 6000; ++id) {
    ASSERT_TRUE(id % 500 == 0 || at(10000 + id).get_entry_word() == id) << id;
  }
}

TEST_F(IndexedFiles, RandomAuxFiles_TracedOrNotTheSame) {
  SeededRandom random;
  for (int round = 0; round < 20; ++round) {
    LdfFile aux;
    for (int i = 0; i < 150; ++i) {
      const auto id = static_cast<unsigned>(random.between(1, 250));
      aux.entries.push_back({.id = id, .word = static_cast<unsigned>(i), .attributes = {{"a" + std::to_string(i), 2}}});
    }
    std::vector<Texts> seen[2];
    for (const int level : {0, 3}) {
      const DebugLogFile log(level);
      set_std({.entries = numbered_entries(1, 180)});
      set_aux(aux);
      for (unsigned id = 1; id <= 250; ++id) {
        const auto* const definition = table_.find_entry(id);
        seen[level / 3].push_back(definition == nullptr ? Texts() : own_attributes(*definition));
      }
    }
    ASSERT_EQ(seen[0], seen[1]);
  }
}

}  // namespace
