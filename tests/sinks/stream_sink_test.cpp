#include "qzlog/stream_sink.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <cstring>
#include <thread>

#include "tests/sinks/sinks_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/resource_limit.h"
#include "tests/support/signal_action.h"

namespace {

using namespace qz_test;

using Settings = qz_LOG_StreamSinkSettings;

Settings no_wait() {
  Settings settings;
  settings.longest_wait_milliseconds = 0;
  return settings;
}

class StreamSink : public SinksTest {};

TEST_F(StreamSink, Json_IsTheLineOfTheEntry) {
  const Pipe pipe;
  qz_LOG_StreamSink sink(pipe.writer(), false);
  const qz_LOG_LogEntry entry = make_entry();
  EXPECT_TRUE(sink.Write(entry, true, 7));
  const std::string line = entry.ToJson(true, 7) + '\n';
  EXPECT_EQ(pipe.read_all(), line);
  EXPECT_EQ(counts_of(sink), "1/0/0");
  EXPECT_EQ(sink.GetCounts().bytes, line.size());
  EXPECT_EQ(sink.GetCounts().written_by_level[3], 1U);
}

TEST_F(StreamSink, Text_IsTheMessageInItsFormat) {
  const Pipe pipe;
  Settings settings;
  settings.form = Settings::kText;
  settings.format = "{id} {level:name}: {message}";
  qz_LOG_StreamSink sink(pipe.writer(), false, settings);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(pipe.read_all(), "1001 info: Disk vol1\n");
}

TEST_F(StreamSink, Closed_TakesNoMore) {
  const Pipe pipe;
  qz_LOG_StreamSink sink(pipe.writer(), false);
  EXPECT_TRUE(write_to(sink));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_EQ(counts_of(sink), "1/1/0");
  EXPECT_EQ(pipe.read_all(), line_of(3));
}

TEST_F(StreamSink, OwnedDescriptor_IsClosedWithIt_AnotherIsNot) {
  const Pipe pipe;
  const int own = dup(pipe.writer());
  { const qz_LOG_StreamSink sink(own, true); }
  EXPECT_EQ(fcntl(own, F_GETFD), -1);
  { const qz_LOG_StreamSink sink(pipe.writer(), false); }
  EXPECT_NE(fcntl(pipe.writer(), F_GETFD), -1);
}

TEST_F(StreamSink, BadSettings_NameThemAndLeaveTheDescriptor) {
  const Pipe pipe;
  const auto thrown_with = [&](int descriptor, const Settings& settings) {
    return thrown_by([&] { const qz_LOG_StreamSink sink(descriptor, true, settings); });
  };
  Settings settings;
  settings.longest_wait_milliseconds = 60001;
  EXPECT_EQ(thrown_with(pipe.writer(), settings),
            thrown<QZX_logging_illegal_argument>("longest_wait_milliseconds: 60001 is not from 0 to 60000"));
  settings = Settings();
  settings.form = Settings::kText;
  settings.format = "";
  EXPECT_EQ(thrown_with(pipe.writer(), settings), thrown<QZX_logging_illegal_argument>("format: it is empty"));
  EXPECT_EQ(thrown_with(-1, {}), thrown<QZX_logging_illegal_argument>("descriptor: -1 is not open"));
  EXPECT_EQ(thrown_with(1000, {}), thrown<QZX_logging_illegal_argument>("descriptor: 1000 is not open"));
  const std::string reader = std::to_string(pipe.reader());
  EXPECT_EQ(thrown_with(pipe.reader(), {}),
            thrown<QZX_logging_illegal_argument>("descriptor: " + reader + " is not open for writing"));
  EXPECT_NE(fcntl(pipe.writer(), F_GETFD), -1);
  EXPECT_NE(fcntl(pipe.reader(), F_GETFD), -1);
}

TEST_F(StreamSink, DescriptorClosedByOthers_FailsAndTellsOnceItIsBack) {
  StoppedClock clock(kMoment);
  Pipe pipe;
  const int number = dup(pipe.writer());
  qz_LOG_StreamSink sink(number, false);
  ::close(number);
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink, kOther, 7));
  EXPECT_EQ(counts_of(sink), "0/2/0");
  ASSERT_EQ(dup2(pipe.writer(), number), number);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(pipe.read_all(), R"({"lost":[{"id":1001,"level":3,"count":1,"since":"2026-11-21T08:15:30.250000000Z"},)"
                             R"({"id":1002,"level":7,"count":1,"since":"2026-11-21T08:15:30.250000000Z"}]})"
                             "\n" +
                                 line_of(3));
  ::close(number);
}

TEST_F(StreamSink, LossesOfText_AreTextLines) {
  StoppedClock clock(kMoment);
  Pipe pipe(O_NONBLOCK);
  pipe.shrink();
  ASSERT_EQ(::write(pipe.writer(), std::string(4096, 'x').data(), 4096), 4096);
  Settings settings = no_wait();
  settings.form = Settings::kText;
  settings.format = "{time} {level} {message}";
  qz_LOG_StreamSink sink(pipe.writer(), false, settings);
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  pipe.read_all();
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(pipe.read_all(),
            "2026-11-21T08:15:30Z 3 2 entries of event 1001, level 3, were lost since 2026-11-21T08:15:30Z\n");
}

TEST_F(StreamSink, EntryThatIsNoLine_FailsAndIsTold) {
  const Pipe pipe;
  qz_LOG_StreamSink sink(pipe.writer(), false);
  EXPECT_FALSE(sink.Write(qz_LOG_LogEntry()));
  EXPECT_TRUE(write_to(sink));
  const std::string text = pipe.read_all();
  EXPECT_EQ(text.substr(0, text.find(",\"since")), R"({"lost":[{"id":0,"level":0,"count":1)");
}

TEST_F(StreamSink, ReaderWhoStops_IsWaitedForOnceAndThenNoMore) {
  for (const int flags : {0, O_NONBLOCK}) {
    const Pipe pipe(flags);
    pipe.shrink(2);
    Settings settings;
    settings.longest_wait_milliseconds = 50;
    qz_LOG_StreamSink sink(pipe.writer(), false, settings);
    unsigned taken = 0;
    while (write_to(sink)) ++taken;
    EXPECT_GT(taken, 10U);
    const long long begin = qzlog::SinkClock::steady_milliseconds();
    for (int i = 0; i < 100; ++i) EXPECT_FALSE(write_to(sink));
    EXPECT_LT(qzlog::SinkClock::steady_milliseconds() - begin, 2000);
    const std::string text = pipe.read_all();
    EXPECT_EQ(text.size() / line_of(3).size(), taken);
    EXPECT_TRUE(write_to(sink));
    EXPECT_NE(pipe.read_all().find(R"("count":101,)"), std::string::npos);
    EXPECT_EQ(counts_of(sink), std::to_string(taken + 1) + "/101/0");
  }
}

TEST_F(StreamSink, ReaderWhoIsGone_IsNoSignalWhateverTheProgramDoesWithIt) {
  for (sighandler_t action : {SIG_DFL, SIG_IGN}) {
    const SignalAction disposition(SIGPIPE, action);
    Pipe pipe;
    qz_LOG_StreamSink sink(pipe.writer(), false);
    pipe.close_reader();
    EXPECT_FALSE(write_to(sink));
    EXPECT_EQ(counts_of(sink), "0/1/0");
    struct sigaction now = {};
    sigaction(SIGPIPE, nullptr, &now);
    EXPECT_EQ(now.sa_handler, action);
    sigset_t mask = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
  }
}

TEST_F(StreamSink, PipeSignalThatWaitsAlready_StaysTheProgramsOwn) {
  sigset_t pipe_signal = {};
  sigemptyset(&pipe_signal);
  sigaddset(&pipe_signal, SIGPIPE);
  sigset_t before = {};
  pthread_sigmask(SIG_BLOCK, &pipe_signal, &before);
  Pipe pipe;
  qz_LOG_StreamSink sink(pipe.writer(), false);
  pipe.close_reader();
  const timespec at_once = {};
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(sigtimedwait(&pipe_signal, nullptr, &at_once), -1);
  raise(SIGPIPE);
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(sigtimedwait(&pipe_signal, nullptr, &at_once), SIGPIPE);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// A program that puts something else in the place of its standard streams.
TEST_F(StreamSink, DescriptorThatBecomesAnother_IsWrittenToAsThatOne) {
  const SignalAction disposition(SIGPIPE, SIG_DFL);
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  qz_LOG_StreamSink sink(ends[0], false);
  EXPECT_TRUE(write_to(sink));
  Pipe pipe;
  ASSERT_EQ(dup2(pipe.writer(), ends[0]), ends[0]);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(pipe.read_all(), line_of(3));
  pipe.close_reader();
  EXPECT_FALSE(write_to(sink));
  for (const int each : ends) ::close(each);
}

TEST_F(StreamSink, SocketWhosePeerIsGone_FailsWithoutSignal) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  qz_LOG_StreamSink sink(ends[0], true);
  EXPECT_TRUE(write_to(sink));
  ::close(ends[1]);
  EXPECT_FALSE(write_to(sink));
}

TEST_F(StreamSink, SocketThatTakesLinesInParts_GetsThemWhole) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const int small = 4096;
  setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof(small));
  std::string text;
  std::thread reader([&] {
    char part[512];
    for (ssize_t count = 0; (count = ::read(ends[1], part, sizeof(part))) > 0;) {
      text.append(part, static_cast<std::size_t>(count));
    }
  });
  Settings settings;
  settings.form = Settings::kText;
  settings.format = std::string(1000, 'x') + "{message}";
  settings.longest_wait_milliseconds = 30000;
  {
    qz_LOG_StreamSink sink(ends[0], true, settings);
    for (int i = 0; i < 200; ++i) EXPECT_TRUE(write_to(sink));
  }
  reader.join();
  ::close(ends[1]);
  const std::string line = std::string(1000, 'x') + "Disk vol1\n";
  EXPECT_EQ(text.size(), 200 * line.size());
  for (std::size_t at = 0; at < text.size(); at += line.size()) ASSERT_EQ(text.substr(at, line.size()), line);
}

TEST_F(StreamSink, FileThatIsFull_KeepsWholeLinesAndClosesThePart) {
  const std::string path = folder_.path("full.jsonl");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  ASSERT_GE(file, 0);
  qz_LOG_StreamSink sink(file, true);
  const std::string line = line_of(3);
  {
    const ResourceLimit limit(RLIMIT_FSIZE, line.size() + 10);
    EXPECT_TRUE(write_to(sink));
    EXPECT_FALSE(write_to(sink));
    EXPECT_FALSE(sink.Flush(0));
    EXPECT_FALSE(write_to(sink));
  }
  EXPECT_EQ(folder_.read("full.jsonl"), line + line.substr(0, 10));
  EXPECT_TRUE(write_to(sink));
  const std::string text = folder_.read("full.jsonl");
  EXPECT_TRUE(text.starts_with(line + line.substr(0, 10) + "\n{\"lost\":[{\"id\":1001,\"level\":3,\"count\":2,"))
      << text;
  EXPECT_TRUE(text.ends_with("]}\n" + line)) << text;
  EXPECT_EQ(counts_of(sink), "2/2/0");
}

TEST_F(StreamSink, FullDevice_FailsAndGoesOn) {
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  qz_LOG_StreamSink sink(full, true);
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(counts_of(sink), "0/2/0");
}

/// A terminal of the test's own.
class Terminal {
 public:
  Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) return;
    user_ = ::open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  ~Terminal() {
    ::close(user_);
    ::close(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  int user() const { return user_; }
  std::string read() const {
    char text[1024];
    const ssize_t count = ::read(master_, text, sizeof(text));
    return {text, count > 0 ? static_cast<std::size_t>(count) : 0};
  }

 private:
  int master_;
  int user_ = -1;
};

std::string shown_on_terminal(unsigned level, bool colour = true) {
  const Terminal terminal;
  Settings settings;
  settings.form = Settings::kText;
  settings.format = "{message}";
  settings.colour = colour;
  qz_LOG_StreamSink sink(terminal.user(), false, settings);
  EXPECT_TRUE(write_to(sink, kDisk, level));
  return terminal.read();
}

TEST_F(StreamSink, Terminal_ShowsLevelsInColour) {
  const SetEnv terminal("TERM", "xterm");
  const UnsetEnv no_colour("NO_COLOR");
  EXPECT_EQ(shown_on_terminal(0), "\033[2mDisk vol1\033[0m\r\n");
  EXPECT_EQ(shown_on_terminal(3), "Disk vol1\r\n");
  EXPECT_EQ(shown_on_terminal(4), "\033[1mDisk vol1\033[0m\r\n");
  EXPECT_EQ(shown_on_terminal(5), "\033[33mDisk vol1\033[0m\r\n");
  EXPECT_EQ(shown_on_terminal(7), "\033[31mDisk vol1\033[0m\r\n");
  EXPECT_EQ(shown_on_terminal(9), "\033[1;31mDisk vol1\033[0m\r\n");
}

TEST_F(StreamSink, ColourThatIsNotWanted_IsNotShown) {
  const SetEnv terminal("TERM", "xterm");
  {
    const UnsetEnv unset("NO_COLOR");
    EXPECT_EQ(shown_on_terminal(9, false), "Disk vol1\r\n");
    const SetEnv dumb("TERM", "dumb");
    EXPECT_EQ(shown_on_terminal(9), "Disk vol1\r\n");
    const UnsetEnv none("TERM");
    EXPECT_EQ(shown_on_terminal(9), "Disk vol1\r\n");
  }
  const SetEnv no_colour("NO_COLOR", "1");
  EXPECT_EQ(shown_on_terminal(9), "Disk vol1\r\n");
  const SetEnv empty("NO_COLOR", "");
  EXPECT_EQ(shown_on_terminal(9), "\033[1;31mDisk vol1\033[0m\r\n");
}

TEST_F(StreamSink, ForkedProcess_WritesToTheSameStreamAndTellsNoLossesOfItsParent) {
  const Pipe pipe;
  const int number = dup(STDERR_FILENO);
  qz_LOG_StreamSink sink(number, false);
  ::close(number);
  EXPECT_FALSE(write_to(sink));
  ASSERT_EQ(dup2(pipe.writer(), number), number);
  expect_child_succeeds([&] { return write_to(sink, kDisk, 5) ? 0 : 1; });
  EXPECT_EQ(pipe.read_all(), line_of(5));
  EXPECT_TRUE(write_to(sink));
  EXPECT_TRUE(pipe.read_all().starts_with("{\"lost\""));
  ::close(number);
}

TEST_F(StreamSink, ForkWhileALineWaitsForItsReader_LeavesTheChildFree) {
  const Pipe pipe;
  pipe.shrink(2);
  Settings settings;
  settings.longest_wait_milliseconds = 3000;
  qz_LOG_StreamSink sink(pipe.writer(), false, settings);
  ASSERT_EQ(::write(pipe.writer(), std::string(8192, 'x').data(), 8192), 8192);
  std::thread waiting([&] { EXPECT_TRUE(write_to(sink)); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const long long begin = qzlog::SinkClock::steady_milliseconds();
  ChildProcess child([&] {
    std::string part(8192, ' ');
    if (::read(pipe.reader(), part.data(), part.size()) != 8192) return 1;
    return write_to(sink, kDisk, 5) ? 0 : 2;
  });
  EXPECT_EQ(child.wait(), 0);
  waiting.join();
  EXPECT_LT(qzlog::SinkClock::steady_milliseconds() - begin, 2500);
  const std::string text = pipe.read_all();
  EXPECT_NE(text.find(line_of(5)), std::string::npos);
  EXPECT_NE(text.find(line_of(3)), std::string::npos);
}

TEST_F(StreamSink, MakingIt_WithoutMemory_LeavesTheDescriptor) {
  const Pipe pipe;
  for (const auto form : {Settings::kJson, Settings::kText}) {
    Settings settings;
    settings.form = form;
    EXPECT_GT(FailEveryAllocation([&] { const qz_LOG_StreamSink sink(pipe.writer(), false, settings); }), 2U);
    bool is_open = true;
    FailEveryAllocation(
        [&] {
          const int own = dup(pipe.writer());
          struct Close {
            ~Close() { is_open = ::close(own) == 0 && is_open; }
            int own;
            bool& is_open;
          } close{own, is_open};
          const qz_LOG_StreamSink sink(own, false, settings);
        },
        [&] { EXPECT_TRUE(is_open); });
  }
}

TEST_F(StreamSink, SecondEntryOfAThread_TakesNoMemory) {
  const Pipe pipe;
  qz_LOG_StreamSink sink(pipe.writer(), false);
  const qz_LOG_LogEntry entry = make_entry();
  EXPECT_TRUE(sink.Write(entry));
  bool happened = false;
  {
    const AllocationFailure failure(1);
    static_cast<void>(sink.Write(entry));
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  EXPECT_EQ(counts_of(sink), "2/0/0");
}

TEST_F(StreamSink, WritingWithoutMemory_FailsOrWritesTheWholeLine) {
  const Pipe pipe;
  Settings settings;
  settings.form = Settings::kText;
  settings.format = "{id} {message}";
  qz_LOG_StreamSink sink(pipe.writer(), false, settings);
  const qz_LOG_LogEntry entry = make_entry();
  unsigned long long written = 0;
  for (unsigned nth = 1;; ++nth) {
    bool happened = false;
    {
      const AllocationFailure failure(nth);
      if (sink.Write(entry)) ++written;
      happened = failure.happened();
    }
    const std::string text = pipe.read_all();
    EXPECT_TRUE(text.empty() || text.ends_with('\n')) << text;
    if (!happened) break;
    ASSERT_LT(nth, 1000U);
  }
  EXPECT_EQ(sink.GetCounts().written, written);
  EXPECT_GT(written, 0U);
}

}  // namespace
