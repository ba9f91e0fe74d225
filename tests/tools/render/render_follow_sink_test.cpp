// `qzlog render --follow` over what file sinks write: every line once, and in order.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/file_sink.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/child_process.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/render/render_follow_fixture.h"

namespace qzlog_test {
namespace {

/// Writes numbers through a file sink until it is told to stop; returns how many.
int write_through_a_sink(const std::string& definitions, const qz_LOG_FileSinkSettings& settings, int count) {
  qz_LOG_LogConfig::SetDefinitionPath(definitions.c_str());
  qz_LOG_FileSink sink(settings);
  for (int number = 1; number <= count; ++number) {
    qz_LOG_LogEntry entry(1, 3);
    entry.AddAttrib4u("N", static_cast<unsigned>(number));
    if (!sink.Write(entry)) return 1;
    if (number % 500 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return sink.Close(60'000) == 0 ? 0 : 2;
}

class RenderFollowsASink : public RenderFollow {
 protected:
  RenderFollowsASink() {
    EXPECT_EQ(run("$QZLOG compile d.yaml -o d.ldf").err, "");
    settings_.folder = folder_.path("logs");
    settings_.prefix = "s";
    settings_.largest_file_bytes = 4096;
  }

  /// A writer in a process of its own while another one follows: every line once, and in order.
  void expect_every_line(int count, const std::vector<std::string>& arguments) {
    Following following = follow(arguments);
    if (arguments.back() == "logs/s") following.wait_for_word("waiting");
    qz_test::ChildProcess writer([&] { return write_through_a_sink(folder_.path("d.ldf"), settings_, count); });
    std::size_t most = 0;
    for (int number = 1; number <= count; ++number) {
      ASSERT_EQ(following.hear(1), std::to_string(number) + '\n');
      heard_ = number;
      if (number % 1000 == 0) most = std::max(most, following.descriptors());
    }
    EXPECT_EQ(writer.wait(), 0);
    EXPECT_EQ(following.overhear(), "");
    EXPECT_LE(most, 16U);
    EXPECT_EQ(following.end(), -SIGTERM);
    const std::string said = read("said");
    EXPECT_NE(said.find("seq: " + std::to_string(count) + " lines of 1 writer, 0 missing, 0 doubled\n"),
              std::string::npos)
        << said;
  }

  void expect_successful_writer(int count) {
    qz_test::ChildProcess writer([&] { return write_through_a_sink(folder_.path("d.ldf"), settings_, count); });
    EXPECT_EQ(writer.wait(), 0);
  }

  /// What the first line of a file says; 0 while there is none.
  int first_number_in(const std::string& name) const {
    std::ifstream file(folder_.path(name));
    std::string line;
    std::getline(file, line);
    const std::size_t at = line.find("\"N\":");
    return at == std::string::npos ? 0 : std::stoi(line.substr(at + 4));
  }

  qz_LOG_FileSinkSettings settings_;
  std::atomic<int> heard_{0};
};

TEST_F(RenderFollowsASink, Series_EveryLineOnceAndInOrder) {
  for (const auto way :
       {qz_LOG_FileSinkSettings::kWrite, qz_LOG_FileSinkSettings::kShared, qz_LOG_FileSinkSettings::kBuffered}) {
    SCOPED_TRACE(way);
    settings_.way = way;
    settings_.longest_delay_milliseconds = 1;
    expect_every_line(20'000, {"--check-gaps", "logs/s"});
    std::filesystem::remove_all(folder_.path("logs"));
    std::filesystem::create_directory(folder_.path("logs"));
    std::filesystem::remove(folder_.path("said"));
  }
}

TEST_F(RenderFollowsASink, Folder_EveryLineOnceAndInOrder) {
  settings_.way = qz_LOG_FileSinkSettings::kWrite;
  expect_every_line(20'000, {"--check-gaps", "logs"});
}

// What logrotate does, several times, to a file that a sink writes. The sink looks each second whether it still has its
// name; the file is renamed when who follows has seen it, however busy the machine is.
TEST_F(RenderFollowsASink, RenamedFile_EveryLineOnceAndInOrder) {
  settings_ = qz_LOG_FileSinkSettings();
  settings_.path = folder_.path("logs/s.jsonl");
  settings_.way = qz_LOG_FileSinkSettings::kWrite;
  append("logs/s.jsonl", "");
  std::atomic<bool> is_done{false};
  std::thread rotation([&] {
    for (int number = 1; !is_done;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      const int first = first_number_in("logs/s.jsonl");
      if (first != 0 && first <= heard_) rename("logs/s.jsonl", "logs/s.jsonl." + std::to_string(number++));
    }
  });
  expect_every_line(300'000, {"--check-gaps", "logs/s.jsonl"});
  is_done = true;
  rotation.join();
  EXPECT_TRUE(folder_.has("logs/s.jsonl.1"));
}

/// Processes that write one series at once, some of which are killed: what they have left is written by the next.
TEST_F(RenderFollowsASink, ProcessesThatAreKilled_EveryLineOfEachOnce) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 6;
  qz_test::SeededRandom random;
  settings_.longest_delay_milliseconds = 5;
  Following following = follow({"--check-gaps", "logs/s"});
  following.wait_for_word("waiting");
  for (int round = 0; round < kRounds; ++round) {
    std::vector<pid_t> processes;
    for (int number = 0; number < kProcesses; ++number) {
      processes.push_back(::fork());
      if (processes.back() == 0) {
        write_through_a_sink(folder_.path("d.ldf"), settings_, 1'000'000);
        ::_exit(0);
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(random.between(20, 150)));
    for (const pid_t process : processes) ::kill(process, SIGKILL);
    for (const pid_t process : processes) ::waitpid(process, nullptr, 0);
  }
  expect_successful_writer(1);  // writes what the last ones have left
  std::string text;
  for (std::string more = following.overhear(1000); !more.empty(); more = following.overhear(1000)) text += more;
  EXPECT_EQ(following.end(), -SIGTERM);
  const std::string said = read("said");
  EXPECT_NE(said.find(" writers, 0 missing, 0 doubled\n"), std::string::npos) << said.substr(0, 3000);
  EXPECT_NE(text, "");
  write("followed", text);
  EXPECT_EQ(
      run("$QZLOG render --no-icu --definitions d.yaml --check-gaps logs/s | sort >all && sort followed | cmp - all")
          .out,
      "");
}

}  // namespace
}  // namespace qzlog_test
