#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qzlog/file_sink.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/child_process.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/command_fixture.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_tool::FileDescriptor;

constexpr std::chrono::seconds kPatience{60};

/// `qzlog render --follow` at work.
class Following {
 public:
  /// In a folder; what it says on stderr goes into the file "said" there.
  Following(const std::string& folder, const std::vector<std::string>& arguments) : folder_(folder) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
    std::vector<std::string> words = {"qzlog", "render", "--no-icu", "--definitions", "d.yaml", "--follow"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    process_ = ::fork();
    if (process_ == 0) {
      if (::chdir(folder.c_str()) != 0) ::_exit(127);
      ::dup2(ends[1], STDOUT_FILENO);
      ::dup2(::open("said", O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
      ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
      for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) ::signal(signal, SIG_DFL);
      ::execv(QZLOG_COMMAND, pointers.data());
      ::_exit(127);
    }
    ::close(ends[1]);
    output_ = FileDescriptor(ends[0]);
  }
  ~Following() {
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Following(const Following&) = delete;
  Following& operator=(const Following&) = delete;

  /// Waits for so many lines.
  std::string hear(std::size_t lines) {
    std::string heard;
    for (; lines > 0; --lines) {
      const std::string line = hear_line();
      heard += line;
      if (line.empty() || line.back() != '\n') return heard + "(nothing more came)";
    }
    return heard;
  }
  /// What comes until nothing does for a moment.
  std::string overhear(int milliseconds = 100) {
    while (take(milliseconds)) {
    }
    return std::exchange(held_, "");
  }
  /// Everything to the end of the output.
  std::string hear_rest() {
    while (take(static_cast<int>(std::chrono::milliseconds(kPatience).count()))) {
    }
    return std::move(held_);
  }
  void close_output() { output_ = FileDescriptor(-1); }

  /// What it has said on stderr, once it holds `text`.
  std::string wait_for_word(const std::string& text) const {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    std::string said;
    do {
      said = qz_test::read_file(folder_ + "/said");
      if (said.find(text) != std::string::npos) return said;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    } while (std::chrono::steady_clock::now() < end);
    return said;
  }

  void send(int signal) const { ::kill(process_, signal); }
  /// The exit status, or minus the signal that ended it.
  int wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int end() {
    send(SIGTERM);
    return wait();
  }
  /// From now on it can have so many descriptors more.
  void limit_descriptors(std::size_t spare) const {
    const rlimit limit = {descriptors() + spare, descriptors() + spare};
    ASSERT_EQ(::prlimit(process_, RLIMIT_NOFILE, &limit, nullptr), 0);
  }
  std::size_t descriptors() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process_) + "/fd")) {
      ++count;
    }
    return count;
  }

 private:
  bool take(int milliseconds) {
    pollfd waiting = {output_.get(), POLLIN, 0};
    if (::poll(&waiting, 1, milliseconds) != 1) return false;
    char buffer[65536];
    const std::size_t count = qzlog_tool::read_some(output_.get(), buffer, sizeof buffer, "the command");
    held_.append(buffer, count);
    return count > 0;
  }
  std::string hear_line() {
    std::size_t end = held_.find('\n');
    while (end == std::string::npos) {
      if (!take(static_cast<int>(std::chrono::milliseconds(kPatience).count()))) return std::move(held_);
      end = held_.find('\n');
    }
    std::string line = held_.substr(0, end + 1);
    held_.erase(0, end + 1);
    return line;
  }

  std::string folder_;
  pid_t process_ = -1;
  FileDescriptor output_{-1};
  std::string held_;
};

class RenderFollow : public qzlog_test::CommandFixture {
 protected:
  RenderFollow() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    std::filesystem::create_directory(folder_.path("logs"));
  }

  static std::string entry(int number) { return R"({"id":1,"attributes":{"N":)" + std::to_string(number) + "}}\n"; }
  /// The messages of entries.
  static std::string numbers(int first, int last) {
    std::string text;
    for (int number = first; number <= last; ++number) text += std::to_string(number) + '\n';
    return text;
  }
  void append(const std::string& name, const std::string& text) const {
    std::ofstream(folder_.path(name), std::ios::app) << text;
  }
  void rename(const std::string& from, const std::string& to) const {
    std::filesystem::rename(folder_.path(from), folder_.path(to));
  }
  Following follow(const std::vector<std::string>& arguments) const { return {folder_.path(), arguments}; }
};

TEST_F(RenderFollow, FileThatGrows_IsRenderedLineByLine) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("a.jsonl", entry(2) + entry(3) + R"({"id":1,)");
  EXPECT_EQ(following.hear(2), "2\n3\n");
  append("a.jsonl", R"("attributes":{"N":4}})");
  EXPECT_EQ(following.overhear(), "");  // its line feed is not there yet
  append("a.jsonl", "\n");
  EXPECT_EQ(following.hear(1), "4\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, SignalsAndShortForm_EndItAsTheyEndTail) {
  append("a.jsonl", entry(1));
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Following following(folder_.path(), {"-f", "a.jsonl", "--level-low", "0", "--check-gaps"});
    EXPECT_EQ(following.hear(1), "1\n");
    following.send(signal);
    EXPECT_EQ(following.wait(), -signal);
    EXPECT_EQ(following.hear_rest(), "");
    EXPECT_EQ(read("said"),
              "entries: 1 read, 1 passed, 0 refused\n"
              "seq: 0 lines of 0 writers, 0 missing, 0 doubled; 1 line without writer and seq\n");
    std::filesystem::remove(folder_.path("said"));
  }
}

TEST_F(RenderFollow, CountsAreKept) {
  append("a.jsonl", entry(1));
  Following following = follow({"--count", "events", "a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_NE(run("$QZLOG count show events").out.find(" 2"), std::string::npos);
  EXPECT_EQ(following.end(), -SIGTERM);
}

TEST_F(RenderFollow, ReaderThatLeaves_EndsIt) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  following.close_output();
  EXPECT_EQ(following.wait(), -SIGPIPE);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, ReaderThatLeavesWithSigpipeIgnored_EndsItQuietly) {
  append("a.jsonl", entry(1));
  const qzlog_test::CommandResult result =
      run("{ trap '' PIPE; $QZLOG render -f --definitions d.yaml a.jsonl; echo $? >status; } | head -n 1");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("status"), "1\n");
}

TEST_F(RenderFollow, StandardInputAndPipes_HaveTheirEnd) {
  append("a.jsonl", entry(1));
  EXPECT_EQ(run("$QZLOG render -f --definitions d.yaml <a.jsonl").out, "1\n");
  EXPECT_EQ(run("cat a.jsonl | $QZLOG render -f --definitions d.yaml -").out, "1\n");
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const qzlog_test::CommandResult result = run("cat a.jsonl >pipe & $QZLOG render -f --definitions d.yaml pipe");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderFollow, SeveralFiles_AreFollowedAtOnce) {
  append("a.jsonl", entry(1));
  append("b.jsonl", entry(2));
  Following following = follow({"b.jsonl", "a.jsonl"});
  EXPECT_EQ(following.hear(2), "2\n1\n");
  append("a.jsonl", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("b.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
}

TEST_F(RenderFollow, FileThatIsNotThereYet_IsWaitedFor) {
  Following following = follow({"new.jsonl", "logs/later/deep.jsonl"});
  EXPECT_EQ(following.wait_for_word("deep"),
            "qzlog: warning: 'new.jsonl' is not there yet: waiting for it\n"
            "qzlog: warning: 'logs/later/deep.jsonl' is not there yet: waiting for it\n");
  append("new.jsonl", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
  std::filesystem::create_directory(folder_.path("logs/later"));
  append("logs/later/deep.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
}

TEST_F(RenderFollow, RenamedFile_IsReadToItsEndBeforeTheNewOneOfItsName) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  for (int round = 0; round < 5; ++round) {
    const int number = 10 * round;
    rename("a.jsonl", "a.jsonl." + std::to_string(round));
    append("a.jsonl." + std::to_string(round), entry(number + 2) + entry(number + 3));
    append("a.jsonl", entry(number + 4));
    EXPECT_EQ(following.hear(3), numbers(number + 2, number + 4));
  }
  EXPECT_EQ(following.overhear(700), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, WriterThatKeepsTheRenamedFileOpen_IsHeard) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  rename("a.jsonl", "a.jsonl.1");
  append("a.jsonl.1", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  append("a.jsonl", "");
  append("a.jsonl.1", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("a.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("a.jsonl.1", entry(5));
  EXPECT_EQ(following.hear(1), "5\n");
}

TEST_F(RenderFollow, TornLineOfAFormerFile_IsToldAsTorn) {
  append("a.jsonl", entry(1) + R"({"id":1,"attr)");
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  rename("a.jsonl", "a.jsonl.1");
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_EQ(following.wait_for_word("torn-line"),
            "a.jsonl:2: error: the last line breaks off: it is not written whole [torn-line]\n"
            "    2 | {\"id\":1,\"attr\n"
            "      | ^\n");
}

TEST_F(RenderFollow, FileThatIsCutByCopytruncate_IsReadFromItsBeginning) {
  append("a.jsonl", entry(1) + entry(2));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  std::filesystem::resize_file(folder_.path("a.jsonl"), 0);
  EXPECT_EQ(following.wait_for_word("shorter"),
            "qzlog: warning: 'a.jsonl' became shorter: it is read from its beginning\n");
  append("a.jsonl", entry(3) + "{}\n");
  EXPECT_EQ(following.hear(1), "3\n");
  EXPECT_NE(following.wait_for_word("missing-id").find("a.jsonl:2: error: "), std::string::npos);
}

TEST_F(RenderFollow, DeletedFile_IsReadToItsEndAndItsSuccessorFromTheBeginning) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  const std::size_t descriptors = following.descriptors();
  std::filesystem::remove(folder_.path("a.jsonl"));
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (following.descriptors() == descriptors) {
    ASSERT_LT(std::chrono::steady_clock::now(), end) << "the deleted file stays open";
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_EQ(following.descriptors(), descriptors);
}

TEST_F(RenderFollow, Series_IsFollowedIntoItsNextFiles) {
  append("logs/s.20261121.0001", entry(1));
  append("logs/s.20261121.0002", entry(2));
  Following following = follow({"logs/s"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  append("logs/s.20261121.0002", entry(3));
  append("logs/s.20261121.0003", entry(4));
  append("logs/s.20261122.0001", entry(5));
  append("logs/other.20261121.0001", entry(99));
  EXPECT_EQ(following.hear(3), "3\n4\n5\n");
  std::filesystem::remove(folder_.path("logs/s.20261121.0001"));
  append("logs/s.20261122.0001", entry(6));
  EXPECT_EQ(following.hear(1), "6\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, SeriesThatBeginsLater_IsWaitedFor) {
  Following following = follow({"logs/s"});
  following.wait_for_word("waiting");
  append("logs/s.20261121.0001", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
}

TEST_F(RenderFollow, FilesThatWereDeletedBeforeTheyWereRead_AreTold) {
  append("logs/s.20261121.0001", entry(1));
  Following following = follow({"logs/s"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("logs/s.20261121.0004", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("logs/s.20261121.0006", entry(6));
  EXPECT_EQ(following.hear(1), "6\n");
  EXPECT_EQ(read("said"),
            "qzlog: warning: 2 files between 'logs/s.20261121.0001' and 'logs/s.20261121.0004' were deleted before "
            "being read\n"
            "qzlog: warning: a file between 'logs/s.20261121.0004' and 'logs/s.20261121.0006' was deleted before being "
            "read\n");
}

TEST_F(RenderFollow, Folder_IsFollowedWithWhatComesUpInIt) {
  Following following = follow({"logs"});
  append("logs/s.20261121.0001", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
  append("logs/a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  append("logs/s.20261121.0002", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("logs/t.20261121.0001", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("logs/a.jsonl", entry(5));
  EXPECT_EQ(following.hear(1), "5\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, FilesThatComeAndGoInAFolder_LeaveNoDescriptors) {
  append("logs/stays.jsonl", entry(1));
  Following following = follow({"logs"});
  EXPECT_EQ(following.hear(1), "1\n");
  const std::size_t descriptors = following.descriptors();
  for (int number = 0; number < 20; ++number) {
    const std::string name = "logs/" + std::to_string(number) + ".jsonl";
    append(name, entry(number));
    EXPECT_EQ(following.hear(1), std::to_string(number) + "\n");
    std::filesystem::remove(folder_.path(name));
  }
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (following.descriptors() > descriptors) {
    ASSERT_LT(std::chrono::steady_clock::now(), end) << "deleted files stay open";
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

TEST_F(RenderFollow, FilesForWhichThereAreNoDescriptors_AreReadWhenThereAre) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers need descriptors to look at exceptions";
#endif
  constexpr int kFiles = 12;
  append("logs/first.jsonl", entry(1));
  Following following = follow({"logs"});
  EXPECT_EQ(following.hear(1), "1\n");
  following.limit_descriptors(3);
  for (int number = 10; number < 10 + kFiles; ++number) {
    append("logs/" + std::to_string(number) + ".jsonl", entry(number));
  }
  std::string heard = following.hear(1);
  following.wait_for_word("Too many open files");
  for (int number = 10; number < 10 + kFiles; ++number) {
    const std::string own = std::to_string(number) + '\n';
    while (heard.find(own) == std::string::npos) heard += following.hear(1);
    std::filesystem::remove(folder_.path("logs/" + std::to_string(number) + ".jsonl"));
  }
  EXPECT_EQ(static_cast<std::size_t>(std::count(heard.begin(), heard.end(), '\n')), std::size_t{kFiles});
  EXPECT_EQ(following.end(), -SIGTERM);
}

TEST_F(RenderFollow, FileThatCannotBeOpened_IsToldOnceAndTheOthersAreFollowed) {
  std::filesystem::create_symlink("loop.jsonl", folder_.path("loop.jsonl"));
  append("logs/s.20261121.0001", entry(1));
  std::filesystem::create_symlink("s.20261121.0002", folder_.path("logs/s.20261121.0002"));
  append("logs/s.20261121.0003", entry(3));
  Following following = follow({"loop.jsonl", "logs/s"});
  EXPECT_EQ(following.hear(2), "1\n3\n");
  EXPECT_EQ(following.overhear(1200), "");
  EXPECT_EQ(read("said"),
            "qzlog: error: cannot open 'loop.jsonl': Too many levels of symbolic links\n"
            "qzlog: error: cannot open 'logs/s.20261121.0002': Too many levels of symbolic links\n");
  std::filesystem::remove(folder_.path("loop.jsonl"));
  append("loop.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
}

TEST_F(RenderFollow, SignalWhileMuchIsRead_EndsItSoon) {
  std::string lines;
  for (int number = 0; number < 10'000; ++number) lines += entry(number);
  for (int count = 0; count < 50; ++count) append("a.jsonl", lines);
  Following following = follow({"a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl"});
  EXPECT_EQ(following.hear(3), "0\n1\n2\n");
  following.send(SIGTERM);
  const std::string rest = following.hear_rest();
  EXPECT_EQ(following.wait(), -SIGTERM);
  EXPECT_LT(std::count(rest.begin(), rest.end(), '\n'), 3'000'000 - 3);
  EXPECT_EQ(rest.back(), '\n');
}

TEST_F(RenderFollow, GapsAreToldAtTheEnd) {
  const auto numbered = [](int seq) {
    return R"({"writer":"h/1/1","seq":)" + std::to_string(seq) + R"(,"id":1,"attributes":{"N":)" + std::to_string(seq) +
           "}}\n";
  };
  append("logs/s.20261121.0001", numbered(1) + numbered(4));
  Following following = follow({"--check-gaps", "logs/s"});
  EXPECT_EQ(following.hear(2), "1\n4\n");
  append("logs/s.20261121.0002", numbered(3));
  EXPECT_EQ(following.hear(1), "3\n");
  EXPECT_EQ(read("said"), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"),
            "logs/s.20261121.0002:1: error: 1 line of the writer h/1/1 is missing before this one: seq 2 "
            "[missing-lines]\n"
            "seq: 3 lines of 1 writer, 1 missing, 0 doubled\n");
}

// A plain model of a writer: numbers, in a file or a series that is rotated in every way that there is.
TEST_F(RenderFollow, RandomRotations_LoseAndDoubleNothing) {
  qz_test::SeededRandom random;
  append("a.jsonl", entry(0));
  append("logs/s.20261121.0001", entry(0));
  Following following = follow({"a.jsonl", "logs/s"});
  ASSERT_EQ(following.hear(2), "0\n0\n");
  const std::size_t descriptors = following.descriptors();
  int number = 0;
  int file = 0;
  int renamed = 0;
  for (int round = 0; round < 60; ++round) {
    std::string expected;
    std::string former;
    const bool is_series = random.one_in(2);
    const auto some = [&](std::size_t least) {
      std::string lines;
      for (std::size_t count = least + random.below(40); count > 0; --count) {
        lines += entry(++number);
        expected += std::to_string(number) + '\n';
      }
      return lines;
    };
    const auto name = [&file] {
      char text[32];
      std::snprintf(text, sizeof text, "logs/s.%08d.%04d", 20261121 + file / 5, 1 + file % 5);
      return std::string(text);
    };
    for (std::size_t steps = 1 + random.below(3); steps > 0; --steps) {
      append(is_series ? name() : "a.jsonl", some(0));
      if (is_series) {
        ++file;
      } else if (steps == 1) {
        former = "a.jsonl." + std::to_string(++renamed);
        rename("a.jsonl", former);
        append(former, some(0));
      }
      append(is_series ? name() : "a.jsonl", some(1));  // a file that is renamed has been seen before
    }
    ASSERT_EQ(following.hear(static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '\n'))), expected)
        << round;
    ASSERT_LE(following.descriptors(), descriptors + 8);  // of two logs
  }
  EXPECT_EQ(following.overhear(), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

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
