#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "config/configuration_source.h"
#include "config/logconf.h"
#include "qzlog/entry_filt.h"
#include "qzlog/logcfg.h"
#include "tests/config/entry_filt_fixture.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using Config = qz_LOG_LogConfig;
using qz_test::rounds;

constexpr unsigned kReaders = 3;

/// What threads see that look up and filter all the time while the source changes.
struct Seen {
  std::atomic<long> found = 0;
  std::atomic<long> missing = 0;
  std::atomic<long> wrong = 0;
  std::atomic<long> refused = 0;
};

class ConfigurationSourceThreads : public qz_test::EntryFilterTest {
 protected:
  ConfigurationSourceThreads() {
    for (const char* level : {"3", "4"}) {
      const std::string text = std::string("[app]\nLevel=") + level + "\nLogLevelLow=" + level + "\n\n";
      paths_.push_back(folder_.write(std::string("conf") + level, text));
    }
  }

  void set(std::size_t number) { Config::SetConfigurationSource(paths_[number].c_str(), QZ_CONFIGURATION_FILE); }
  static void clear() { Config::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE); }

  static void look_up(Seen& seen) {
    unsigned level = 0;
    if (!Config::GetConfigurationIntegerValue("app", "Level", level)) {
      ++seen.missing;
    } else {
      ++(level == 3 || level == 4 ? seen.found : seen.wrong);
    }
  }

  /// Runs `change` while threads look up, and filter an entry of level 2, which a source refuses.
  void change_while_others_read(const std::function<void()>& change, Seen& seen) {
    std::atomic<bool> over = false;
    std::atomic<unsigned> ready = 0;
    std::vector<std::thread> readers;
    for (unsigned number = 0; number < kReaders; ++number) {
      readers.emplace_back([&] {
        const qz_LOG_LogEntry entry(qz_test::kOrdinaryId, 2);
        const _qz_LOG_entry_filter filter = qz_test::make_filter();
        for (++ready; !over;) {
          look_up(seen);
          if (!filter.check_entry(entry)) ++seen.refused;
        }
      });
    }
    while (ready != kReaders) std::this_thread::yield();
    change();
    over = true;
    for (std::thread& reader : readers) reader.join();
  }

  std::vector<std::string> paths_;
};

TEST_F(ConfigurationSourceThreads, SetAndClearedWhileOthersRead_OnlyValuesOfASourceSeen) {
  Seen seen;
  change_while_others_read(
      [&] {
        for (int round = 0; round < rounds(4000); ++round) {
          set(static_cast<std::size_t>(round % 2));
          look_up(seen);
          clear();
        }
      },
      seen);
  EXPECT_EQ(seen.wrong, 0);
  EXPECT_GT(seen.found, 0);
  EXPECT_EQ(Config::_get_configuration_ptr(), nullptr);
  EXPECT_FALSE(Config::_has_configuration_source());
}

TEST_F(ConfigurationSourceThreads, ReplacedWhileOthersRead_AValueIsAlwaysFound) {
  Seen seen;
  set(0);
  change_while_others_read(
      [&] {
        for (int round = 0; round < rounds(4000); ++round) {
          set(static_cast<std::size_t>(round % 2));
          look_up(seen);
        }
      },
      seen);
  EXPECT_EQ(seen.wrong, 0);
  EXPECT_EQ(seen.missing, 0);
  EXPECT_GT(seen.found, 0);
  EXPECT_GT(seen.refused, 0);
}

TEST_F(ConfigurationSourceThreads, SetAndClearedByTwoAtOnce_TheFlagIsAsTheSource) {
  for (int round = 0; round < rounds(2000); ++round) {
    std::thread other([] { clear(); });
    set(0);
    other.join();
    ASSERT_EQ(Config::_has_configuration_source(), Config::_get_configuration_ptr() != nullptr) << "round " << round;
  }
}

/// A source that counts how many there are.
class CountedSource : public _qz_LOG_configuration {
 public:
  CountedSource() { ++alive; }
  ~CountedSource() override { --alive; }
  bool get_integer_value(const char* /*section*/, const char* /*key*/, unsigned& value) const override {
    value = kValue;
    return true;
  }
  const FilterValues* get_filter_values(const char* /*section*/) const override { return nullptr; }

  static unsigned value_of(const _qz_LOG_configuration& source) {
    unsigned value = 0;
    source.get_integer_value("", "", value);
    return value;
  }

  static constexpr unsigned kValue = 7;
  static inline std::atomic<int> alive = 0;
};

class CountedSources : public testing::Test {
 protected:
  ~CountedSources() override {
    remove();
    EXPECT_EQ(CountedSource::alive, 0);
  }
  static void replace() { replace_configuration_source(std::make_unique<CountedSource>()); }
  static void remove() { replace_configuration_source(nullptr); }
};

TEST_F(CountedSources, OneThread_TheReplacedOneIsDestroyedAtOnce) {
  for (int round = 0; round < 100; ++round) {
    replace();
    EXPECT_EQ(CountedSource::value_of(*current_configuration_source()), CountedSource::kValue);
    EXPECT_EQ(CountedSource::alive, 1);
  }
  remove();
  EXPECT_EQ(CountedSource::alive, 0);
  EXPECT_EQ(current_configuration_source(), nullptr);
}

TEST_F(CountedSources, ReplacedInALoopWhileThreadsUseThem_NeverMoreThanThreads) {
  std::atomic<bool> over = false;
  std::atomic<long> wrong = 0;
  std::vector<std::thread> users;
  for (unsigned number = 0; number < kReaders; ++number) {
    users.emplace_back([&] {
      while (!over) {
        const ConfigurationUse source;
        if (source && CountedSource::value_of(*source.get()) != CountedSource::kValue) ++wrong;
      }
    });
  }
  int most = 0;
  for (int round = 0; round < rounds(100000); ++round) {
    round % 3 == 0 ? remove() : replace();
    most = std::max(most, CountedSource::alive.load());
  }
  over = true;
  for (std::thread& user : users) user.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_LE(most, static_cast<int>(kReaders) + 1);
}

TEST_F(CountedSources, ReplacedBySeveralAtOnce_EachDestroyedOnce) {
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < kReaders; ++number) {
    threads.emplace_back([] {
      for (int round = 0; round < rounds(20000); ++round) {
        replace();
        const _qz_LOG_configuration* const source = current_configuration_source();
        if (source != nullptr && CountedSource::value_of(*source) != CountedSource::kValue) abort();
        if (round % 4 == 0) remove();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(CountedSources, ThreadsThatComeAndGo_LeaveNothing) {
  for (int round = 0; round < 300; ++round) {
    replace();
    std::thread([] { EXPECT_NE(current_configuration_source(), nullptr); }).join();
    EXPECT_EQ(CountedSource::alive, 1);
  }
}

TEST_F(CountedSources, ReplacedByAnother_ThePointerStaysUsable) {
  replace();
  const _qz_LOG_configuration* const source = current_configuration_source();
  std::thread([] {
    for (int round = 0; round < 10; ++round) replace();
    remove();
  }).join();
  EXPECT_EQ(CountedSource::value_of(*source), CountedSource::kValue);
  EXPECT_EQ(CountedSource::alive, 1);
  EXPECT_EQ(current_configuration_source(), nullptr);
}

/// Looks up after everything thread-local of the library is gone: it is made before.
struct LateUser {
  ~LateUser() {
    const ConfigurationUse source;
    std::thread([] { replace(); }).join();
    value = CountedSource::value_of(*source.get());
  }
  static void replace() { replace_configuration_source(std::make_unique<CountedSource>()); }
  static inline std::atomic<unsigned> value = 0;
};

TEST_F(CountedSources, UsedByTheEndOfAThread_StaysAsLong) {
  replace();
  std::thread([] {
    static thread_local LateUser user;
    (void)user;
    EXPECT_NE(current_configuration_source(), nullptr);
  }).join();
  EXPECT_EQ(LateUser::value, CountedSource::kValue);
  EXPECT_EQ(CountedSource::alive, 1);
}

TEST_F(CountedSources, ClaimWithoutMemory_ThrowsAndTheNextOneIsMade) {
  replace();
  std::thread([] {
    const unsigned failures = qz_test::FailEveryAllocation([] { current_configuration_source(); });
    EXPECT_LE(failures, 2U);
    EXPECT_NE(current_configuration_source(), nullptr);
  }).join();
}

// The address sanitizer's allocator has locks of its own, which a fork while another thread allocates leaves locked in
// the child.
#ifndef QZLOG_SANITIZED
TEST_F(ConfigurationSourceThreads, ForkedWhileOthersSetAndLookUp_TheChildDoesBoth) {
  std::atomic<bool> over = false;
  std::thread other([&] {
    for (Seen seen; !over;) {
      replace_configuration_source(std::make_unique<CountedSource>());
      look_up(seen);
    }
  });
  for (int round = 0; round < 200; ++round) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
      alarm(20);
      clear();
      replace_configuration_source(std::make_unique<CountedSource>());
      unsigned value = 0;
      _exit(Config::GetConfigurationIntegerValue("app", "Level", value) && value == CountedSource::kValue ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0) << "round " << round;
  }
  over = true;
  other.join();
}
#endif

}  // namespace
