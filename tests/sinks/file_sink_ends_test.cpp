// What of a process that ends in any way is in the log after the next open.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "qzlog/file_sink.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

constexpr unsigned kThreads = 2;

/// What a child tells while it writes: for each thread, the entries that Write took.
struct Progress {
  std::atomic<unsigned> taken[8 * kThreads];
};

class SharedProgress {
 public:
  SharedProgress()
      : progress_(static_cast<Progress*>(
            mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedProgress() { munmap(progress_, sizeof(Progress)); }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;
  Progress* operator->() const { return progress_; }

 private:
  Progress* progress_;
};

class FileSinkEndsTest : public SinkTest {
 protected:
  /// Writes until the process ends, from as many threads as there are.
  static void write_for_ever(const Settings& settings, SharedProgress& progress, unsigned first_source) {
    qz_LOG_FileSink sink(settings);
    const std::string text(700, 'x');
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, source = first_source + thread] {
        for (unsigned number = 0;; ++number) {
          if (write_entry(sink, source, number, std::string_view(text).substr(0, number % 700))) {
            progress->taken[source].store(number + 1);
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  /// Kills a writer, or several, at a random moment.
  void kill_writers(const Settings& settings, SharedProgress& progress, unsigned writers, RandomNumbers& random) {
    std::vector<pid_t> children;
    for (unsigned writer = 0; writer < writers; ++writer) {
      const pid_t child = fork();
      if (child == 0) {
        write_for_ever(settings, progress, writer * kThreads);
        std::_Exit(1);
      }
      children.push_back(child);
    }
    for (unsigned source = 0; source < writers * kThreads; ++source) {
      for (int tries = 0; tries < 20000 && progress->taken[source] == 0; ++tries) usleep(100);
    }
    for (const pid_t child : children) {
      usleep(static_cast<useconds_t>(random.between(0, 4000)));
      kill(child, SIGKILL);
    }
    for (const pid_t child : children) waitpid(child, nullptr, 0);
  }

  static void expect_all(const WrittenLines& lines, const SharedProgress& progress, unsigned sources) {
    lines.expect_no_gaps();
    for (unsigned source = 0; source < sources; ++source) {
      const auto found = lines.numbers.find(source);
      const std::vector<long long> numbers = found == lines.numbers.end() ? std::vector<long long>() : found->second;
      // The process may have been killed before it could tell of the last one.
      EXPECT_EQ(numbers, counted_to(static_cast<long long>(numbers.size()))) << "source " << source;
      EXPECT_GE(numbers.size(), progress->taken[source].load()) << "source " << source;
      EXPECT_LE(numbers.size(), progress->taken[source].load() + 1) << "source " << source;
    }
  }
};

TEST_F(FileSinkEndsTest, KilledAtAnyMoment_NothingIsLostOrDoubled) {
  SeededRandom random;
  const int kills = std::getenv("QZLOG_STRESS") != nullptr ? 1000 : rounds(12);
  unsigned long long recovered = 0;
  unsigned long long damaged = 0;
  for (int round = 0; round < kills; ++round) {
    TempDir own;
    Settings settings = series(round % 3 == 0 ? Settings::kWrite : Settings::kShared);
    settings.folder = own.path();
    settings.largest_file_bytes = round % 2 == 0 ? 100000 : 0;
    settings.longest_delay_milliseconds = round % 4 == 0 ? 1 : 100;
    SharedProgress progress;
    const unsigned writers = 1 + static_cast<unsigned>(random.below(3));
    kill_writers(settings, progress, writers, random);
    {
      qz_LOG_FileSink next(settings);
      EXPECT_TRUE(write_entry(next, 100, 0));
      recovered += next.GetStatus().recovered;
      damaged += next.GetStatus().damaged;
    }
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    expect_all(lines, progress, writers * kThreads);
    EXPECT_EQ(lines.numbers[100], counted_to(1));
    for (const std::string& name : names_in(own.path())) EXPECT_EQ(name.find("pending"), std::string::npos) << name;
    if (HasFailure()) {
      ADD_FAILURE() << "in round " << round;
      return;
    }
  }
  RecordProperty("recovered", static_cast<int>(recovered));
  RecordProperty("damaged", static_cast<int>(damaged));
  std::printf("recovered lines: %llu, bytes cut off: %llu\n", recovered, damaged);
  EXPECT_GT(recovered, 0U);
}

/// Whether recovery itself may be killed: another one goes on where it was.
TEST_F(FileSinkEndsTest, KilledWhileRecovering_NothingIsLostOrDoubled) {
  SeededRandom random;
  const int kills = std::getenv("QZLOG_STRESS") != nullptr ? 200 : rounds(6);
  for (int round = 0; round < kills; ++round) {
    TempDir own;
    Settings settings = single(Settings::kShared);
    settings.path = own.path("app.log");
    settings.buffer_bytes = 8U << 20;
    settings.longest_delay_milliseconds = 60000;
    SharedProgress progress;
    kill_writers(settings, progress, 1, random);
    for (int attempt = 0; attempt < 3; ++attempt) {
      const pid_t child = fork();
      if (child == 0) {
        qz_LOG_FileSink sink(settings);
        std::_Exit(0);
      }
      usleep(static_cast<useconds_t>(random.between(0, 3000)));
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
    { qz_LOG_FileSink last(settings); }
    WrittenLines lines;
    lines.take_file(settings.path);
    expect_all(lines, progress, kThreads);
    ASSERT_FALSE(HasFailure()) << "in round " << round;
  }
}

struct End {
  const char* name;
  void (*end)();
};

TEST_F(FileSinkEndsTest, OtherEnds_KeepWhatWriteTook) {
  const End ends[] = {
      {"abort", [] { std::abort(); }},
      {"_exit", [] { _exit(0); }},
      {"quick_exit", [] { std::quick_exit(0); }},
      {"exit", [] { std::exit(0); }},
      {"exec", [] { execl("/bin/true", "true", nullptr); }},
  };
  for (const Settings::Way way : {Settings::kWrite, Settings::kShared}) {
    for (const End& each : ends) {
      SCOPED_TRACE(each.name);
      TempDir own;
      Settings settings = single(way);
      settings.path = own.path("app.log");
      const pid_t child = fork();
      if (child == 0) {
        auto* const sink = new qz_LOG_FileSink(settings);
        for (unsigned number = 0; number < 100; ++number) write_entry(*sink, 1, number);
        each.end();
      }
      waitpid(child, nullptr, 0);
      { qz_LOG_FileSink next(settings); }
      WrittenLines lines;
      lines.take_file(settings.path);
      lines.expect_no_gaps();
      EXPECT_EQ(lines.numbers[1], counted_to(100));
    }
  }
}

TEST_F(FileSinkEndsTest, Exit_WritesWhatIsInMemory) {
  const pid_t child = fork();
  if (child == 0) {
    auto* const sink = new qz_LOG_FileSink(single(Settings::kBuffered));
    for (unsigned number = 0; number < 100; ++number) write_entry(*sink, 1, number);
    std::exit(0);
  }
  waitpid(child, nullptr, 0);
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], counted_to(100));
}

TEST_F(FileSinkEndsTest, Fork_ChildIsAWriterOfItsOwn) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    settings.longest_delay_milliseconds = 60000;
    qz_LOG_FileSink sink(settings);
    for (unsigned number = 0; number < 10; ++number) ASSERT_TRUE(write_entry(sink, 1, number));
    expect_child_succeeds([&] {
      for (unsigned number = 0; number < 10; ++number) {
        if (!write_entry(sink, 2, number)) return 1;
      }
      return sink.Close(10000) == 0 ? 0 : 2;
    });
    ASSERT_TRUE(write_entry(sink, 1, 10));
    EXPECT_EQ(sink.Close(10000), 0U);
    WrittenLines lines;
    lines.take_file(settings.path);
    lines.expect_no_gaps();
    EXPECT_EQ(lines.numbers[1], counted_to(11));
    EXPECT_EQ(lines.numbers[2], counted_to(10));
    EXPECT_EQ(lines.last_seq.size(), 2U);
  }
}

TEST_F(FileSinkEndsTest, ForkWhileThreadsWrite_ChildAndParentGoOn) {
  SeededRandom random;
  for (const Settings::Way way : {Settings::kWrite, Settings::kShared}) {
    TempDir own;
    Settings settings = series(way);
    settings.folder = own.path();
    settings.largest_file_bytes = 50000;
    std::atomic<bool> stop{false};
    unsigned written[kThreads] = {};
    const int children = rounds(16);
    {
      qz_LOG_FileSink sink(settings);
      std::vector<std::thread> threads;
      for (unsigned thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
          while (!stop) {
            EXPECT_TRUE(write_entry(sink, thread, written[thread]++));
            usleep(10);
          }
        });
      }
      for (int child = 0; child < children; ++child) {
        usleep(static_cast<useconds_t>(random.between(0, 2000)));
        expect_child_succeeds([&] {
          for (unsigned number = 0; number < 5; ++number) {
            if (!write_entry(sink, 100 + static_cast<unsigned>(child), number)) return 1;
          }
          return sink.Flush(10000) ? 0 : 2;
        });
      }
      stop = true;
      for (std::thread& thread : threads) thread.join();
      EXPECT_EQ(sink.Close(10000), 0U);
    }
    { qz_LOG_FileSink next(settings); }
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    lines.expect_no_gaps();
    for (unsigned thread = 0; thread < kThreads; ++thread)
      EXPECT_EQ(lines.numbers[thread], counted_to(written[thread]));
    for (int child = 0; child < children; ++child) EXPECT_EQ(lines.numbers[100 + child], counted_to(5));
  }
}

TEST_F(FileSinkEndsTest, ParentKilledWhileItsForkLives_IsRecovered) {
  Settings settings = single(Settings::kShared);
  settings.longest_delay_milliseconds = 60000;
  int alive[2];
  ASSERT_EQ(pipe(alive), 0);
  const pid_t parent = fork();
  if (parent == 0) {
    auto* const sink = new qz_LOG_FileSink(settings);
    for (unsigned number = 0; number < 10; ++number) write_entry(*sink, 1, number);
    int runs[2];
    if (pipe(runs) != 0) _exit(1);
    char byte = 0;
    if (fork() == 0) {
      close(alive[1]);
      if (write(runs[1], "", 1) != 1) _exit(1);
      static_cast<void>(read(alive[0], &byte, 1) + 1);  // until the test has looked
      _exit(0);
    }
    // From its first instructions on the child holds nothing of its parent's files.
    static_cast<void>(read(runs[0], &byte, 1) + 1);
    kill(getpid(), SIGKILL);
  }
  waitpid(parent, nullptr, 0);
  { qz_LOG_FileSink next(settings); }
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], counted_to(10));
  close(alive[0]);
  close(alive[1]);
}

}  // namespace
}  // namespace qz_test
