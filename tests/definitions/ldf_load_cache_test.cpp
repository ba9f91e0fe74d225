#include <algorithm>
#include <memory>
#include <vector>

#include "qzlog/debug_log.h"
#include "qzlog/logentry.h"
#include "tests/definitions/table_test.h"
#include "tests/support/settings_test.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

// ---- first in, first out ----

class LdfCache : public TableTest {
 protected:
  LdfCache() {
    set_std({.tag = "std", .entries = numbered_entries(1, 300)});
    EnableDebugLog(3);
  }

  /// Whether the cache has the ID; a lookup that hits leaves one record and changes nothing.
  bool is_cached(unsigned id) {
    log_.clear();
    at(id);
    return log_.records().size() == 1;
  }
  void look_up(unsigned first, unsigned last) {
    EnableDebugLog(0);
    for (unsigned id = first; id <= last; ++id) at(id);
    EnableDebugLog(3);
  }
  void expect_cached(unsigned first, unsigned last) {
    for (unsigned id = first; id <= last; ++id) EXPECT_TRUE(is_cached(id)) << id;
  }
  /// That the ID is gone. The lookup reads it again, which evicts the oldest.
  void expect_evicted(unsigned id) { EXPECT_FALSE(is_cached(id)) << id; }
  std::string last_record() const {
    const Texts records = log_.unnumbered_records();
    return records.empty() ? "" : records.back();
  }

  DebugLogFile log_{0};
};

TEST_F(LdfCache, First128Ids_AllCached) {
  look_up(1, 127);
  EXPECT_FALSE(is_cached(128));
  EXPECT_EQ(last_record(),
            "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const return p_entry_definition 128\n");
  expect_cached(1, 128);
}

TEST_F(LdfCache, The129thId_EvictsTheFirst) {
  look_up(1, 128);
  EXPECT_FALSE(is_cached(129));
  EXPECT_EQ(last_record(),
            "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const return p_entry_definition 128\n");
  expect_cached(2, 129);
  expect_evicted(1);
}

TEST_F(LdfCache, The130thId_EvictsTheSecond) {
  look_up(1, 130);
  expect_cached(3, 130);
  expect_evicted(2);
}

TEST_F(LdfCache, After128Evictions_TheFirstPlaceAgain) {
  look_up(1, 256);
  expect_cached(129, 256);
  look_up(257, 257);
  expect_cached(130, 257);
  expect_evicted(129);
}

TEST_F(LdfCache, BufferingStopped_RecordsReadAsBefore) {
  set_std({.tag = "std", .entries = numbered_entries(1, 200)});
  set_aux({.entries = numbered_entries(201, 300)});
  look_up(1, 10);
  EnableDebugLog(0);
  for (int time = 0; time < 2; ++time) {
    table_.stop_buffering();
    for (unsigned id = 1; id <= 300; ++id) {
      ASSERT_EQ(default_message(at(id)), "MSG_" + std::to_string(id) + "|entry " + std::to_string(id) + " of %s%user%");
    }
  }
  _qz_LOG_log_definition_tbl empty;
  empty.stop_buffering();
}

TEST_F(LdfCache, IdsUsedMeanwhile_EvictedAllTheSame) {
  look_up(1, 128);
  for (int i = 0; i < 10; ++i) look_up(1, 2);
  look_up(129, 129);
  EXPECT_TRUE(is_cached(2));
  expect_evicted(1);
}

TEST_F(LdfCache, UnknownIdsMeanwhile_EvictNothing) {
  look_up(1, 128);
  for (unsigned id = 1000; id < 1300; ++id) EXPECT_EQ(table_.find_entry(id), nullptr);
  expect_cached(1, 128);
}

TEST_F(LdfCache, EvictedDefinition_ReadAgainAlike) {
  look_up(1, 129);
  EXPECT_EQ(at(1).get_entry_word(), 2U);
  EXPECT_EQ(at(1).get_property_mask(), 3U);
  EXPECT_EQ(default_message(at(1)), "MSG_1|entry 1 of %s%user%");
  EXPECT_EQ(own_attributes(at(1)), Texts({"user:9>"}));
}

TEST_F(LdfCache, FullCacheCleared_StartsFromTheFirstPlace) {
  look_up(1, 150);
  table_.clear();
  set_std({.entries = numbered_entries(1, 300)});
  look_up(201, 299);
  look_up(101, 129);
  expect_cached(201, 299);
  expect_cached(101, 129);
  look_up(1, 1);
  expect_evicted(201);
}

TEST_F(LdfCache, HeldReference_OutlivesEvictionAndClearing) {
  const auto held = table_.acquire_entry(1);
  look_up(2, 257);
  EXPECT_EQ(default_message(*held.get()), "MSG_1|entry 1 of %s%user%");
  const auto again = table_.acquire_entry(1);
  EXPECT_NE(again.get(), held.get());
  table_.clear();
  EXPECT_EQ(own_attributes(*held.get()), Texts({"user:9>"}));
  EXPECT_EQ(own_attributes(*again.get()), Texts({"user:9>"}));
}

TEST_F(LdfCache, RandomLookups_CacheAsAPlainQueue) {
  SeededRandom random;
  std::vector<unsigned> queue;
  for (int i = 0; i < 1500; ++i) {
    const auto id = static_cast<unsigned>(random.between(1, 160));
    const bool expected = std::find(queue.begin(), queue.end(), id) != queue.end();
    ASSERT_EQ(is_cached(id), expected) << id;
    if (expected) continue;
    queue.push_back(id);
    if (queue.size() > 128) queue.erase(queue.begin());
  }
}

TEST_F(LdfCache, MergedDefinitionEvicted_OnlyTheAuxHalfIsReadAgain) {
  EnableDebugLog(0);
  set_aux({.tag = "aux",
           .entries = {{.id = 1, .word = 77, .mask = 88, .message_id = "ONLY_ID", .attributes = {{"more", 2}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"user:9>", "more:2>"}));
  EXPECT_EQ(at(1).get_property_mask(), 3U);
  EXPECT_EQ(default_message(at(1)), "MSG_1|entry 1 of %s%user%");
  look_up(2, 129);
  EXPECT_EQ(own_attributes(at(1)), Texts({"more:2>"}));
  EXPECT_EQ(at(1).get_property_mask(), 88U);
  EXPECT_EQ(at(1).get_entry_word(), 77U);
  EXPECT_EQ(default_message(at(1)), "(null)|(null)");
  EXPECT_STREQ(at(1).get_version_tag(), "aux");
}

TEST_F(LdfCache, AuxFileExtends200StdIds_MergedOnesLostBeyond128) {
  EnableDebugLog(0);
  LdfFile aux{.entries = numbered_entries(1, 200)};
  for (LdfEntry& entry : aux.entries) entry.attributes = {{"more", 2}};
  set_aux(aux);
  // The last 128 are still there as merged, the first ones have been evicted while loading.
  for (const unsigned id : {73U, 200U}) EXPECT_EQ(own_attributes(at(id)), Texts({"user:9>", "more:2>"})) << id;
  for (const unsigned id : {1U, 72U}) EXPECT_EQ(own_attributes(at(id)), Texts({"more:2>"})) << id;
}

// ---- entries that use definitions ----

class LdfEntries : public SettingsTest {
 protected:
  static constexpr unsigned kIds = 257;

  LdfEntries() { set_std("one", numbered_entries(1, kIds)); }

  void set_std(const char* tag, const std::vector<LdfEntry>& entries, const std::vector<LdfAttribute>& globals = {}) {
    const LdfFile file{.tag = tag, .globals = globals, .entries = entries};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  }

  void make_entries(unsigned count) {
    for (unsigned id = 1; id <= count; ++id) {
      entries_.push_back(std::make_unique<qz_LOG_LogEntry>(id, 0));
      entries_.back()->AddAttribStr("user", ("first" + std::to_string(id)).c_str());
    }
  }

  /// That each entry can be read, added to and rendered by the definition it was made with.
  void expect_entries_usable(const std::string& user) {
    for (const auto& entry : entries_) {
      const std::string number = std::to_string(entry->GetEntryID());
      qz_AttributeType type = TypeUnknown;
      EXPECT_EQ(entry->CheckAttribute("user", type), 0);
      EXPECT_EQ(type, TypeChar32);
      entry->AddAttribStr("user", (user + number).c_str());
      EXPECT_STREQ(entry->GetAttribStr("user"), (user + number).c_str());
      EXPECT_EQ(entry->FormatMessage(), "entry " + number + " of " + user + number);
      EXPECT_EQ(entry->GetPropertyMask(), entry->GetEntryID() + 2);
      EXPECT_EQ(thrown_by([&] { entry->AddAttrib4("user", 1); }),
                thrown<QZX_logging_attribute_type_mismatch>(wrong_method(*entry).c_str()));
    }
  }

  static std::string wrong_method(const qz_LOG_LogEntry& entry) {
    return "Used the wrong add method under Entry ID " + std::to_string(entry.GetEntryID()) + " !";
  }

  std::vector<std::unique_ptr<qz_LOG_LogEntry>> entries_;
};

TEST_F(LdfEntries, AliveAcrossEviction_KeepTheirDefinitions) {
  for (const unsigned count : {128U, 129U, 130U, 257U}) {
    SCOPED_TRACE(count);
    entries_.clear();
    make_entries(count);
    expect_entries_usable("second");
  }
}

TEST_F(LdfEntries, AliveAcrossClearing_KeepTheirDefinitions) {
  make_entries(kIds);
  qz_LOG_LogConfig::ClearDefinitions();
  expect_entries_usable("second");
  EXPECT_EQ(thrown_by([] { qz_LOG_LogEntry(1, 0); }),
            thrown<QZX_logging_entry_type_not_found>("Entry id argument is invalid"));
}

TEST_F(LdfEntries, AliveAcrossReload_KeepTheirDefinitionsWhileNewOnesGetTheNew) {
  make_entries(kIds);
  set_std("two", {{.id = 1, .message_text = "changed %u%other%", .attributes = {{"other", TypeUInt4}}}});
  expect_entries_usable("second");
  qz_LOG_LogEntry changed(1, 0);
  changed.AddAttrib4u("other", 5);
  EXPECT_EQ(changed.FormatMessage(), "changed 5");
  expect_entries_usable("third");
}

TEST_F(LdfEntries, AliveAcrossFailedReload_KeepTheirDefinitions) {
  make_entries(130);
  const std::string path = folder_.write("broken.ldf", "not a definition file");
  EXPECT_EQ(thrown_by([&] { qz_LOG_LogConfig::SetDefinitionPath(path.c_str()); }),
            thrown<QZX_logging_invalid_definition>(kUnreadable));
  expect_entries_usable("second");
}

TEST_F(LdfEntries, AliveAcrossAuxLoad_SeeTheMergedAttributes) {
  make_entries(1);
  const LdfFile aux{.entries = {{.id = 1, .attributes = {{"more", TypeUInt4}}}}};
  qz_LOG_LogConfig::SetAuxDefinitionPath(folder_.write("aux.ldf", aux.bytes()).c_str());
  entries_[0]->AddAttrib4u("more", 5);
  EXPECT_EQ(entries_[0]->GetAttrib4u("more"), 5U);
  expect_entries_usable("second");
}

TEST_F(LdfEntries, CopiesOfEntriesWithEvictedDefinitions_Usable) {
  make_entries(kIds);
  const qz_LOG_LogEntry copy(*entries_[0]);
  EXPECT_EQ(copy.FormatMessage(), "entry 1 of first1");
  entries_.clear();
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(copy.FormatMessage(), "entry 1 of first1");
}

TEST_F(LdfEntries, IdChangedAcrossEviction_EachDefinitionKeptOnlyWhileUsed) {
  qz_LOG_LogEntry entry(1, 0);
  for (unsigned round = 0; round < 3; ++round) {
    for (unsigned id = 1; id <= kIds; ++id) {
      entry.SetEntryID(id);
      EXPECT_EQ(entry.GetPropertyMask(), id + 2);
    }
  }
  qz_LOG_LogConfig::ClearDefinitions();
  entry.AddAttribStr("user", "u");
  EXPECT_EQ(entry.FormatMessage(), "entry 257 of u");
}

TEST_F(LdfEntries, GlobalAttributesCleared_UnknownToLivingEntries) {
  set_std("one", numbered_entries(1, 1), {{"everywhere", TypeUInt4}});
  const qz_LOG_LogEntry entry(1, 0);
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(entry.CheckAttribute("everywhere", type), 1);
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(entry.CheckAttribute("everywhere", type), -1);
  EXPECT_EQ(entry.CheckAttribute("user", type), 1);
}

}  // namespace
