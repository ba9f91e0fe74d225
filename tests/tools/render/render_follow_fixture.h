#ifndef QZLOG_TESTS_TOOLS_RENDER_RENDER_FOLLOW_FIXTURE_H
#define QZLOG_TESTS_TOOLS_RENDER_RENDER_FOLLOW_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/tools/command_fixture.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_test {

inline constexpr std::chrono::seconds kPatience{60};

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
    output_ = qzlog_tool::FileDescriptor(ends[0]);
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
  void close_output() { output_ = qzlog_tool::FileDescriptor(-1); }

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
  qzlog_tool::FileDescriptor output_{-1};
  std::string held_;
};

class RenderFollow : public CommandFixture {
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

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_RENDER_RENDER_FOLLOW_FIXTURE_H
