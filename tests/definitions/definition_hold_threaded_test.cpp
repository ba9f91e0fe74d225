#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "entry/logentry_i.h"
#include "qzlog/logentry.h"
#include "tests/definitions/table_test.h"
#include "tests/support/settings_test.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

constexpr unsigned kThreads = 6;
constexpr unsigned kIds = 400;

/// Runs `work(0)` to `work(kThreads - 1)` at once, and `meanwhile` over and over in one thread more until they are
/// done.
void in_threads(const std::function<void(unsigned)>& work, const std::function<void()>& meanwhile) {
  std::atomic<unsigned> working{kThreads};
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    while (working > 0) meanwhile();
  });
  for (unsigned number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      work(number);
      --working;
    });
  }
  for (std::thread& thread : threads) thread.join();
}

bool is_right(const _qz_LOG_log_definition& definition, unsigned id) {
  return definition.get_entry_id() == id && definition.get_entry_word() == id + 1 &&
         own_attributes(definition) == Texts({"user:9>"}) &&
         default_message(definition) == "MSG_" + std::to_string(id) + "|entry " + std::to_string(id) + " of %s%user%";
}

// ---- holds ----

class HoldThreads : public TableTest {
 protected:
  HoldThreads() { set_std({.entries = numbered_entries(1, kIds)}); }

  void look_up_the_others() {
    for (unsigned id = 201; id <= kIds; ++id) table_.find_entry(id);
  }
  std::atomic<int> wrong_{0};
};

TEST_F(HoldThreads, SameIdsWhileOthersEvict_HoldsRight) {
  in_threads(
      [&](unsigned) {
        for (unsigned i = 0; i < 3000; ++i) {
          const auto hold = table_.hold_entry(1 + i % 3);
          wrong_ += hold && is_right(hold->definition(), 1 + i % 3) ? 0 : 1;
        }
      },
      [&] { look_up_the_others(); });
  EXPECT_EQ(wrong_, 0);
}

TEST_F(HoldThreads, MoreIdsThanAThreadHoldsWhileOthersEvict_HoldsRight) {
  in_threads(
      [&](unsigned number) {
        std::vector<DefinitionHoldRef> held;
        for (unsigned i = 0; i < 1500; ++i) {
          const unsigned id = 1 + (i * 7 + number * 37) % kIds;
          held.push_back(table_.hold_entry(id));
          wrong_ += held.back() && is_right(held.back()->definition(), id) ? 0 : 1;
          if (held.size() < 60) continue;
          for (const auto& hold : held)
            wrong_ += is_right(hold->definition(), hold->definition().get_entry_id()) ? 0 : 1;
          held.clear();
        }
      },
      [&] { look_up_the_others(); });
  EXPECT_EQ(wrong_, 0);
}

TEST_F(HoldThreads, ThreadsThatEnd_TheirHoldsReleasedByOthers) {
  for (int round = 0; round < 20; ++round) {
    std::mutex mutex;
    std::vector<DefinitionHoldRef> handed_over;
    in_threads(
        [&](unsigned number) {
          for (unsigned id = number + 1; id < number + 20; ++id) {
            auto hold = table_.hold_entry(id);
            const std::lock_guard<std::mutex> lock(mutex);
            handed_over.push_back(std::move(hold));
          }
        },
        [&] { look_up_the_others(); });
    EXPECT_EQ(handed_over.size(), std::size_t{kThreads} * 19);
    for (const auto& hold : handed_over) {
      wrong_ += is_right(hold->definition(), hold->definition().get_entry_id()) ? 0 : 1;
    }
    std::thread([&] { handed_over.clear(); }).join();
  }
  EXPECT_EQ(wrong_, 0);
}

TEST_F(HoldThreads, LastReferenceReleasedWhileItsThreadEnds_ReleasedOnce) {
  for (unsigned round = 0; round < 500; ++round) {
    DefinitionHoldRef handed_over;
    std::atomic<bool> is_there{false};
    std::thread maker([&] {
      handed_over = table_.hold_entry(1);
      is_there = true;
    });
    std::thread releaser([&] {
      while (!is_there) std::this_thread::yield();
      handed_over = {};
    });
    maker.join();
    releaser.join();
    if (round % 50 == 0) look_up_the_others();
    const auto again = table_.hold_entry(1);
    wrong_ += is_right(again->definition(), 1) ? 0 : 1;
  }
  EXPECT_EQ(wrong_, 0);
}

// ---- entries ----

class HoldingEntryThreads : public SettingsTest {
 protected:
  HoldingEntryThreads() {
    const LdfFile file{.tag = "1.0", .entries = numbered_entries(1, kIds)};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  }

  static void look_up_the_others() {
    for (unsigned id = 201; id <= kIds; ++id) qz_LOG_LogConfig::GetDefinitionTable()->find_entry(id);
  }

  using Entry = std::unique_ptr<_qz_LOG_log_entry_imp>;

  static Entry new_entry(unsigned id, const std::string& user) {
    Entry entry = std::make_unique<_qz_LOG_log_entry_imp>(id, 1);
    entry->add_attrib_str("user", user.c_str(), true);
    return entry;
  }
  static bool is_right_entry(const _qz_LOG_log_entry_imp& entry) {
    const std::string user = entry.get_attrib_str("user");
    const std::string id = std::to_string(entry.get_entry_id());
    return is_right(*entry.get_definition(), entry.get_entry_id()) && user.substr(0, id.size() + 1) == id + "/" &&
           entry.format_message(false, 0) == "entry " + id + " of " + user;
  }

  std::atomic<int> wrong_{0};
};

TEST_F(HoldingEntryThreads, MadeCopiedAssignedAndDestroyedWhileOthersEvict_Right) {
  in_threads(
      [&](unsigned number) {
        Entry kept = new_entry(1, "1/kept");
        for (unsigned i = 0; i < 400; ++i) {
          const unsigned id = i % 2 == 0 ? 1 : 2 + (i + number * 31) % 180;
          const Entry entry = new_entry(id, std::to_string(id) + "/" + std::to_string(number));
          const _qz_LOG_log_entry_imp copy(*entry);
          wrong_ += is_right_entry(*entry) && is_right_entry(copy) && is_right_entry(*kept) ? 0 : 1;
          *kept = copy;
        }
      },
      look_up_the_others);
  EXPECT_EQ(wrong_, 0);
}

TEST_F(HoldingEntryThreads, HandedBetweenThreadsWhileOthersEvict_Right) {
  constexpr std::size_t kPlaces = 24;
  std::array<Entry, kPlaces> places;
  std::array<std::mutex, kPlaces> mutexes;
  in_threads(
      [&](unsigned number) {
        for (unsigned i = 0; i < 600; ++i) {
          const unsigned id = 1 + (i * (number + 1)) % 190;
          Entry entry = new_entry(id, std::to_string(id) + "/" + std::to_string(i));
          const std::size_t place = (i * 5 + number) % kPlaces;
          {
            const std::lock_guard<std::mutex> lock(mutexes[place]);
            entry.swap(places[place]);
          }
          // What another thread made is used, changed, copied and destroyed here.
          if (entry == nullptr) continue;
          wrong_ += is_right_entry(*entry) ? 0 : 1;
          entry->set_entry_id(id);
          entry->add_attrib_str("user", (std::to_string(id) + "/again").c_str(), true);
          wrong_ += is_right_entry(_qz_LOG_log_entry_imp(*entry)) ? 0 : 1;
        }
      },
      look_up_the_others);
  for (const Entry& entry : places) wrong_ += entry == nullptr || is_right_entry(*entry) ? 0 : 1;
  EXPECT_EQ(wrong_, 0);
}

TEST_F(HoldingEntryThreads, DestroyedAfterTheirThreadsEndAndTheTableIsCleared_Right) {
  std::mutex mutex;
  std::vector<Entry> entries;
  in_threads(
      [&](unsigned number) {
        for (unsigned id = number * 30 + 1; id <= number * 30 + 30; ++id) {
          Entry entry = new_entry(id, std::to_string(id) + "/" + std::to_string(number));
          const std::lock_guard<std::mutex> lock(mutex);
          entries.push_back(std::move(entry));
        }
      },
      look_up_the_others);
  qz_LOG_LogConfig::ClearDefinitions();
  for (const Entry& entry : entries) wrong_ += is_right_entry(*entry) ? 0 : 1;
  EXPECT_EQ(wrong_, 0);
  EXPECT_EQ(entries.size(), std::size_t{kThreads} * 30);
  in_threads(
      [&](unsigned number) {
        for (std::size_t i = number; i < entries.size(); i += kThreads) entries[i].reset();
      },
      [] {});
}

}  // namespace
