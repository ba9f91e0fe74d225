// How `qzlog render` and `qzlog stats` end: interrupted, without a reader, with nothing shown.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/command_fixture.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_test::CommandResult;
using qzlog_tool::FileDescriptor;

std::string line(int number) {
  return R"({"id":1,"level":)" + std::to_string(number % 10) + R"(,"time":"2026-11-21T08:15:30Z","attributes":{"N":)" +
         std::to_string(number) + "}}\n";
}

std::string lines(int count) {
  std::string text;
  for (int number = 1; number <= count; ++number) text += line(number);
  return text;
}

class RenderEnds : public qzlog_test::CommandFixture {
 protected:
  RenderEnds() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n  - {id: 1, name: NUMBER, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    write("e.yaml",
          "version: \"2.0\"\nentries:\n  - {id: 2, name: OTHER, message: other}\n"
          "  - {id: 3, name: THIRD, message: third}\n");
  }
};

/// The command with a pipe for its input that stays open.
class Interrupted {
 public:
  Interrupted(const std::string& folder, const std::string& shell_words) {
    int input[2];
    int output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0) std::abort();
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(input[0], STDIN_FILENO);
      ::dup2(output[1], STDOUT_FILENO);
      if (::chdir(folder.c_str()) != 0) ::_exit(127);
      ::dup2(::open("said", O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
      for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) ::signal(signal, SIG_DFL);
      ::execl("/bin/sh", "sh", "-c", ("exec $QZLOG " + shell_words).c_str(), nullptr);
      ::_exit(127);
    }
    ::close(output[1]);
    rest_ = FileDescriptor(input[0]);
    input_ = FileDescriptor(input[1]);
    output_ = FileDescriptor(output[0]);
  }

  /// Returns when the command has taken it.
  void say(const std::string& text) const {
    EXPECT_EQ(qzlog_tool::write_all(input_.get(), text.data(), text.size()), 0);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (int left = 1; left != 0 && std::chrono::steady_clock::now() < end;) {
      ASSERT_EQ(::ioctl(rest_.get(), FIONREAD, &left), 0);
      std::this_thread::yield();
    }
  }
  void send(int signal) const { ::kill(process_, signal); }
  /// The exit status, or minus the signal that ended it; `heard` is everything that it wrote.
  int wait(std::string& heard) const {
    char buffer[4096];
    while (const std::size_t count = qzlog_tool::read_some(output_.get(), buffer, sizeof buffer, "the command")) {
      heard.append(buffer, count);
    }
    int status = 0;
    ::waitpid(process_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t process_ = -1;
  FileDescriptor rest_{-1};
  FileDescriptor input_{-1};
  FileDescriptor output_{-1};
};

constexpr const char* kCommands[] = {
    "render --definitions d.yaml",
    "render --definitions d.yaml --output short --level 0..9",
    "render --definitions d.yaml --output long --where 'N > 0'",
    "render --definitions d.yaml --output json --unique",
    "render --definitions d.yaml --output table",
    "render --definitions d.yaml --output csv --columns N,message",
    "render --definitions d.yaml --format '{N} {message}'",
    "render --definitions d.yaml --definitions e.yaml",
    "render --definitions d.yaml --merge-by-time",
    "render --definitions d.yaml --tail 100000",
    "stats --definitions d.yaml",
    "stats --definitions d.yaml --definitions e.yaml --by N --of N --csv",
    "stats --definitions d.yaml --by N --of N --json",
    "stats --definitions d.yaml --by N --csv --level ..9",
};

class RenderEndsOf : public RenderEnds, public ::testing::WithParamInterface<const char*> {
 protected:
  static std::string command() { return GetParam(); }
};

TEST_P(RenderEndsOf, Signal_EndsItQuietly) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Interrupted interrupted(folder_.path(), command());
    interrupted.say(lines(3));
    interrupted.send(signal);
    std::string heard;
    EXPECT_EQ(interrupted.wait(heard), -signal);
    EXPECT_EQ(read("said"), "");
    EXPECT_TRUE(heard.empty() || heard.back() == '\n') << heard;
  }
}

TEST_P(RenderEndsOf, ReaderThatReadsOneLine_EndsItQuietly) {
  write("entries.jsonl", lines(30'000));
  const CommandResult result = run("{ $QZLOG " + command() + " entries.jsonl; echo $? >status; } | head -n 1");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1);
  // A table of few lines may be written whole before the reader leaves.
  EXPECT_TRUE(read("status") == "141\n" || (command() == "stats --definitions d.yaml" && read("status") == "0\n"))
      << read("status");
}

TEST_P(RenderEndsOf, ReaderThatIsGone_EndsItQuietly) {
  write("entries.jsonl", lines(3));
  for (const std::string trap : {"", "trap '' PIPE; "}) {
    const CommandResult result = run("rm -f gone; mkfifo gone\n{ read -r word <gone; " + trap + "$QZLOG " + command() +
                                     " entries.jsonl; echo $? >status; } | { exec <&-; echo word >gone; }");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(read("status"), trap.empty() ? "141\n" : "1\n");
  }
}

TEST_P(RenderEndsOf, OutputThatCannotBeWritten_IsToldAndStatus2) {
  write("entries.jsonl", lines(3));
  const CommandResult full = run("$QZLOG " + command() + " entries.jsonl >/dev/full");
  EXPECT_EQ(full.err, "qzlog: error: cannot write to standard output: No space left on device\n");
  EXPECT_EQ(full.status, 2);
  const CommandResult closed = run("$QZLOG " + command() + " entries.jsonl >&-");
  EXPECT_EQ(closed.err, "qzlog: error: cannot write to standard output: Bad file descriptor\n");
  EXPECT_EQ(closed.status, 2);
}

INSTANTIATE_TEST_SUITE_P(Commands, RenderEndsOf, ::testing::ValuesIn(kCommands), [](const auto& of) {
  std::string name;
  for (const char character : std::string(of.param)) {
    if (std::isalnum(static_cast<unsigned char>(character)) != 0) name += character;
  }
  return name;
});

TEST_F(RenderEnds, ExitStatus_SaysWhetherAnEntryWasShown) {
  write("good.jsonl", lines(20));
  write("wrong.jsonl", line(1) + "{}\n");
  write("lost.jsonl", R"({"writer":"h/1/1","seq":1,"lost":[{"id":1,"level":3,"count":2}]})"
                      "\n");
  write("timeless.jsonl", R"({"id":1,"attributes":{"N":1}})"
                          "\n");
  write("empty.jsonl", "");
  const struct {
    const char* arguments;
    int with;
    int without;
  } cases[] = {
      {"good.jsonl", 0, 0},
      {"empty.jsonl", 1, 0},
      {"empty.jsonl good.jsonl", 0, 0},
      {"--where 'N = 20' good.jsonl", 0, 0},
      {"--where 'N = 21' good.jsonl", 1, 0},
      {"--level 9 --head 1 good.jsonl", 0, 0},
      {"--id 7 good.jsonl", 2, 2},  // which the definitions do not have
      {"--since 2027-01-01 good.jsonl", 1, 0},
      {"--until now timeless.jsonl", 1, 0},
      {"--writer 'h/*' good.jsonl", 1, 0},
      {"--tail 3 good.jsonl", 0, 0},
      {"--tail 3 --where 'N > 99' good.jsonl", 1, 0},
      {"--merge-by-time good.jsonl good.jsonl", 0, 0},
      {"--merge-by-time --where 'N > 99' good.jsonl good.jsonl", 1, 0},
      {"--output csv empty.jsonl", 1, 0},  // its heading is no entry
      {"--output table --where 'N > 99' good.jsonl", 1, 0},
      {"--output json good.jsonl", 0, 0},
      {"--format '{id}' good.jsonl", 0, 0},
      {"--format '{id}' --level 9 --where 'N < 9' good.jsonl", 1, 0},
      {"--level-low 9 good.jsonl", 0, 0},
      {"--mask 2 good.jsonl", 1, 0},
      {"--unique good.jsonl", 0, 0},
      {"--follow --where 'N = 0' <good.jsonl", 1, 0},
      {"--follow <good.jsonl", 0, 0},
      {"lost.jsonl", 1, 0},  // tells of entries, and is none
      {"wrong.jsonl", 1, 1},
      {"missing.jsonl good.jsonl", 2, 2},
      {"missing.jsonl", 2, 2},
      {"--where 'M = 1' good.jsonl", 2, 2},
  };
  for (const auto& tested : cases) {
    const std::string command = "$QZLOG render --definitions d.yaml " + std::string(tested.arguments);
    EXPECT_EQ(run(command + " --exit-status").status, tested.with) << tested.arguments;
    EXPECT_EQ(run(command).status, tested.without) << tested.arguments;
  }
}

}  // namespace
