// Many processes and threads write one series: a short form of what ./dev stress does.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <vector>

#include "qzlog/file_sink.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/rounds.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

bool is_long() { return std::getenv("QZLOG_STRESS") != nullptr; }

class FileSinkStressTest : public SinkTest {
 protected:
  /// A process whose threads write `entries` each; 0 when all were taken.
  static int write_all(const Settings& settings, unsigned process, unsigned threads, unsigned entries) {
    qz_LOG_FileSink sink(settings);
    std::atomic<int> failed{0};
    std::vector<std::thread> all;
    for (unsigned thread = 0; thread < threads; ++thread) {
      all.emplace_back([&, source = process * threads + thread] {
        for (unsigned number = 0; number < entries; ++number) {
          if (!write_entry(sink, source, number, "a text of some length for an entry")) ++failed;
        }
      });
    }
    for (std::thread& thread : all) thread.join();
    return failed == 0 && sink.Close(60000) == 0 ? 0 : 1;
  }
};

TEST_F(FileSinkStressTest, ManyProcessesAndRotations_EachEntryOnceAndInOrder) {
  const unsigned processes = is_long() ? 8 : 4;
  const unsigned threads = is_long() ? 8 : 4;
  const unsigned entries = is_long() ? 20000 : static_cast<unsigned>(rounds(800));
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = series(way);
    settings.folder = own.path();
    settings.longest_wait_milliseconds = 60000;
    const auto begin = std::chrono::steady_clock::now();
    std::vector<pid_t> children;
    for (unsigned process = 0; process < processes; ++process) {
      const pid_t child = fork();
      if (child == 0) _exit(write_all(settings, process, threads, entries));
      children.push_back(child);
    }
    std::size_t running = children.size();
    qz_LOG_FileSink rotating(settings);
    while (running != 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(is_long() ? 100 : 5));
      EXPECT_TRUE(rotating.Rotate());
      int status = 0;
      while (waitpid(-1, &status, WNOHANG) > 0) {
        --running;
        EXPECT_EQ(status, 0);
      }
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(rotating.Close(10000), 0U);
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    lines.expect_no_gaps();
    for (unsigned source = 0; source < processes * threads; ++source) {
      EXPECT_EQ(lines.numbers[source], counted_to(entries)) << "source " << source;
    }
    std::printf("way %d: %zu lines in %zu files, %lld ms\n", way, lines.lines.size(), lines.files.size(),
                static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
  }
}

long resident_kilobytes() {
  long pages = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// The long form takes as many seconds as QZLOG_STRESS_SECONDS says, ten minutes without.
TEST_F(FileSinkStressTest, Soak_MemoryAndDescriptorsStayFlat) {
  const char* const given = std::getenv("QZLOG_STRESS_SECONDS");
  const std::chrono::seconds time(!is_long() ? 1 : given != nullptr ? std::atoi(given) : 600);
  Settings settings = series(Settings::kShared);
  settings.largest_file_bytes = is_long() ? 8U << 20 : 1U << 20;
  settings.keep_files = 4;
  qz_LOG_FileSink sink(settings);
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  std::atomic<unsigned long long> failed{0};
  // As many as the numbers of a day last for: the file behind them takes all the rest, and would fill the disk.
  constexpr unsigned kEntriesEachMillisecond = 100;
  for (unsigned thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&, thread] {
      for (unsigned number = 0; !stop; ++number) {
        failed += write_entry(sink, thread, number, "some text") ? 0 : 1;
        if (number % kEntriesEachMillisecond == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
  }
  std::this_thread::sleep_for(time / 4);
  const long memory = resident_kilobytes();
  const std::size_t descriptors = names_in("/proc/self/fd").size();
  std::this_thread::sleep_for(time - time / 4);
  const long memory_after = resident_kilobytes();
  // A file is opened while another is still open.
  const std::size_t descriptors_after = names_in("/proc/self/fd").size();
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sink.Close(10000), 0U);
  EXPECT_LE(memory_after, memory + 2048);
  EXPECT_LE(descriptors_after, descriptors + 4);
  EXPECT_EQ(failed, 0U);
  EXPECT_FALSE(sink.GetStatus().numbers_exhausted);
  std::printf("%llu entries, %llu rotations, %ld KiB before, %ld KiB after\n", sink.GetCounts().written,
              sink.GetStatus().rotations, memory, memory_after);
}

}  // namespace
}  // namespace qz_test
