#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_test::CommandResult;
using qzlog_tool::FileDescriptor;
using RenderOutput = qzlog_test::RenderFixture;

constexpr const char* kEntry = "{\"id\":1006}\n";
constexpr const char* kMessage = "first\\nsecond\\rthird\n";

void write_lines(const std::filesystem::path& path, int count) {
  std::ofstream file(path);
  for (int line = 0; line < count; ++line) file << kEntry;
}

TEST_F(RenderOutput, LinesOfAWriter_AreRenderedAndLossesShown) {
  const CommandResult result = render(
      R"({"writer":"host/12/34","seq":1,"written":"2026-11-21T08:15:30.5Z","definitions":"0123456789abcdef","id":1006,"name":"X"})"
      "\n"
      R"({"lost":[{"id":1001,"level":3,"count":12,"since":"2026-11-21T08:15:30Z"},{"id":7,"level":0,"count":1}],"seq":2})"
      "\n"
      R"({"id":1001,"attributes":{"Name":"?","Free":1,"Total":2},"bytes":{"Name":"w6Q="}})"
      "\n",
      "--level-low 0");
  EXPECT_EQ(result.out, std::string(kMessage) +
                            "lost: 12 of entry ID 1001, level 3, since 2026-11-21T08:15:30Z; 1 of entry ID 7, level 0\n"
                            "Disk ä is full: 1 of 2 blocks free\n");
  EXPECT_EQ(result.err, "entries: 2 read, 2 passed, 0 refused\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderOutput, FullDevice_IsAnErrorWithStatus2) {
  write("entries.jsonl", kEntry);
  const CommandResult result = run("$QZLOG render --definitions storage.yaml entries.jsonl >/dev/full");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: No space left on device\n");
}

TEST_F(RenderOutput, ClosedOutput_IsAnErrorWithStatus2) {
  write("entries.jsonl", kEntry);
  const CommandResult result = run("$QZLOG render --definitions storage.yaml entries.jsonl >&-");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: Bad file descriptor\n");
}

TEST_F(RenderOutput, ReaderThatLeaves_EndsTheCommandQuietly) {
  write_lines(folder_.path("entries.jsonl"), 100'000);
  const CommandResult result =
      run("{ $QZLOG render --definitions storage.yaml entries.jsonl; echo $? >status; } | head -n 1");
  EXPECT_EQ(result.out, kMessage);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("status"), "141\n");
}

TEST_F(RenderOutput, ReaderThatLeavesWithSigpipeIgnored_EndsTheCommandQuietly) {
  write_lines(folder_.path("entries.jsonl"), 100'000);
  const CommandResult result =
      run("{ trap '' PIPE; $QZLOG render --definitions storage.yaml entries.jsonl; echo $? >status; } | head -n 1");
  EXPECT_EQ(result.out, kMessage);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("status"), "1\n");
}

// The command with pipes for its input and output.
class Conversation {
 public:
  explicit Conversation(const std::string& definitions) {
    int to_command[2];
    int from_command[2];
    if (::pipe2(to_command, O_CLOEXEC) != 0 || ::pipe2(from_command, O_CLOEXEC) != 0) std::abort();
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(to_command[0], STDIN_FILENO);
      ::dup2(from_command[1], STDOUT_FILENO);
      ::execl(QZLOG_COMMAND, "qzlog", "render", "--definitions", definitions.c_str(), nullptr);
      ::_exit(127);
    }
    ::close(to_command[0]);
    ::close(from_command[1]);
    input_ = FileDescriptor(to_command[1]);
    output_ = FileDescriptor(from_command[0]);
  }

  void say(std::string_view text) { EXPECT_EQ(qzlog_tool::write_all(input_.get(), text.data(), text.size()), 0); }

  // Waits for as much output as is expected.
  std::string hear(std::size_t size_bytes) {
    std::string heard;
    char buffer[4096];
    while (heard.size() < size_bytes) {
      pollfd waiting = {output_.get(), POLLIN, 0};
      if (::poll(&waiting, 1, 60'000) != 1) return heard + " (nothing more came)";
      const std::size_t count = qzlog_tool::read_some(output_.get(), buffer, sizeof buffer, "the command");
      if (count == 0) return heard + " (end)";
      heard.append(buffer, count);
    }
    return heard;
  }

  int finish() {
    input_ = FileDescriptor(-1);
    int status = 0;
    ::waitpid(process_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = -1;
  FileDescriptor input_{-1};
  FileDescriptor output_{-1};
};

TEST_F(RenderOutput, InputThatGoesOn_MessagesComeAtOnce) {
  Conversation conversation(folder_.path("storage.yaml"));
  const std::string message = kMessage;
  conversation.say(kEntry);
  ASSERT_EQ(conversation.hear(message.size()), message);
  conversation.say(std::string(kEntry) + kEntry + "{\"id\":");
  ASSERT_EQ(conversation.hear(2 * message.size()), message + message);
  conversation.say("1006}\n");
  ASSERT_EQ(conversation.hear(message.size()), message);
  EXPECT_EQ(conversation.finish(), 0);
}

// The largest amount of memory that the command held, in KiB.
long peak_memory(const std::string& definitions, const std::string& entries, const char* option = "--no-icu") {
  const pid_t process = ::fork();
  if (process == 0) {
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, STDOUT_FILENO);
    ::execl(QZLOG_COMMAND, "qzlog", "render", option, "--definitions", definitions.c_str(), entries.c_str(), nullptr);
    ::_exit(127);
  }
  int status = 0;
  rusage usage = {};
  ::wait4(process, &status, 0, &usage);
  EXPECT_EQ(status, 0);
  return usage.ru_maxrss;
}

TEST_F(RenderOutput, PeakMemory_DoesNotGrowWithTheLines) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory grows";
#endif
  const std::string definitions = folder_.path("storage.yaml");
  const std::filesystem::path few = folder_.path("few.jsonl");
  const std::filesystem::path many = folder_.path("many.jsonl");
  write_lines(few, 50'000);
  write_lines(many, 500'000);
  EXPECT_LT(peak_memory(definitions, many.string()), peak_memory(definitions, few.string()) + 1024);
}

TEST_F(RenderOutput, PeakMemoryOfTheCheckForGaps_DoesNotGrowWithTheLines) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory grows";
#endif
  const auto write_numbered = [this](const std::string& name, int count) {
    std::ofstream file(folder_.path(name));
    for (int seq = 1; seq <= count; ++seq) {
      file << "{\"writer\":\"h/1/" << seq % 3 << "\",\"seq\":" << seq / 3 + 1 << ",\"id\":1006}\n";
    }
    return folder_.path(name);
  };
  const std::string definitions = folder_.path("storage.yaml");
  const std::string few = write_numbered("few.jsonl", 50'000);
  const std::string many = write_numbered("many.jsonl", 500'000);
  EXPECT_LT(peak_memory(definitions, many, "--check-gaps"), peak_memory(definitions, few, "--check-gaps") + 1024);
}

// Runs with a terminal for stderr; what stands on it in the end.
std::string on_a_terminal(const std::string& definitions, const std::string& entries) {
  int controller = -1;
  int terminal = -1;
  if (::openpty(&controller, &terminal, nullptr, nullptr, nullptr) != 0) std::abort();
  const FileDescriptor controlling(controller);
  const pid_t process = ::fork();
  if (process == 0) {
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, STDOUT_FILENO);
    ::dup2(terminal, STDERR_FILENO);
    ::setenv("TERM", "xterm", 1);
    ::execl(QZLOG_COMMAND, "qzlog", "render", "--definitions", definitions.c_str(), entries.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(terminal);
  std::string shown;
  char buffer[4096];
  // Without a process that has the terminal open, reading fails.
  for (ssize_t count; (count = ::read(controller, buffer, sizeof buffer)) > 0;) {
    shown.append(buffer, static_cast<std::size_t>(count));
  }
  ::waitpid(process, nullptr, 0);
  return shown;
}

TEST_F(RenderOutput, ErrorOnATerminal_IsColoured) {
  const std::string definitions = folder_.path("storage.yaml");
  const std::string entries = folder_.write("entries.jsonl", "{}\n");
  EXPECT_EQ(on_a_terminal(definitions, entries),
            entries +
                ":1: \033[1;31merror:\033[0m the entry has no 'id' [missing-id]\r\n"
                "    1 | {}\r\n"
                "      | \033[1;32m^\033[0m\r\n"
                "qzlog: \033[1;31merror:\033[0m 1 line passed over (1 missing-id); the first at " +
                entries + ":1\r\n");
}

TEST_F(RenderOutput, ErrorOnATerminalWithNoColor_IsPlain) {
  const qz_test::SetEnv no_color("NO_COLOR", "1");
  const std::string definitions = folder_.path("storage.yaml");
  const std::string entries = folder_.write("entries.jsonl", "{}\n");
  EXPECT_EQ(on_a_terminal(definitions, entries), entries +
                                                     ":1: error: the entry has no 'id' [missing-id]\r\n"
                                                     "    1 | {}\r\n"
                                                     "      | ^\r\n"
                                                     "qzlog: error: 1 line passed over (1 missing-id); the first at " +
                                                     entries + ":1\r\n");
}

}  // namespace
