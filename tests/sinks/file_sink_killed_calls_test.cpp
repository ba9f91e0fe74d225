// The process is killed within each call that it makes: what Write took is in the log once.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "qzlog/file_sink.h"
#include "tests/sinks/file_call_failure.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

class SharedCount {
 public:
  SharedCount()
      : count_(static_cast<std::atomic<unsigned>*>(
            mmap(nullptr, sizeof *count_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedCount() { munmap(count_, sizeof *count_); }
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;
  std::atomic<unsigned>& operator*() const { return *count_; }

 private:
  std::atomic<unsigned>* count_;
};

class FileSinkKilledCallsTest : public SinkTest {
 protected:
  /// True when the process was killed.
  static bool write_until_killed(const Settings& settings, FileCallKind kind, int nth, std::size_t part,
                                 unsigned entries, std::atomic<unsigned>& taken) {
    const pid_t child = fork();
    if (child == 0) {
      const FileCallFailure failure(kind, nth, FileCallFailure::kKilled);
      FileCallFailure::set_part(part);
      qz_LOG_FileSink sink(settings);
      for (unsigned number = 0; number < entries; ++number) {
        if (!write_entry(sink, 1, number, "some text of an entry")) _exit(1);
        taken = number + 1;
      }
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
  }

  static void expect_each_once(const std::string& folder, unsigned taken) {
    WrittenLines lines;
    lines.take_series(folder, "app");
    lines.expect_no_gaps();
    const std::size_t found = lines.numbers[1].size();
    EXPECT_EQ(lines.numbers[1], counted_to(static_cast<long long>(found)));
    EXPECT_GE(found, taken);
    EXPECT_LE(found, taken + 1);
  }

  static Settings settings_for(const std::string& folder, Settings::Way way, bool rotates) {
    Settings settings;
    settings.folder = folder;
    settings.prefix = "app";
    settings.way = way;
    settings.largest_file_bytes = rotates ? 4096 : 0;
    settings.keep_files = 100;
    settings.longest_delay_milliseconds = 1;
    return settings;
  }
};

TEST_F(FileSinkKilledCallsTest, InTheMiddleOfALargeWrite_NothingIsLostOrDoubled) {
  SeededRandom random;
  const int kills = rounds(60);
  unsigned long long cut = 0;
  for (int round = 0; round < kills; ++round) {
    TempDir own;
    Settings settings = settings_for(own.path(), Settings::kShared, false);
    settings.longest_delay_milliseconds = 60000;
    settings.buffer_bytes = 128U << 10;
    SharedCount taken;
    // Halves of 64 KiB: the second or third write is of a whole one.
    const auto part = static_cast<std::size_t>(random.between(0, 66000));
    EXPECT_TRUE(write_until_killed(settings, FileCallKind::kWrite, 1 + round % 3, part, 3000, *taken));
    if (round % 2 == 0) {
      // The next one is killed too while it writes what was left.
      write_until_killed(settings, FileCallKind::kWrite, 1, part / 2, 0, *taken);
    }
    {
      qz_LOG_FileSink next(settings);
      cut += next.GetStatus().damaged;
    }
    expect_each_once(own.path(), *taken);
    ASSERT_FALSE(HasFailure()) << "in round " << round << ", killed behind " << part << " bytes";
  }
  EXPECT_GT(cut, 0U);
}

TEST_F(FileSinkKilledCallsTest, WithinEachCall_NothingIsLostOrDoubled) {
  constexpr FileCallKind kKinds[] = {FileCallKind::kOpen,   FileCallKind::kWrite, FileCallKind::kCut,
                                     FileCallKind::kUnlink, FileCallKind::kClose, FileCallKind::kMap,
                                     FileCallKind::kRoom};
  int kills = 0;
  for (const Settings::Way way : {Settings::kWrite, Settings::kShared}) {
    for (const FileCallKind kind : kKinds) {
      for (int nth = 1; nth<60; nth += nth> 8 ? 11 : 1) {
        SCOPED_TRACE("way " + std::to_string(way) + ", call " + std::to_string(static_cast<int>(kind)) + ", nth " +
                     std::to_string(nth));
        TempDir own;
        const Settings settings = settings_for(own.path(), way, true);
        SharedCount taken;
        const bool killed = write_until_killed(settings, kind, nth, 100, 100, *taken);
        kills += killed ? 1 : 0;
        // Recovery is killed within each call as well.
        SharedCount nothing;
        for (int call = 1; call < 4; ++call) write_until_killed(settings, kind, call, 100, 0, *nothing);
        { qz_LOG_FileSink next(settings); }
        expect_each_once(own.path(), *taken);
        if (HasFailure()) return;
        if (!killed) break;
      }
    }
  }
  EXPECT_GT(kills, 30);
}

TEST_F(FileSinkKilledCallsTest, AnotherWriterLives_RepairsTheEnd) {
  SeededRandom random;
  for (int round = 0; round < rounds(24); ++round) {
    TempDir own;
    Settings settings = settings_for(own.path(), round % 2 == 0 ? Settings::kWrite : Settings::kShared, false);
    qz_LOG_FileSink living(settings);
    ASSERT_TRUE(write_entry(living, 2, 0));
    ASSERT_TRUE(living.Flush(10000));
    SharedCount taken;
    write_until_killed(settings, FileCallKind::kWrite, 3, static_cast<std::size_t>(random.between(1, 150)), 100,
                       *taken);
    // Behind the part of a line that was left nothing may be written.
    ASSERT_TRUE(write_entry(living, 2, 1));
    ASSERT_TRUE(living.Flush(10000));
    { qz_LOG_FileSink next(settings); }
    ASSERT_TRUE(write_entry(living, 2, 2));
    EXPECT_EQ(living.Close(10000), 0U);
    expect_each_once(own.path(), *taken);
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    EXPECT_EQ(lines.numbers[2], counted_to(3));
    ASSERT_FALSE(HasFailure()) << "in round " << round;
  }
}

}  // namespace
}  // namespace qz_test
