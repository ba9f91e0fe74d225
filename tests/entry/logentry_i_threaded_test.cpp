#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

constexpr unsigned kThreads = 6;

/// Runs `work` in several threads at once and returns how many times it returned true.
template <typename Work>
unsigned run_in_threads(Work work) {
  std::atomic<unsigned> successes{0};
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < kThreads; ++number) {
    threads.emplace_back([&successes, &work, number] {
      if (work(number)) ++successes;
    });
  }
  for (std::thread& thread : threads) thread.join();
  return successes;
}

/// Builds, copies, reads and clears entries of `id`.
bool use_entries(unsigned id, unsigned value) {
  const std::string text = "text of " + std::to_string(value) + "\n";
  const std::string stored = "text of " + std::to_string(value) + "\\n";
  Entry entry(id, value % 10);
  entry.add_attrib_4u("GlobalTypeUInt4", value);
  entry.add_attrib_str("GlobalTypeChar64", text.c_str(), true);
  entry.add_attrib_mbstr("GlobalTypeMBChar64", text.c_str(), true);
  entry.set_timestamp(qz_Time::from_unix_seconds(value), value % 2 == 0);
  Entry copy(entry);
  entry.clear_attribs(true);
  return copy.get_entry_id() == id && copy.get_log_level() == value % 10 && copy.get_property_mask() == id &&
         copy.get_attrib_4u("GlobalTypeUInt4") == value && copy.get_attrib_str("GlobalTypeChar64") == stored &&
         copy.get_attrib_mbstr("GlobalTypeMBChar64") == stored && !entry.has_value("GlobalTypeUInt4");
}

class EntryThreads : public EntryTest {
 protected:
  EntryThreads() {
    LdfFile file{.tag = "2.5", .globals = global_attributes()};
    for (unsigned id = 5; id < 405; ++id) file.entries.push_back({.id = id, .mask = id});
    load(file);
  }
};

TEST_F(EntryThreads, EntriesOfOneId_DoNotDisturbEachOther) {
  const auto work = [](unsigned number) {
    bool success = true;
    for (unsigned i = 0; i < 200; ++i) success = use_entries(7, 1000 * number + i) && success;
    return success;
  };
  EXPECT_EQ(run_in_threads(work), kThreads);
}

TEST_F(EntryThreads, EntriesOfMoreIdsThanAreCached_DoNotDisturbEachOther) {
  const auto work = [](unsigned number) {
    bool success = true;
    for (unsigned i = 0; i < 400; ++i) success = use_entries(5 + (i * 7 + number * 61) % 400, i) && success;
    return success;
  };
  EXPECT_EQ(run_in_threads(work), kThreads);
}

TEST_F(EntryThreads, EntriesKeptOverEvictions_KeepTheirDefinitions) {
  const auto work = [](unsigned number) {
    std::vector<std::unique_ptr<Entry>> kept;
    for (unsigned i = 0; i < 300; ++i) kept.push_back(std::make_unique<Entry>(5 + (i + number * 50) % 400, 0U));
    bool success = true;
    for (unsigned i = 0; i < 300; ++i) {
      success = kept[i]->get_definition()->get_entry_id() == 5 + (i + number * 50) % 400 && success;
    }
    return success;
  };
  EXPECT_EQ(run_in_threads(work), kThreads);
}

TEST_F(EntryThreads, DefaultConstructionAndClassWideWords_MayBeUsedAtOnce) {
  const auto work = [](unsigned number) {
    bool success = true;
    for (unsigned i = 0; i < 100; ++i) {
      const Entry empty;
      Entry entry;
      entry.set_entry_id(5 + (i + number) % 400);
      qz_LOG_LogEntry::SetOperationMode(2);
      success = Entry::get_log_major_version() == 2 && Entry::get_log_minor_version() == 5 && success;
      success = std::string(empty.get_version_text()) == "2.5" && success;
      success = entry.get_attrib_4("GlobalTypeSInt4") == 0 && success;
    }
    return success;
  };
  EXPECT_EQ(run_in_threads(work), kThreads);
}

TEST_F(EntryThreads, TextsInOneCodePage_AreCutAtOnce) {
  qz_LOG_LogConfig::SetCodePage("Shift_JIS");
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  const auto work = [](unsigned number) {
    std::string unit = number % 2 == 0 ? "\x8A\xBF" : "x";
    std::string text;
    std::string expected;
    for (unsigned i = 0; i < 100; ++i) {
      text += unit;
      if (i < 32) expected += unit;
    }
    bool success = true;
    for (unsigned i = 0; i < 200; ++i) {
      Entry entry(7, 0);
      entry.add_attrib_mbstr("GlobalTypeMBChar32", text.c_str(), true);
      success = entry.get_attrib_mbstr("GlobalTypeMBChar32") == expected && success;
    }
    return success;
  };
  EXPECT_EQ(run_in_threads(work), kThreads);
}

}  // namespace
