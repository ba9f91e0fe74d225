// logrotate, while processes write: each of its ways with each way of keeping entries.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/file_sink.h"
#include "tests/other_programs/hostile_series.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/child_process.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

constexpr const char* kLogrotate = "/usr/sbin/logrotate";
constexpr unsigned kRotations = 2;
constexpr std::chrono::seconds kPatience(30);

volatile std::sig_atomic_t g_reopen = 0;
void ask_for_reopening(int) { g_reopen = 1; }

/// False when it has not come true for too long.
bool wait_until(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// What logrotate does, and how a writer knows that it did.
struct Rotation {
  const char* options;
  unsigned long long (*seen)(const qz_LOG_FileSinkStatus& status, unsigned long long signals);
};
const Rotation kRenameWithSignal = {"nocreate\n  postrotate\n    kill -HUP PIDS\n  endscript",
                                    [](const qz_LOG_FileSinkStatus&, unsigned long long signals) { return signals; }};
const Rotation kRenameAlone = {"nocreate",
                               [](const qz_LOG_FileSinkStatus& status, unsigned long long) { return status.reopened; }};
const Rotation kCopytruncate = {
    "copytruncate", [](const qz_LOG_FileSinkStatus& status, unsigned long long) { return status.truncations; }};

/// Writers, one for each way of keeping entries, in processes and folders of their own.
class LogrotateTest : public SinkTest {
 protected:
  void SetUp() override {
    if (access(kLogrotate, X_OK) != 0) GTEST_SKIP() << "logrotate is not installed";
    for (const Settings::Way way : kWays) std::filesystem::create_directory(folder_of(way));
  }

  std::string folder_of(Settings::Way way) const { return folder_.path("way" + std::to_string(way)); }
  std::string log_of(Settings::Way way) const { return folder_of(way) + "/app.log"; }

  /// Writes until it has seen all rotations, telling of each by a file; the exit status 0.
  int write_until_rotated(Settings::Way way, const Rotation& rotation) const {
    std::signal(SIGHUP, ask_for_reopening);
    Settings settings = single(way);
    settings.path = log_of(way);
    settings.longest_delay_milliseconds = 5;
    qz_LOG_FileSink sink(settings);
    unsigned number = 0;
    unsigned long long signals = 0;
    unsigned long long seen = 0;
    const bool is_done = wait_until([&] {
      if (g_reopen != 0) {
        g_reopen = 0;
        if (sink.Reopen()) ++signals;
      }
      if (!write_entry(sink, 1, number++)) return true;
      seen = rotation.seen(sink.GetStatus(), signals);
      if (number > 100) folder_.write(seen_name(way, seen), "");
      return seen >= kRotations;
    });
    if (!is_done || seen < kRotations) return 1;
    if (sink.Close(10000) != 0) return 2;
    folder_.write("count" + std::to_string(way), std::to_string(number));
    return 0;
  }

  /// Writers start, logrotate runs as often as it should, writers end.
  void run(const Rotation& rotation) {
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (const Settings::Way way : kWays) {
      writers.push_back(std::make_unique<ChildProcess>([&] {
        folder_.write("pid" + std::to_string(way), std::to_string(getpid()));
        return write_until_rotated(way, rotation);
      }));
    }
    for (unsigned round = 0; round < kRotations; ++round) {
      ASSERT_TRUE(wait_until([&] { return all_have_seen(round); })) << "rotation " << round;
      rotate(rotation.options);
    }
    for (const auto& writer : writers) EXPECT_EQ(writer->wait(), 0);
  }

  static std::string seen_name(Settings::Way way, unsigned long long rotations) {
    return "seen" + std::to_string(way) + "." + std::to_string(rotations);
  }
  bool all_have_seen(unsigned rotations) const {
    return std::all_of(std::begin(kWays), std::end(kWays),
                       [&](Settings::Way way) { return folder_.has(seen_name(way, rotations)); });
  }

  void rotate(std::string options) const {
    std::string pids;
    for (const Settings::Way way : kWays) pids += folder_.read("pid" + std::to_string(way)) + " ";
    if (const std::size_t at = options.find("PIDS"); at != std::string::npos) options.replace(at, 4, pids);
    const std::string path = folder_.write(
        "logrotate.conf", folder_.path("way*/app.log") + " {\n  rotate 9\n  sharedscripts\n  " + options + "\n}\n");
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    const ShellResult result =
        run_shell(std::string(kLogrotate) + " --force --state '" + folder_.path("state") + "' '" + path + "'");
    EXPECT_EQ(result.output, "");
    ASSERT_EQ(result.status, 0);
  }

  /// The log of a writer, the earliest file first.
  WrittenLines lines_of(Settings::Way way) const {
    WrittenLines lines;
    for (unsigned number = kRotations; number > 0; --number)
      lines.take_file(log_of(way) + "." + std::to_string(number));
    lines.take_file(log_of(way));
    return lines;
  }

  void expect_all() const {
    for (const Settings::Way way : kWays) {
      SCOPED_TRACE(way);
      const WrittenLines lines = lines_of(way);
      lines.expect_no_gaps();
      EXPECT_EQ(lines.numbers.at(1), counted_to(std::stoll(folder_.read("count" + std::to_string(way)))));
    }
  }
};

TEST_F(LogrotateTest, RenameAndSignal_LoseNothing) {
  run(kRenameWithSignal);
  expect_all();
}

TEST_F(LogrotateTest, RenameAlone_LosesNothing) {
  run(kRenameAlone);
  expect_all();
}

// What is written between its copying and its cutting is in no file; whatever is there is whole, in order and there
// once.
TEST_F(LogrotateTest, Copytruncate_IsSeenAndDoublesNothing) {
  run(kCopytruncate);
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    const WrittenLines lines = lines_of(way);
    EXPECT_EQ(lines.damaged, std::vector<std::string>());
    const std::vector<long long>& numbers = lines.numbers.at(1);
    for (std::size_t at = 1; at < numbers.size(); ++at) ASSERT_LT(numbers[at - 1], numbers[at]);
    EXPECT_EQ(numbers.front(), 0);
    EXPECT_EQ(numbers.back() + 1, std::stoll(folder_.read("count" + std::to_string(way))));
  }
}

}  // namespace
}  // namespace qz_test
