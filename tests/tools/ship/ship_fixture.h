#ifndef QZLOG_TESTS_TOOLS_SHIP_SHIP_FIXTURE_H
#define QZLOG_TESTS_TOOLS_SHIP_SHIP_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/command_fixture.h"

namespace qzlog_test {

inline constexpr std::chrono::seconds kShipPatience{60};

/// `qzlog ship` at work in a folder; what it says goes into the file "said" there.
class Shipper {
 public:
  Shipper(const std::string& folder, const std::vector<std::string>& arguments) : process_(::fork()) {
    if (process_ != 0) return;
    std::vector<std::string> words = {"qzlog", "ship"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (::chdir(folder.c_str()) != 0) ::_exit(127);
    ::dup2(::open("said", O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) ::signal(signal, SIG_DFL);
    ::execv(QZLOG_COMMAND, pointers.data());
    ::_exit(127);
  }
  ~Shipper() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  Shipper(const Shipper&) = delete;
  Shipper& operator=(const Shipper&) = delete;

  void send(int signal) const { ::kill(process_, signal); }
  pid_t process() const { return process_; }
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

 private:
  pid_t process_;
};

/// Series in the folder "logs", a receiver that keeps records in the folder "got".
class ShipFixture : public CommandFixture {
 protected:
  ShipFixture() {
    std::filesystem::create_directory(folder_.path("logs"));
    std::filesystem::create_directory(folder_.path("got"));
  }

  static std::string line(int seq, int level = 3) {
    return R"({"writer":"h/1/2","seq":)" + std::to_string(seq) + R"(,"id":1,"level":)" + std::to_string(level) +
           R"(,"name":"N","attributes":{"N":)" + std::to_string(seq) + "}}\n";
  }
  static std::string lines(int first, int last) {
    std::string text;
    for (int seq = first; seq <= last; ++seq) text += line(seq);
    return text;
  }
  void append(const std::string& name, const std::string& text) const {
    std::ofstream(folder_.path(name), std::ios::app) << text;
  }

  std::string url() const { return "file://" + folder_.path("got"); }
  /// What every run has, before `more`.
  std::vector<std::string> arguments(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"logs/s", "--to", url(), "--option", "keep=records", "--state", "state.json"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  CommandResult ship_once(const std::string& more = "") const {
    std::string words;
    for (const std::string& word : arguments({"--once"})) words += " '" + word + "'";
    return run("$QZLOG ship" + words + " " + more);
  }

  /// How often each identity was received.
  std::map<std::string, int> received() const {
    std::map<std::string, int> counts;
    std::ifstream file(folder_.path("got/records.tsv"), std::ios::binary);
    for (std::string record; std::getline(file, record);) ++counts[record.substr(0, record.find('\t'))];
    return counts;
  }
  /// Until it has so many, doubles left out.
  bool wait_for_received(std::size_t count) const {
    return wait_until([&] { return received().size() >= count; });
  }
  static bool wait_until(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kShipPatience;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SHIP_SHIP_FIXTURE_H
