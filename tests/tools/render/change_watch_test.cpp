#include "tools/render/change_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/temp_dir.h"
#include "tools/system/stop_signals.h"

namespace qzlog_tool {
namespace {

using Clock = std::chrono::steady_clock;

class ChangeWatchTest : public ::testing::Test {
 protected:
  /// A wait that ends long before its bound ends by a change.
  static bool is_soon(Clock::time_point begin) { return Clock::now() - begin < ChangeWatch::kLongestWait / 2; }

  qz_test::TempDir folder_;
  std::string path_ = folder_.write("log", "");
};

TEST_F(ChangeWatchTest, NothingHappens_NamesAreLookedAtAfterAWhile) {
  ChangeWatch watch(-1);
  const Clock::time_point begin = Clock::now();
  while (!watch.wait().names) ASSERT_LT(Clock::now() - begin, std::chrono::seconds(20));
  EXPECT_GE(Clock::now() - begin, ChangeWatch::kLongestWait - std::chrono::milliseconds(1));
}

TEST_F(ChangeWatchTest, FileThatGrows_EndsTheWait) {
  ChangeWatch watch(-1);
  const FileDescriptor file(open_path(path_, O_RDONLY | O_CLOEXEC));
  const int number = watch.watch_file(file.get());
  ASSERT_GE(number, 0);
  std::filesystem::rename(path_, folder_.path("renamed"));
  std::ofstream(folder_.path("renamed"), std::ios::app) << "x";
  const Clock::time_point begin = Clock::now();
  EXPECT_FALSE(watch.wait().names);
  EXPECT_TRUE(is_soon(begin));
  watch.forget_file(number);
}

TEST_F(ChangeWatchTest, NewName_EndsTheWait) {
  ChangeWatch watch(-1);
  watch.watch_folder(folder_.path());
  folder_.write("new", "");
  const Clock::time_point begin = Clock::now();
  EXPECT_TRUE(watch.wait().names);
  EXPECT_TRUE(is_soon(begin));
  std::filesystem::rename(path_, folder_.path("renamed"));
  EXPECT_TRUE(watch.wait().names);
  EXPECT_TRUE(is_soon(begin));
}

TEST_F(ChangeWatchTest, ReaderThatLeaves_EndsTheWait) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor writer(ends[1]);
  ChangeWatch watch(writer.get());
  ::close(ends[0]);
  const Clock::time_point begin = Clock::now();
  EXPECT_TRUE(watch.wait().output_gone);
  EXPECT_TRUE(is_soon(begin));
}

TEST_F(ChangeWatchTest, OutputThatIsClosed_IsNotWaitedForInVain) {
  ChangeWatch watch(1000);  // no descriptor of ours
  watch.wait();
  const Clock::time_point begin = Clock::now();
  EXPECT_FALSE(watch.wait().output_gone);
  EXPECT_GT(Clock::now() - begin, ChangeWatch::kLongestWait / 4);
}

TEST_F(ChangeWatchTest, WithoutADescriptor_LooksAfterAWhile) {
  const qz_test::DescriptorLimit limit(0);
  ChangeWatch watch(-1);
  watch.watch_folder(folder_.path());
  EXPECT_LT(watch.watch_file(STDIN_FILENO), 0);
  EXPECT_TRUE(watch.wait().names);
}

TEST_F(ChangeWatchTest, SignalThatCameBefore_EndsTheWait) {
  const auto wait_after_signal = [] {
    const StopSignals signals;
    std::raise(SIGTERM);
    ChangeWatch watch(-1);
    const Clock::time_point begin = Clock::now();
    watch.wait();
    ::_exit(is_soon(begin) ? 0 : 1);
  };
  EXPECT_EXIT(wait_after_signal(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qzlog_tool
