// Which files the lines go to: days, sizes, other programs that rename, cut and delete.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <thread>

#include "qzlog/file_sink.h"
#include "qzlog/qz_exception.h"
#include "sinks/log_file.h"
#include "sinks/log_series.h"
#include "sinks/sink_clock.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/debug_log_file.h"
#include "tests/support/scoped_environment.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;
using Names = std::vector<std::string>;

std::atomic<std::time_t> g_now{0};

/// The sinks' clock stands at a moment of the test's choice.
class SetClock {
 public:
  explicit SetClock(std::time_t now) {
    g_now = now;
    qzlog::SinkClock::replace([] { return std::timespec{g_now.load(), 5}; });
  }
  ~SetClock() { qzlog::SinkClock::replace(nullptr); }
  SetClock(const SetClock&) = delete;
  SetClock& operator=(const SetClock&) = delete;

  static void set(std::time_t now) { g_now = now; }
};

constexpr std::time_t kNoon = 1795262400;  // 2026-11-21 12:00 GMT
constexpr std::time_t kDay = 86400;

class FileSinkFilesTest : public SinkTest {
 protected:
  Names series_files() const {
    WrittenLines lines;
    lines.take_series(logs(), "app");
    lines.expect_no_gaps();
    return lines.files;
  }
  void expect_numbers(const std::vector<std::string>& paths, const std::vector<long long>& numbers) const {
    WrittenLines lines;
    for (const std::string& path : paths) lines.take_file(path);
    lines.expect_no_gaps();
    EXPECT_EQ(lines.numbers[1], numbers);
  }

 private:
  const TimeZone zone_{"IST-05:30"};  // east of Greenwich
};

TEST_F(FileSinkFilesTest, Midnight_BeginsAFileOfTheLocalDay) {
  // 18:30 GMT is midnight.
  constexpr std::time_t kMidnight = kNoon + 6 * 3600 + 1800;
  const SetClock clock(kMidnight - 1);
  qz_LOG_FileSink sink(series(Settings::kWrite));
  EXPECT_TRUE(write_entry(sink, 1, 0));
  SetClock::set(kMidnight);
  EXPECT_TRUE(write_entry(sink, 1, 1));
  SetClock::set(kMidnight + kDay);
  EXPECT_TRUE(write_entry(sink, 1, 2));
  EXPECT_EQ(series_files(), (Names{"app.20261121.0001", "app.20261122.0001", "app.20261123.0001"}));
  EXPECT_EQ(sink.GetStatus().rotations, 2U);
}

TEST_F(FileSinkFilesTest, ClockJumpsBack_NoEarlierFileIsWritten) {
  const SetClock clock(kNoon);
  {
    qz_LOG_FileSink sink(series(Settings::kWrite));
    EXPECT_TRUE(write_entry(sink, 1, 0));
    SetClock::set(kNoon - 3 * kDay);
    EXPECT_TRUE(write_entry(sink, 1, 1));
    EXPECT_TRUE(sink.Rotate());
    EXPECT_TRUE(write_entry(sink, 1, 2));
  }
  {
    qz_LOG_FileSink sink(series(Settings::kShared));
    EXPECT_TRUE(write_entry(sink, 1, 3));
  }
  EXPECT_EQ(series_files(), (Names{"app.20261121.0001", "app.20261121.0002"}));
  expect_numbers({logs() + "/app.20261121.0001", logs() + "/app.20261121.0002"}, counted_to(4));
}

TEST_F(FileSinkFilesTest, Number9999_TakesTheRestOfTheDayAndIsToldOnce) {
  const SetClock clock(kNoon);
  const DebugLogFile log(1);
  folder_.write("logs/app.20261121.9998", "");
  Settings settings = series(Settings::kWrite);
  settings.largest_file_bytes = 4096;
  qz_LOG_FileSink sink(settings);
  for (unsigned number = 0; number < 100; ++number) EXPECT_TRUE(write_entry(sink, 1, number));
  EXPECT_EQ(series_files(), (Names{"app.20261121.9998", "app.20261121.9999"}));
  EXPECT_TRUE(sink.GetStatus().numbers_exhausted);
  EXPECT_FALSE(sink.Rotate());
  unsigned told = 0;
  for (const std::string& record : log.unnumbered_records()) told += record.rfind("log_destination:", 0) == 0 ? 1 : 0;
  EXPECT_EQ(told, 1U);
  SetClock::set(kNoon + kDay);
  EXPECT_TRUE(write_entry(sink, 1, 100));
  EXPECT_FALSE(sink.GetStatus().numbers_exhausted);
  EXPECT_EQ(series_files().back(), "app.20261122.0001");
}

TEST_F(FileSinkFilesTest, KeepFiles_DeletesTheEarliestThatNobodyHolds) {
  const SetClock clock(kNoon);
  for (const char* name : {"logs/app.20260101.0001", "logs/app.20261119.0001", "logs/app.20261120.0007",
                           "logs/app.2026111.0001", "logs/application.20260101.0001"}) {
    folder_.write(name, "");
  }
  qzlog::LogFile held;
  ASSERT_TRUE(held.open(logs() + "/app.20261119.0001", 0640));
  Settings settings = series(Settings::kWrite);
  settings.keep_files = 2;
  qz_LOG_FileSink sink(settings);
  EXPECT_TRUE(write_entry(sink, 1, 0));
  EXPECT_TRUE(sink.Rotate());
  EXPECT_EQ(sink.Close(10000), 0U);
  EXPECT_EQ(names_in(logs()), (Names{".app_lock", "app.2026111.0001", "app.20261119.0001", "app.20261121.0001",
                                     "app.20261121.0002", "application.20260101.0001"}));
}

TEST_F(FileSinkFilesTest, KeepDays_DeletesThoseOfEarlierDays) {
  const SetClock clock(kNoon);
  for (const char* name : {"logs/app.20261118.0001", "logs/app.20261119.0001", "logs/app.20261120.0001"}) {
    folder_.write(name, "");
  }
  Settings settings = series(Settings::kWrite);
  settings.keep_days = 3;
  settings.sync_at_rotation = true;
  qz_LOG_FileSink sink(settings);
  EXPECT_TRUE(write_entry(sink, 1, 0));
  EXPECT_TRUE(sink.Rotate());
  EXPECT_EQ(sink.Close(10000), 0U);
  EXPECT_EQ(names_in(logs()),
            (Names{".app_lock", "app.20261119.0001", "app.20261120.0001", "app.20261121.0001", "app.20261121.0002"}));
  EXPECT_EQ(sink.GetStatus().sync_failures, 0U);
}

TEST_F(FileSinkFilesTest, ManyRotations_LeaveNoDescriptorsBehind) {
  const auto descriptors = [] { return names_in("/proc/self/fd").size(); };
  Settings settings = series(Settings::kShared);
  settings.keep_files = 3;
  qz_LOG_FileSink sink(settings);
  ASSERT_TRUE(write_entry(sink, 1, 0));
  const std::size_t before = descriptors();
  for (unsigned number = 1; number <= 300; ++number) {
    ASSERT_TRUE(write_entry(sink, 1, number));
    ASSERT_TRUE(sink.Rotate());
  }
  EXPECT_TRUE(sink.Flush(10000));
  EXPECT_EQ(sink.Close(10000), 0U);
  EXPECT_LE(descriptors(), before);
  EXPECT_LE(names_in(logs()).size(), 12U);
}

TEST_F(FileSinkFilesTest, RenameAndReopen_GoesOnInANewFile) {
  for (const Settings::Way way : kWays) {
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    qz_LOG_FileSink sink(settings);
    EXPECT_TRUE(write_entry(sink, 1, 0));
    EXPECT_TRUE(sink.Flush(10000));
    std::filesystem::rename(settings.path, own.path("app.log.1"));
    EXPECT_TRUE(sink.Reopen());
    EXPECT_TRUE(write_entry(sink, 1, 1));
    EXPECT_EQ(sink.Close(10000), 0U);
    EXPECT_EQ(sink.GetStatus().reopened, 1U);
    EXPECT_NE(read_file(settings.path), "");
    expect_numbers({own.path("app.log.1"), settings.path}, counted_to(2));
  }
}

TEST_F(FileSinkFilesTest, RenameAlone_IsSeenWithinASecond) {
  const SetClock clock(kNoon);
  qz_LOG_FileSink sink(single(Settings::kWrite));
  EXPECT_TRUE(write_entry(sink, 1, 0));
  std::filesystem::rename(log_path(), logs() + "/app.log.1");
  EXPECT_TRUE(write_entry(sink, 1, 1));
  SetClock::set(kNoon + 1);
  EXPECT_TRUE(write_entry(sink, 1, 2));
  expect_numbers({logs() + "/app.log.1", log_path()}, counted_to(3));
  expect_numbers({logs() + "/app.log.1"}, counted_to(2));
}

TEST_F(FileSinkFilesTest, FileCutByAnother_IsSeenAndGoneOnWith) {
  const SetClock clock(kNoon);
  qz_LOG_FileSink sink(single(Settings::kWrite));
  EXPECT_TRUE(write_entry(sink, 1, 0));
  EXPECT_TRUE(write_entry(sink, 1, 1));
  std::filesystem::copy(log_path(), logs() + "/app.log.1");
  ASSERT_EQ(truncate(log_path().c_str(), 0), 0);
  SetClock::set(kNoon + 1);
  EXPECT_TRUE(write_entry(sink, 1, 2));
  EXPECT_EQ(sink.GetStatus().truncations, 1U);
  expect_numbers({logs() + "/app.log.1", log_path()}, counted_to(3));
}

TEST_F(FileSinkFilesTest, FolderDeleted_LinesWaitUntilItIsThereAgain) {
  const SetClock clock(kNoon);
  Settings settings = single(Settings::kShared);
  settings.longest_delay_milliseconds = 1;
  qz_LOG_FileSink sink(settings);
  EXPECT_TRUE(write_entry(sink, 1, 0));
  EXPECT_TRUE(sink.Flush(10000));
  std::filesystem::remove_all(logs());
  SetClock::set(kNoon + 1);
  EXPECT_TRUE(write_entry(sink, 1, 1));
  EXPECT_FALSE(sink.Flush(30));
  EXPECT_FALSE(sink.GetStatus().working);
  std::filesystem::create_directory(logs());
  EXPECT_EQ(sink.Close(10000), 0U);
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], std::vector<long long>{1});
}

TEST_F(FileSinkFilesTest, DescriptorsClosedByAnother_NothingIsWrittenToWhatHasTheirNumber) {
  const SetClock clock(kNoon);
  qz_LOG_FileSink sink(single(Settings::kWrite));
  EXPECT_TRUE(write_entry(sink, 1, 0));
  expect_child_succeeds([] { return 0; });
  // As programs do that become daemons.
  const std::string other = folder_.write("other", "");
  std::vector<int> reopened;
  for (const std::string& name : names_in("/proc/self/fd")) {
    char target[4096] = {};
    const std::string link = "/proc/self/fd/" + name;
    if (readlink(link.c_str(), target, sizeof target - 1) > 0 && log_path() == target) {
      close(std::stoi(name));
      reopened.push_back(open(other.c_str(), O_RDWR | O_CLOEXEC));
    }
  }
  ASSERT_EQ(reopened.size(), 1U);
  SetClock::set(kNoon + 1);
  EXPECT_TRUE(write_entry(sink, 1, 1));
  EXPECT_EQ(read_file(other), "");
  expect_numbers({log_path()}, counted_to(2));
  close(reopened[0]);
}

TEST_F(FileSinkFilesTest, EndOfFileThatIsNoLine_GetsALineBreak) {
  folder_.write("logs/app.log", "what somebody else wrote");
  {
    qz_LOG_FileSink sink(single(Settings::kShared));
    EXPECT_TRUE(write_entry(sink, 1, 0));
  }
  EXPECT_EQ(read_file(log_path()).rfind("what somebody else wrote\n{\"writer\":", 0), 0U);
}

TEST_F(FileSinkFilesTest, EndOfFileThatIsAPartOfOurLine_IsCutOff) {
  for (const char* part : {"{", "{\"writer\":\"a/1", "{\"writer\":\"a/1/2\",\"seq\":1,\"wri"}) {
    folder_.write("logs/app.log", std::string("{}\n") + part);
    qz_LOG_FileSink sink(single(Settings::kShared));
    EXPECT_EQ(read_file(log_path()), "{}\n");
    EXPECT_EQ(sink.GetStatus().damaged, std::string(part).size());
  }
}

TEST_F(FileSinkFilesTest, OtherPendingFiles_AreNoneOfOurs) {
  // What another version, or a hostile process, puts there ends nobody.
  const std::string strange[] = {"", "short", std::string(5000, '\xFF'), "QZPEND1\n" + std::string(5000, '\xFF'),
                                 "QZPEND2\n" + std::string(5000, 'x')};
  for (const std::string& bytes : strange) {
    folder_.write("logs/.app.log_pending.1.2", bytes);
    qz_LOG_FileSink sink(single(Settings::kShared));
    EXPECT_TRUE(write_entry(sink, 1, 0));
    EXPECT_EQ(sink.GetStatus().recovered, 0U);
  }
  std::filesystem::remove(logs() + "/.app.log_pending.1.2");
  ASSERT_EQ(mkfifo((logs() + "/.app.log_pending.1.3").c_str(), 0600), 0);
  std::filesystem::create_directory(logs() + "/.app.log_pending.1.4");
  std::filesystem::create_symlink("/etc/passwd", logs() + "/.app.log_pending.1.5");
  qz_LOG_FileSink sink(single(Settings::kShared));
  EXPECT_TRUE(write_entry(sink, 1, 0));
}

TEST_F(FileSinkFilesTest, FifoWhoseReaderStops_WriteReturnsAndTheLossIsTold) {
  const std::string path = logs() + "/fifo";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  Settings settings = single(Settings::kShared);
  settings.path = path;
  settings.longest_wait_milliseconds = 1;
  qz_LOG_FileSink sink(settings);
  EXPECT_EQ(sink.GetStatus().way, Settings::kWrite);
  std::string text;
  const auto read_all = [&] {
    char bytes[65536];
    for (ssize_t count = 0; (count = read(reader, bytes, sizeof bytes)) > 0;) {
      text.append(bytes, static_cast<std::size_t>(count));
    }
  };
  std::vector<long long> taken;
  long long failed = 0;
  // Each is longer than what a pipe takes as a whole.
  qz_LOG_LogEntry entry(kEvent, 3);
  entry.AddAttribMBStr("Text", std::string(2000, '\1').c_str());
  entry.AddAttrib4u("Source", 1);
  for (unsigned number = 0; number < 40; ++number) {
    entry.AddAttrib4u("Number", number);
    if (number == 30) read_all();
    if (sink.Write(entry)) {
      taken.push_back(number);
    } else {
      ++failed;
    }
  }
  read_all();
  ASSERT_GT(failed, 0);
  EXPECT_EQ(sink.Close(10000), 0U);
  read_all();
  WrittenLines lines;
  lines.take_text(text, path);
  EXPECT_EQ(lines.torn, Names());
  EXPECT_LE(lines.damaged.size(), sink.GetStatus().fragments);
  EXPECT_EQ(lines.out_of_order, Names());
  EXPECT_EQ(lines.numbers[1], taken);
  EXPECT_EQ((lines.lost[{kEvent, 3}]), failed);
  close(reader);
}

TEST_F(FileSinkFilesTest, FifoWithoutReader_IsNoSignal) {
  const std::string path = logs() + "/fifo";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  Settings settings = single(Settings::kWrite);
  settings.path = path;
  qz_LOG_FileSink sink(settings);
  EXPECT_TRUE(write_entry(sink, 1, 0));
  close(reader);
  EXPECT_FALSE(write_entry(sink, 1, 1));
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

/// A file system of its own for a child, where that may be had; else the test is skipped with a word.
constexpr int kNoMount = 77;
int with_small_disk(const std::string& folder, const std::function<int()>& body) {
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=1m") != 0) {
    return kNoMount;
  }
  return body();
}

TEST_F(FileSinkFilesTest, DiskOf1MiB_LossIsToldWhenThereIsRoomAgain) {
  for (const Settings::Way way : {Settings::kWrite, Settings::kShared}) {
    SCOPED_TRACE(way);
    const int status = ChildProcess([&] {
                         return with_small_disk(logs(), [&] {
                           const std::string ballast = logs() + "/ballast";
                           { std::ofstream(ballast) << std::string(300000, 'x'); }
                           Settings settings = single(way);
                           settings.longest_wait_milliseconds = 50;
                           settings.buffer_bytes = 128U << 10;  // so much of the disk is left for the log
                           qz_LOG_FileSink sink(settings);
                           long long failed = 0;
                           std::vector<long long> taken;
                           for (unsigned number = 0; number < 10000; ++number) {
                             if (write_entry(sink, 1, number)) {
                               taken.push_back(number);
                             } else {
                               ++failed;
                             }
                           }
                           std::filesystem::remove(ballast);
                           if (sink.Close(10000) != 0) return 1;
                           WrittenLines lines;
                           lines.take_file(settings.path);
                           if (failed == 0 || lines.numbers[1] != taken) return 2;
                           if (!lines.damaged.empty() || !lines.torn.empty() || !lines.out_of_order.empty()) return 3;
                           return lines.lost[{kEvent, 3}] == failed ? 0 : 4;
                         });
                       }).wait();
    if (status == kNoMount) GTEST_SKIP() << "file systems cannot be mounted here";
    EXPECT_EQ(status, 0);
  }
}

TEST_F(FileSinkFilesTest, ReadOnlyFileSystem_IsAnErrorAtOpenAndALossLater) {
  const int status = ChildProcess([&] {
                       return with_small_disk(logs(), [&] {
                         {
                           qz_LOG_FileSink sink(single(Settings::kWrite));
                           if (!write_entry(sink, 1, 0)) return 1;
                         }
                         if (mount("none", logs().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
                           return kNoMount;
                         try {
                           const qz_LOG_FileSink sink(single(Settings::kShared));
                           return 2;
                         } catch (const QZX_logging_file_operation_failed& error) {
                           const std::string text = error.get_message();
                           return text.find("Read-only file system") != std::string::npos ? 0 : 3;
                         }
                       });
                     }).wait();
  if (status == kNoMount) GTEST_SKIP() << "file systems cannot be mounted here";
  EXPECT_EQ(status, 0);
}

/// What logrotate does while a sink writes; it is not installed everywhere.
class LogrotateTest : public FileSinkFilesTest {
 protected:
  void SetUp() override {
    if (access("/usr/sbin/logrotate", X_OK) != 0) GTEST_SKIP() << "logrotate is not installed";
  }
  void rotate(const std::string& options) const {
    const std::string text =
        log_path() + " {\n  rotate 5\n  su root root\n  missingok\n  nocompress\n" + options + "\n}\n";
    const std::string configuration = folder_.write("logrotate.conf", text);
    ASSERT_EQ(chmod(configuration.c_str(), 0644), 0);
    const std::string command =
        "/usr/sbin/logrotate --force --state " + folder_.path("state") + " " + configuration + " 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
  }
};

TEST_F(LogrotateTest, RenameWithReopenAndAlone_LoseNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "the configuration is for root";
  for (const bool reopens : {true, false}) {
    for (const Settings::Way way : kWays) {
      SCOPED_TRACE(way);
      std::filesystem::remove_all(logs());
      std::filesystem::create_directory(logs());
      ASSERT_EQ(chmod(logs().c_str(), 0755), 0);
      qz_LOG_FileSink sink(single(way));
      unsigned number = 0;
      for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 200; ++i) ASSERT_TRUE(write_entry(sink, 1, number++));
        rotate("  nocreate");
        EXPECT_TRUE(!reopens || sink.Reopen());
      }
      ASSERT_TRUE(write_entry(sink, 1, number++));
      EXPECT_EQ(sink.Close(10000), 0U);
      std::vector<std::string> paths;
      for (const char* name : {".3", ".2", ".1", ""}) paths.push_back(log_path() + name);
      expect_numbers(paths, counted_to(number));
    }
  }
}

TEST_F(LogrotateTest, Copytruncate_IsDetected) {
  if (geteuid() != 0) GTEST_SKIP() << "the configuration is for root";
  const SetClock clock(kNoon);
  ASSERT_EQ(chmod(logs().c_str(), 0755), 0);
  qz_LOG_FileSink sink(single(Settings::kWrite));
  for (unsigned number = 0; number < 100; ++number) ASSERT_TRUE(write_entry(sink, 1, number));
  rotate("  copytruncate");
  SetClock::set(kNoon + 2);
  ASSERT_TRUE(write_entry(sink, 1, 100));
  EXPECT_EQ(sink.GetStatus().truncations, 1U);
  expect_numbers({log_path() + ".1", log_path()}, counted_to(101));
}

}  // namespace
}  // namespace qz_test
