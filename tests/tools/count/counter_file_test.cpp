#include "tools/count/counter_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tests/tools/count/counter_bytes.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_test::counter_bytes;
using qzlog_tool::CalendarDay;
using qzlog_tool::CommandError;
using qzlog_tool::CounterFile;
using qzlog_tool::CounterPath;
using qzlog_tool::MissingCounter;
using qzlog_tool::parse_counter_path;
using qzlog_tool::parse_day;

TEST(CounterPath, BothForms_NameTheSameFile) {
  const struct {
    const char* argument;
    const char* directory;
    const char* name;
    const char* file;
  } cases[] = {
      {"events", ".", "events", "events.cnt"},
      {"events.cnt", ".", "events", "events.cnt"},
      {"a/b/events", "a/b", "events", "a/b/events.cnt"},
      {"a/b//events.cnt", "a/b/", "events", "a/b//events.cnt"},
      {"/events", "", "events", "/events.cnt"},
      {"events.cnt.cnt", ".", "events.cnt", "events.cnt.cnt"},
      {"a.d/events.2026", "a.d", "events.2026", "a.d/events.2026.cnt"},
  };
  for (const auto& row : cases) {
    const CounterPath path = parse_counter_path(row.argument);
    EXPECT_EQ(path.directory, row.directory) << row.argument;
    EXPECT_EQ(path.name, row.name) << row.argument;
    EXPECT_EQ(path.file, row.file) << row.argument;
  }
}

TEST(CounterPath, NoName_IsRefused) {
  for (const std::string argument : {"", "/", "a/", ".cnt", "a/.cnt"}) {
    try {
      parse_counter_path(argument);
      ADD_FAILURE() << argument;
    } catch (const CommandError& error) {
      EXPECT_EQ(error.what(), "'" + argument + "' names no counter; it is given as DIR/NAME");
      EXPECT_EQ(error.exit_status(), 2);
    }
  }
}

class CounterFileTest : public ::testing::Test {
 protected:
  CounterPath path() const { return parse_counter_path(folder_.path("events")); }
  std::string bytes() const { return folder_.read("events.cnt"); }
  std::string refusal(MissingCounter missing) const {
    try {
      const CounterFile opened(path(), missing);
      return "";
    } catch (const CommandError& error) {
      EXPECT_EQ(error.exit_status(), 2);
      return error.what();
    }
  }

  static CalendarDay day(const char* text) { return *parse_day(text); }

  qz_test::TempDir folder_;
};

TEST_F(CounterFileTest, Increase_DaysThatAlternateUnderOneKeyAreCountedApart) {
  CounterFile file(path(), MissingCounter::kCreate);
  for (int round = 0; round < 5; ++round) {
    file.increase(day("2026-11-21"), 7, 1);
    file.increase(day("2026-11-22"), 7, 2);
  }
  EXPECT_EQ(bytes(), counter_bytes({{2026, 11, 21, 7, 5}, {2026, 11, 22, 7, 10}}));
}

TEST_F(CounterFileTest, Increase_RandomSequenceGivesWhatAPlainTableHolds) {
  qz_test::SeededRandom random;
  std::map<std::pair<CalendarDay, std::int32_t>, std::uint32_t> table;
  CounterFile file(path(), MissingCounter::kCreate);
  const CalendarDay days[] = {day("2026-11-21"), day("2026-11-22"), day("2025-01-31")};
  for (int round = 0; round < 2000; ++round) {
    const std::pair combination{days[random.below(3)], static_cast<std::int32_t>(random.between(-1, 0))};
    const auto times = static_cast<std::uint32_t>(random.below(3));
    file.increase(combination.first, combination.second, times);
    if (times != 0) table[combination] += times;
  }
  std::uint64_t found = 0;
  for (const auto& [combination, count] : table) {
    const std::string record = counter_bytes(
        {static_cast<int>(combination.first.year()), static_cast<int>(static_cast<unsigned>(combination.first.month())),
         static_cast<int>(static_cast<unsigned>(combination.first.day())), combination.second, count});
    EXPECT_NE(bytes().find(record), std::string::npos) << qzlog_tool::day_text(combination.first);
    ++found;
  }
  EXPECT_EQ(bytes().size(), found * 32);
}

TEST_F(CounterFileTest, Set_ThenIncrease_GoesOnFromThere) {
  CounterFile file(path(), MissingCounter::kCreate);
  file.set(day("2026-11-21"), 7, 4294967294U);
  file.increase(day("2026-11-21"), 7, 1);
  EXPECT_EQ(bytes(), counter_bytes({2026, 11, 21, 7, 4294967295U}));
  file.increase(day("2026-11-21"), 7, 2);
  EXPECT_EQ(bytes(), counter_bytes({2026, 11, 21, 7, 1}));
}

TEST_F(CounterFileTest, Remove_FreesOneRecord) {
  folder_.write("events.cnt", counter_bytes({{2026, 11, 21, 7, 5}, {2026, 11, 22, 7, 6}}));
  CounterFile file(path(), MissingCounter::kRefuse);
  file.remove(day("2026-11-21"), 7);
  file.remove(day("2026-11-21"), 8);
  EXPECT_EQ(bytes(), counter_bytes({{0, 0, 0, 0, 0}, {2026, 11, 22, 7, 6}}));
}

TEST_F(CounterFileTest, RemoveBox_LooksAtEveryRecordAlsoAfterAnotherOperation) {
  folder_.write("events.cnt", counter_bytes({{2026, 11, 21, 7, 5}, {2026, 12, 1, 7, 6}, {2026, 11, 30, 8, 7}}));
  CounterFile file(path(), MissingCounter::kRefuse);
  file.increase(day("2026-11-30"), 8, 1);
  file.remove_box({day("2026-11-21"), day("2026-11-30")});
  EXPECT_EQ(bytes(), counter_bytes({{0, 0, 0, 0, 0}, {2026, 12, 1, 7, 6}, {0, 0, 0, 0, 0}}));
}

TEST_F(CounterFileTest, MissingFile_IsMadeOnlyWhereThatIsWanted) {
  EXPECT_EQ(refusal(MissingCounter::kRefuse),
            "cannot open '" + path().file + "' for writing: No such file or directory");
  EXPECT_FALSE(std::filesystem::exists(path().file));
  EXPECT_EQ(refusal(MissingCounter::kCreate), "");
  EXPECT_TRUE(std::filesystem::exists(path().file));
}

/// The descriptor that the next file that is opened will have.
int next_descriptor() {
  const int next = ::dup(STDERR_FILENO);
  ::close(next);
  return next;
}

// The lock is the first file that is opened, the counter the second.
TEST_F(CounterFileTest, EitherCloseFails_IsToldWithTheReason) {
  for (const int nth : {0, 1}) {
    CounterFile file(path(), MissingCounter::kCreate);
    const int first = next_descriptor() - 2;
    file.set(day("2026-11-21"), 7, 1);
    ::close(first + nth);
    try {
      file.close();
      ADD_FAILURE() << "not told: " << nth;
    } catch (const CommandError& error) {
      EXPECT_EQ(error.what(), "cannot write to '" + path().file + "': Bad file descriptor");
      EXPECT_EQ(error.exit_status(), 2);
    }
  }
  CounterFile(path(), MissingCounter::kCreate).close();
  EXPECT_EQ(bytes(), counter_bytes({2026, 11, 21, 7, 1}));
}

TEST_F(CounterFileTest, CloseBeforeAnotherDayFails_IsTold) {
  CounterFile file(path(), MissingCounter::kCreate);
  file.increase(day("2026-11-21"), 7, 1);
  ::close(next_descriptor() - 1);
  EXPECT_THROW(file.increase(day("2026-11-22"), 7, 1), CommandError);
}

TEST_F(CounterFileTest, FolderOfThatName_IsRefused) {
  std::filesystem::create_directory(path().file);
  EXPECT_EQ(refusal(MissingCounter::kCreate), "cannot open '" + path().file + "' for writing: Is a directory");
}

TEST_F(CounterFileTest, FileThatCannotBeWritten_IsRefused) {
  if (::geteuid() == 0) GTEST_SKIP() << "the superuser can write to every file";
  folder_.write("events.cnt", "");
  ::chmod(path().file.c_str(), 0400);
  EXPECT_EQ(refusal(MissingCounter::kCreate), "cannot open '" + path().file + "' for writing: Permission denied");
}

TEST_F(CounterFileTest, FileThatTheCounterCannotOpen_IsRefusedByItsName) {
  const qz_test::DescriptorLimit only_the_lock(1);
  EXPECT_EQ(refusal(MissingCounter::kCreate), "cannot open '" + path().file + "' for writing");
}

}  // namespace
