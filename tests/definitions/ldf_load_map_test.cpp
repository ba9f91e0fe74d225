#include <algorithm>
#include <string>
#include <vector>

#include "tests/definitions/table_test.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

constexpr unsigned kMany = 100000;

using LdfMap = TableTest;

std::string text_of(const _qz_LOG_log_definition* definition) {
  if (definition == nullptr) return "(none)";
  const char* const text = definition->get_default_msg_text();
  return text == nullptr ? "(null)" : text;
}

TEST_F(LdfMap, ManyIds_EachFoundAndOthersNot) {
  set_std({.entries = numbered_entries(1, kMany)});
  for (const unsigned id : {1U, 2U, 50000U, kMany - 1, kMany}) {
    EXPECT_EQ(text_of(table_.find_entry(id)), "entry " + std::to_string(id) + " of %s%user%");
  }
  for (const unsigned id : {0U, kMany + 1, 0xFFFFFFFFU}) EXPECT_EQ(table_.find_entry(id), nullptr) << id;
  for (unsigned id = 7; id <= kMany; id += 997) ASSERT_EQ(at(id).get_entry_word(), id + 1);
}

TEST_F(LdfMap, IdsInStepsOf65536_EachFound) {
  LdfFile file;
  for (unsigned i = 0; i < 3000; ++i) file.entries.push_back({.id = i << 16, .message_text = std::to_string(i)});
  set_std(file);
  for (unsigned i = 0; i < 3000; ++i) ASSERT_EQ(text_of(table_.find_entry(i << 16)), std::to_string(i));
  EXPECT_EQ(table_.find_entry(1), nullptr);
}

TEST_F(LdfMap, IdTwiceInOneMap_TheLastRecord) {
  set_std({.entries = {{.id = 7, .message_text = "first"},
                       {.id = 8, .message_text = "eight"},
                       {.id = 7, .message_text = "second"}}});
  EXPECT_EQ(text_of(table_.find_entry(7)), "second");
  EXPECT_EQ(text_of(table_.find_entry(8)), "eight");
}

TEST_F(LdfMap, IdTwiceInOneMapTraced_TheLastRecord) {
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

TEST_F(LdfMap, NewIdTwiceInAnAuxMap_BothRecordsMergedUntilEvicted) {
  set_std({.entries = numbered_entries(1, 200)});
  set_aux({.entries = {{.id = 300, .word = 1, .attributes = {{"one", 2}}},
                       {.id = 300, .word = 2, .attributes = {{"two", 2}}}}});
  EXPECT_EQ(own_attributes(at(300)), Texts({"one:2>", "two:2>"}));
  for (unsigned id = 1; id <= 128; ++id) at(id);
  EXPECT_EQ(own_attributes(at(300)), Texts({"two:2>"}));
  EXPECT_EQ(at(300).get_entry_word(), 2U);
}

TEST_F(LdfMap, TinyFileThatClaims4BillionEntries_UnreadableWithoutMuchMemory) {
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

TEST_F(LdfMap, MapBehindTheEndOfTheFile_UnreadableWithoutMuchMemory) {
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

TEST_F(LdfMap, AuxMapOfKnownAndUnknownIdsInTurn_EachPairRead) {
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

TEST_F(LdfMap, AuxMapInAnyOrderOfRegionsAndRecords_EachPairRead) {
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

TEST_F(LdfMap, AuxMapLongerThanAStreamBuffer_EachPairRead) {
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

TEST_F(LdfMap, RandomAuxFiles_TracedOrNotTheSame) {
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
