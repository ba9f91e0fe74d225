#include "definitions/definition_hold.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "qzlog/debug_log.h"
#include "tests/definitions/table_test.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

void in_thread(const std::function<void()>& work) { std::thread(work).join(); }

bool is_right(const _qz_LOG_log_definition& definition, unsigned id) {
  return definition.get_entry_id() == id && definition.get_entry_word() == id + 1 &&
         own_attributes(definition) == Texts({"user:9>"}) &&
         default_message(definition) == "MSG_" + std::to_string(id) + "|entry " + std::to_string(id) + " of %s%user%";
}

bool is_right(const DefinitionHoldRef& hold, unsigned id) { return hold && is_right(hold->definition(), id); }

// ---- the holds of a table's lookups ----

class DefinitionHold : public TableTest {
 protected:
  static constexpr unsigned kIds = 700;

  DefinitionHold() { set_std({.tag = "std", .entries = numbered_entries(1, kIds)}); }

  /// Looks up so many other IDs that nothing of what was cached is cached any more.
  void evict_all() {
    for (unsigned id = kIds - 2 * _qz_LOG_log_definition_tbl::kCacheSize; id <= kIds; ++id) at(id);
  }
};

TEST_F(DefinitionHold, UnknownId_NoHold) {
  EXPECT_FALSE(table_.hold_entry(kIds + 1));
  EXPECT_FALSE(table_.hold_entry(0));
  EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
  EXPECT_FALSE(table_.hold_entry(kIds + 1));
}

TEST_F(DefinitionHold, SameIdAgain_SameHoldOnTheCachedDefinition) {
  const auto first = table_.hold_entry(1);
  const auto second = table_.hold_entry(1);
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(&first->definition(), &at(1));
  in_thread([&] {
    const auto other = table_.hold_entry(1);
    EXPECT_NE(other.get(), first.get());
    EXPECT_EQ(&other->definition(), &first->definition());
  });
}

TEST_F(DefinitionHold, Evicted_HeldOneStaysAndTheNextIsReadAnew) {
  const auto held = table_.hold_entry(1);
  held->definition().add_attr_info("at_run_time", TypeBool, false, nullptr);
  EXPECT_EQ(own_attributes(table_.hold_entry(1)->definition()), Texts({"user:9>", "at_run_time:1>(null)"}));
  evict_all();
  EXPECT_EQ(own_attributes(held->definition()), Texts({"user:9>", "at_run_time:1>(null)"}));
  const auto fresh = table_.hold_entry(1);
  EXPECT_NE(&fresh->definition(), &held->definition());
  EXPECT_TRUE(is_right(fresh, 1));
  EXPECT_EQ(table_.hold_entry(1).get(), fresh.get());
}

TEST_F(DefinitionHold, NothingHeldWhenEvicted_NextIsReadAnew) {
  table_.hold_entry(1)->definition().add_attr_info("at_run_time", TypeBool, false, nullptr);
  evict_all();
  EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
}

TEST_F(DefinitionHold, EvictedByAnotherThread_NextIsReadAnew) {
  table_.hold_entry(1)->definition().set_default_msg_text("changed");
  EXPECT_STREQ(table_.hold_entry(1)->definition().get_default_msg_text(), "changed");
  in_thread([&] { evict_all(); });
  EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
}

TEST_F(DefinitionHold, EvictedAndReadAgainByAnotherThread_TheCachedDefinition) {
  const auto held = table_.hold_entry(1);
  in_thread([&] {
    evict_all();
    at(1);
  });
  EXPECT_NE(&table_.hold_entry(1)->definition(), &held->definition());
  EXPECT_EQ(&table_.hold_entry(1)->definition(), &at(1));
}

TEST_F(DefinitionHold, AuxMerge_SeenByThreadsThatHeldTheDefinition) {
  const auto held = table_.hold_entry(1);
  set_aux({.tag = "aux", .entries = {{.id = 1, .word = 9, .attributes = {{"more", 2}}}}});
  EXPECT_EQ(own_attributes(held->definition()), Texts({"user:9>", "more:2>"}));
  EXPECT_EQ(table_.hold_entry(1).get(), held.get());
  EXPECT_EQ(table_.hold_entry(1)->definition().get_entry_word(), 9U);
  EXPECT_STREQ(table_.hold_entry(1)->definition().get_version_tag(), "aux");
}

TEST_F(DefinitionHold, AuxExtendedAndEvicted_OnlyTheAuxHalfIsReadAgain) {
  set_aux({.tag = "aux", .entries = {{.id = 1, .word = 77, .mask = 88, .attributes = {{"more", 2}}}}});
  EXPECT_EQ(own_attributes(table_.hold_entry(1)->definition()), Texts({"user:9>", "more:2>"}));
  evict_all();
  EXPECT_EQ(own_attributes(table_.hold_entry(1)->definition()), Texts({"more:2>"}));
  EXPECT_EQ(table_.hold_entry(1)->definition().get_property_mask(), 88U);
}

TEST_F(DefinitionHold, AuxMergeOfAnEvictedDefinition_HeldOneUnchangedAndTheNextMerged) {
  const auto held = table_.hold_entry(1);
  evict_all();
  set_aux({.entries = {{.id = 1, .attributes = {{"more", 2}}}}});
  EXPECT_TRUE(is_right(held, 1));
  EXPECT_EQ(own_attributes(table_.hold_entry(1)->definition()), Texts({"user:9>", "more:2>"}));
}

TEST_F(DefinitionHold, TableCleared_HeldOneStaysAndLookupsFindNothing) {
  const auto held = table_.hold_entry(1);
  table_.clear();
  EXPECT_TRUE(is_right(held, 1));
  EXPECT_FALSE(table_.hold_entry(1));
  EXPECT_FALSE(table_.hold_entry(1));
}

TEST_F(DefinitionHold, FilesLoadedAgain_HeldOneStaysAndTheNextIsTheNewOne) {
  const auto held = table_.hold_entry(1);
  set_std({.tag = "new", .entries = {{.id = 1, .message_text = "new text"}}});
  EXPECT_TRUE(is_right(held, 1));
  EXPECT_STREQ(table_.hold_entry(1)->definition().get_default_msg_text(), "new text");
  EXPECT_STREQ(table_.hold_entry(1)->definition().get_version_tag(), "new");
  EXPECT_FALSE(table_.hold_entry(2));
}

TEST_F(DefinitionHold, LoadingFails_LookupsFindNothing) {
  EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
  EXPECT_EQ(thrown_by([&] { set_std_bytes("no definition file"); }), invalid_definition(kUnreadable));
  EXPECT_FALSE(table_.hold_entry(1));
}

TEST_F(DefinitionHold, MadeByAThreadThatEnded_GoodAndReleasedElsewhere) {
  DefinitionHoldRef held;
  in_thread([&] { held = table_.hold_entry(1); });
  EXPECT_TRUE(is_right(held, 1));
  table_.clear();
  EXPECT_TRUE(is_right(held, 1));
  in_thread([moved = std::make_shared<DefinitionHoldRef>(std::move(held))]() mutable {
    EXPECT_TRUE(is_right(*moved, 1));
    moved.reset();
  });
}

TEST_F(DefinitionHold, ReleasedInEveryOrderByItsThreadAnotherAndTheThreadsEnd_GoodUntilThen) {
  std::vector<std::string> orders = {"end", "other", "own"};  // sorted
  do {
    set_std({.entries = numbered_entries(1, kIds)});
    DefinitionHoldRef own;
    DefinitionHoldRef other;
    auto step = orders.begin();
    const auto take_steps = [&] {
      for (; step != orders.end() && *step != "end"; ++step) {
        DefinitionHoldRef& released = *step == "own" ? own : other;
        EXPECT_TRUE(is_right(released, 1));
        if (*step == "own") {
          released = {};
        } else {
          in_thread([&] { released = {}; });
        }
      }
    };
    in_thread([&] {
      own = table_.hold_entry(1);
      other = table_.hold_entry(1);
      table_.clear();
      take_steps();
    });
    ++step;
    take_steps();
  } while (std::next_permutation(orders.begin(), orders.end()));
}

TEST_F(DefinitionHold, MadeHereAndReleasedElsewhereOverAndOver_Good) {
  for (int round = 0; round < 50; ++round) {
    std::vector<DefinitionHoldRef> handed_over;
    for (int i = 0; i < 100; ++i) handed_over.push_back(table_.hold_entry(1));
    const auto kept = table_.hold_entry(1);
    in_thread([&] { handed_over.clear(); });
    EXPECT_TRUE(is_right(kept, 1));
    if (round % 10 == 9) evict_all();
    EXPECT_TRUE(is_right(kept, 1));
  }
  EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
}

TEST_F(DefinitionHold, ThreadsOneAfterAnother_EachItsOwnHoldsOnWhatIsCached) {
  for (unsigned round = 1; round <= 20; ++round) {
    in_thread([&] {
      for (unsigned id = round; id < round + 40; ++id) ASSERT_TRUE(is_right(table_.hold_entry(id), id)) << id;
    });
  }
}

TEST_F(DefinitionHold, TwoTablesWithTheSameId_EachItsOwnDefinition) {
  const LdfFile file{.entries = {{.id = 1, .message_text = "other"}, {.id = 2, .message_text = "other 2"}}};
  _qz_LOG_log_definition_tbl other;
  other.set_precompiled_definition_file_path(write("other.ldf", file.bytes()).c_str());
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(is_right(table_.hold_entry(1), 1));
    EXPECT_STREQ(other.hold_entry(1)->definition().get_default_msg_text(), "other");
    EXPECT_TRUE(is_right(table_.hold_entry(3), 3));
    EXPECT_FALSE(other.hold_entry(3));
    EXPECT_TRUE(is_right(table_.hold_entry(3), 3));
  }
}

TEST_F(DefinitionHold, TableAtThePlaceOfADestroyedOne_ItsOwnDefinitions) {
  std::optional<_qz_LOG_log_definition_tbl> table;
  DefinitionHoldRef held;
  for (const char* const text : {"first", "second", "third"}) {
    const LdfFile file{.entries = {{.id = 1, .message_text = text}}};
    table.emplace().set_precompiled_definition_file_path(write("one.ldf", file.bytes()).c_str());
    const auto hold = table->hold_entry(1);
    EXPECT_STREQ(hold->definition().get_default_msg_text(), text);
    if (!held) held = table->hold_entry(1);
  }
  table.reset();
  EXPECT_STREQ(held->definition().get_default_msg_text(), "first");
}

TEST_F(DefinitionHold, MoreIdsThanAThreadHoldsAllInUse_EachRight) {
  std::vector<DefinitionHoldRef> held;
  for (unsigned id = 1; id <= kIds; ++id) held.push_back(table_.hold_entry(id));
  for (unsigned id = 1; id <= kIds; ++id) ASSERT_TRUE(is_right(held[id - 1], id)) << id;
  for (unsigned id = kIds; id > 0; --id) ASSERT_TRUE(is_right(table_.hold_entry(id), id)) << id;
}

TEST_F(DefinitionHold, ThreeTablesFullOfCachedDefinitions_EachRight) {
  constexpr unsigned kCached = _qz_LOG_log_definition_tbl::kCacheSize;
  _qz_LOG_log_definition_tbl tables[3];
  for (unsigned i = 0; i < 3; ++i) {
    const LdfFile file{.entries = numbered_entries(1 + i * kCached, (i + 1) * kCached)};
    tables[i].set_precompiled_definition_file_path(write("part.ldf", file.bytes()).c_str());
  }
  for (int round = 0; round < 3; ++round) {
    for (unsigned id = 1; id <= 3 * kCached; ++id) {
      const _qz_LOG_log_definition_tbl& table = tables[(id - 1) / kCached];
      const auto hold = table.hold_entry(id);
      ASSERT_TRUE(is_right(hold, id)) << id;
      ASSERT_EQ(&hold->definition(), table.find_entry(id)) << id;
    }
  }
}

TEST_F(DefinitionHold, RandomLookupsEvictionsAndReloads_AlwaysWhatTheTableAnswers) {
  SeededRandom random;
  std::vector<std::pair<unsigned, DefinitionHoldRef>> held;
  for (int i = 0; i < 20000; ++i) {
    const auto id = static_cast<unsigned>(random.one_in(3) ? random.between(1, kIds + 5) : random.between(1, 60));
    auto hold = table_.hold_entry(id);
    ASSERT_EQ(hold ? &hold->definition() : nullptr, table_.find_entry(id)) << id;
    if (hold && random.one_in(2)) held.emplace_back(id, std::move(hold));
    if (random.one_in(400)) held.clear();
    if (random.one_in(2000)) set_std({.tag = "std", .entries = numbered_entries(1, kIds)});
  }
  for (const auto& [id, hold] : held) EXPECT_TRUE(is_right(hold, id)) << id;
}

// ---- traced lookups ----

/// The records of a course of lookups, each done with `look_up`, through a table of their own.
Texts records_of(const std::string& path, const std::function<void(_qz_LOG_log_definition_tbl&, unsigned)>& look_up) {
  _qz_LOG_log_definition_tbl table;
  table.set_precompiled_definition_file_path(path.c_str());
  const DebugLogFile log(3);
  for (const unsigned id : {1U, 1U, 2U, 1U, 999U, 999U, 1U}) look_up(table, id);
  for (unsigned id = 2; id <= 140; ++id) look_up(table, id);
  for (const unsigned id : {1U, 1U, 140U}) look_up(table, id);
  return log.records();
}

TEST_F(DefinitionHold, Traced_RecordsOfAPlainLookup) {
  const std::string path = folder_.path("std.ldf");
  const Texts wanted = records_of(path, [](auto& table, unsigned id) { table.find_entry(id); });
  EXPECT_GT(wanted.size(), 300U);
  EXPECT_EQ(records_of(path, [](auto& table, unsigned id) { table.hold_entry(id); }), wanted);
  std::vector<DefinitionHoldRef> held;
  EXPECT_EQ(records_of(path, [&](auto& table, unsigned id) { held.push_back(table.hold_entry(id)); }), wanted);
}

TEST_F(DefinitionHold, TracedWhenTheThreadHoldsTheDefinition_TheCountRecordEachTime) {
  const auto held = table_.hold_entry(1);
  table_.hold_entry(2);
  const DebugLogFile log(3);
  const std::string record =
      "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const n_entry_definitions_cached:2\n";
  EXPECT_EQ(table_.hold_entry(1).get(), held.get());
  EXPECT_EQ(log.unnumbered_records(), Texts({record}));
  EnableDebugLog(9);
  EXPECT_EQ(table_.hold_entry(1).get(), held.get());
  EXPECT_EQ(log.unnumbered_records(), Texts({record, record}));
  EnableDebugLog(2);
  EXPECT_EQ(table_.hold_entry(1).get(), held.get());
  EXPECT_EQ(log.unnumbered_records(), Texts({record, record}));
}

// ---- out of memory ----

/// Looks up an ID for the first time in a new thread, whose nth allocation fails, and then again in that thread;
/// whether an allocation did fail.
bool first_lookup_fails(const _qz_LOG_log_definition_tbl& table, unsigned nth) {
  bool happened = false;
  in_thread([&] {
    const std::string thrown = thrown_by([&] {
      const AllocationFailure failure(nth);
      struct Note {
        ~Note() { happened = failure.happened(); }
        const AllocationFailure& failure;
        bool& happened;
      } note{failure, happened};
      table.hold_entry(1);
    });
    EXPECT_EQ(thrown, happened ? kNoMemory : "nothing") << "at allocation " << nth;
    EXPECT_TRUE(is_right(table.hold_entry(1), 1));
    EXPECT_EQ(&table.hold_entry(1)->definition(), table.find_entry(1));
  });
  return happened;
}

TEST_F(DefinitionHold, FirstLookupOfAThreadWithoutMemory_MemoryAllocAndTheNextLookupRight) {
  const std::string path = folder_.path("std.ldf");
  unsigned nth = 0;
  bool happened = true;
  while (happened) {
    _qz_LOG_log_definition_tbl table;
    table.set_precompiled_definition_file_path(path.c_str());
    happened = first_lookup_fails(table, ++nth);
    EXPECT_TRUE(is_right(table.hold_entry(1), 1));
    EXPECT_TRUE(is_right(table.hold_entry(2), 2));
  }
  EXPECT_GT(nth, 8U);
}

TEST_F(DefinitionHold, RoomForMoreIdsWithoutMemory_MemoryAllocAndAllHoldsStay) {
  std::vector<DefinitionHoldRef> held;
  in_thread([&] {
    for (unsigned id = 1; id <= ThreadHolds::kMostHolds; ++id) held.push_back(table_.hold_entry(id));
    const unsigned next = ThreadHolds::kMostHolds + 1;
    at(next);
    EXPECT_EQ(FailEveryAllocation([&] { table_.hold_entry(next); }, [&] { EXPECT_TRUE(is_right(held.front(), 1)); }),
              1U);
    EXPECT_EQ(table_.hold_entry(next - 1).get(), held.back().get());
    EXPECT_TRUE(is_right(table_.hold_entry(next), next));
  });
  for (unsigned id = 1; id <= held.size(); ++id) ASSERT_TRUE(is_right(held[id - 1], id)) << id;
}

// ---- after the thread's end ----

struct LookUpAtTheEnd {
  ~LookUpAtTheEnd() {
    if (table == nullptr) return;
    const auto hold = table->hold_entry(1);
    const auto again = table->hold_entry(1);
    *good = is_right(hold, 1) && is_right(again, 1) && is_right(*kept, 1);
    kept->~CountedRef();
    new (kept) DefinitionHoldRef(table->hold_entry(2));
  }
  const _qz_LOG_log_definition_tbl* table = nullptr;
  bool* good = nullptr;
  DefinitionHoldRef* kept = nullptr;
};

TEST_F(DefinitionHold, LookupsInDestructorsAfterTheThreadsHoldsAreGone_Right) {
  bool good = false;
  DefinitionHoldRef kept;
  in_thread([&] {
    static thread_local LookUpAtTheEnd at_end;
    at_end.table = &table_;
    at_end.good = &good;
    at_end.kept = &kept;
    kept = table_.hold_entry(1);
  });
  EXPECT_TRUE(good);
  table_.clear();
  EXPECT_TRUE(is_right(kept, 2));
}

// ---- one thread's holds by themselves ----

DefinitionRef new_definition(const std::string& text) {
  DefinitionRef definition(new _qz_LOG_log_definition);
  definition->set_default_msg_text(text.c_str());
  return definition;
}

std::string text_of(const qzlog::DefinitionHold* hold) {
  return hold == nullptr ? "(none)" : hold->definition().get_default_msg_text();
}

TEST(ThreadHolds, NothingKept_NothingFound) {
  const ThreadHolds holds;
  for (const unsigned id : {0U, 1U, 511U, 512U, 0xFFFFFFFFU}) EXPECT_EQ(holds.find(id), nullptr) << id;
}

TEST(ThreadHolds, Id0_FoundOnlyWhenKept) {
  ThreadHolds holds;
  holds.keep(1, new_definition("one"));
  EXPECT_EQ(holds.find(0), nullptr);
  holds.keep(0, new_definition("zero"));
  EXPECT_EQ(text_of(holds.find(0)), "zero");
  EXPECT_EQ(text_of(holds.find(1)), "one");
}

TEST(ThreadHolds, SameDefinitionKeptAgain_SameHold) {
  ThreadHolds holds;
  const auto definition = new_definition("same");
  const auto first = holds.keep(7, DefinitionRef::share(definition.get()));
  const auto second = holds.keep(7, DefinitionRef::share(definition.get()));
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(holds.find(7), first.get());
}

TEST(ThreadHolds, AnotherDefinitionOfTheId_ReplacesWhoseHoldersKeepTheirs) {
  ThreadHolds holds;
  const auto former = holds.keep(7, new_definition("former"));
  const auto latter = holds.keep(7, new_definition("latter"));
  EXPECT_EQ(text_of(former.get()), "former");
  EXPECT_EQ(text_of(holds.find(7)), "latter");
}

/// Where the search for an ID begins, of 256 cells.
unsigned first_cell(unsigned id) { return id * 0x9E3779B1U >> 24; }

std::vector<unsigned> ids_of_cell(unsigned cell, std::size_t count) {
  std::vector<unsigned> ids;
  for (unsigned id = 1; ids.size() < count; ++id) {
    if (first_cell(id) == cell) ids.push_back(id);
  }
  return ids;
}

TEST(ThreadHolds, IdsThatCollide_EachItsOwn) {
  for (const unsigned cell : {0U, 150U, 255U}) {
    ThreadHolds holds;
    const std::vector<unsigned> ids = ids_of_cell(cell, ThreadHolds::kMostHolds);
    for (const unsigned id : ids) holds.keep(id, new_definition(std::to_string(id)));
    for (const unsigned id : ids) ASSERT_EQ(text_of(holds.find(id)), std::to_string(id)) << id;
    for (const unsigned id : ids_of_cell(cell, 200)) {
      const bool kept = std::find(ids.begin(), ids.end(), id) != ids.end();
      ASSERT_EQ(holds.find(id) != nullptr, kept) << id;
    }
  }
}

TEST(ThreadHolds, RandomIdsBeyondTheMost_LastKeptAlwaysFoundAndNeverAnothers) {
  SeededRandom random;
  ThreadHolds holds;
  std::map<unsigned, std::string> newest;
  for (int i = 0; i < 20000; ++i) {
    const auto id = static_cast<unsigned>(random.one_in(2) ? random.between(0, 400) : random.between(0, 400) << 22);
    const std::string text = std::to_string(i);
    ASSERT_EQ(text_of(holds.keep(id, new_definition(text)).get()), text);
    newest[id] = text;
    ASSERT_EQ(text_of(holds.find(id)), text);
    const auto other = static_cast<unsigned>(random.between(0, 400));
    // It may have been given up, but it is not a former one.
    const qzlog::DefinitionHold* const found = holds.find(other);
    ASSERT_TRUE(found == nullptr || text_of(found) == newest[other]);
  }
}

}  // namespace
