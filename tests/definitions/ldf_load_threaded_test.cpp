#include <algorithm>
#include <atomic>
#include <barrier>
#include <functional>
#include <thread>

#include "qzlog/debug_log.h"
#include "qzlog/logentry.h"
#include "tests/definitions/table_test.h"
#include "tests/support/settings_test.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

constexpr int kThreads = 8;

/// Runs `work(0)` to `work(kThreads - 1)` at once, each in a thread of its own.
void in_threads(const std::function<void(unsigned)>& work) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

bool is_right(const _qz_LOG_log_definition* definition, unsigned id) {
  return definition != nullptr && definition->get_entry_id() == id && definition->get_entry_word() == id + 1 &&
         own_attributes(*definition) == Texts({"user:9>"}) &&
         default_message(*definition) == "MSG_" + std::to_string(id) + "|entry " + std::to_string(id) + " of %s%user%";
}

using LdfThreads = TableTest;

std::size_t count(const Texts& records, const std::string& wanted) {
  return static_cast<std::size_t>(std::count(records.begin(), records.end(), wanted));
}

TEST_F(LdfThreads, SameIdsAtOnce_EachRecordReadOnce) {
  constexpr unsigned kIds = 100;
  set_std({.entries = numbered_entries(1, kIds)});
  const DebugLogFile log(3);
  std::atomic<int> wrong = 0;
  in_threads([&](unsigned) {
    for (unsigned id = 1; id <= kIds; ++id) wrong += is_right(table_.find_entry(id), id) ? 0 : 1;
  });
  EXPECT_EQ(wrong, 0);
  const Texts records = log.unnumbered_records();
  EXPECT_EQ(count(records, "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return true\n"), kIds);
  std::size_t lookups = 0;
  for (const std::string& record : records) lookups += record.find("n_entry_definitions_cached:") != std::string::npos;
  EXPECT_EQ(lookups, std::size_t{kIds} * kThreads);
}

TEST_F(LdfThreads, MoreIdsThanTheCacheHolds_EveryReferenceStaysGood) {
  constexpr unsigned kIds = 300;
  set_std({.entries = numbered_entries(1, kIds)});
  std::atomic<int> wrong = 0;
  in_threads([&](unsigned number) {
    std::vector<DefinitionRef> held;
    for (unsigned i = 0; i < 600; ++i) {
      const unsigned id = 1 + (i * 7 + number * 37) % kIds;
      held.push_back(table_.acquire_entry(id));
      wrong += is_right(held.back().get(), id) ? 0 : 1;
      if (held.size() == 50) {
        for (const auto& reference : held) wrong += is_right(reference.get(), reference->get_entry_id()) ? 0 : 1;
        held.clear();
      }
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST_F(LdfThreads, UnknownIdsAtOnce_NullForAll) {
  set_std({.entries = numbered_entries(1, 10)});
  std::atomic<int> found = 0;
  in_threads([&](unsigned) {
    for (unsigned id = 100; id < 400; ++id) found += table_.find_entry(id) != nullptr ? 1 : 0;
  });
  EXPECT_EQ(found, 0);
}

TEST_F(LdfThreads, DebugLevelChangedWhileLookingUp_LookupsRight) {
  set_std({.entries = numbered_entries(1, 140)});
  const DebugLogFile log(3);
  std::atomic<int> wrong = 0;
  in_threads([&](unsigned number) {
    for (unsigned i = 0; i < 140; ++i) {
      if (number == 0) EnableDebugLog(i % 10 == 0 ? 3 : 0);
      const unsigned id = 1 + (i + number * 17) % 140;
      wrong += is_right(table_.acquire_entry(id).get(), id) ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_TRUE(log.exists());
}

using LdfEntryThreads = SettingsTest;

TEST_F(LdfEntryThreads, EntriesOfMoreIdsThanTheCacheHolds_BuiltAndRenderedAtOnce) {
  constexpr unsigned kIds = 200;
  const LdfFile file{.globals = {{"everywhere", TypeUInt4}}, .entries = numbered_entries(1, kIds)};
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  std::atomic<int> wrong = 0;
  in_threads([&](unsigned number) {
    for (unsigned i = 0; i < kIds; ++i) {
      const unsigned id = 1 + (i + number * 53) % kIds;
      qz_LOG_LogEntry entry(id, 1);
      entry.AddAttribStr("user", "someone");
      entry.AddAttrib4u("everywhere", id);
      wrong += entry.GetAttrib4u("everywhere") == id ? 0 : 1;
      wrong += entry.FormatMessage() == "entry " + std::to_string(id) + " of someone" ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
