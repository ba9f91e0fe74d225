#ifndef QZLOG_TESTS_TOOLS_TRANSPORT_RUNNING_COMMAND_H
#define QZLOG_TESTS_TOOLS_TRANSPORT_RUNNING_COMMAND_H

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace qzlog_test {

inline constexpr std::chrono::seconds kReadPatience{60};

/// `qzlog` at work in a folder; what it writes goes to the end of the file `output` there, what it says to "said".
class RunningCommand {
 public:
  RunningCommand(const std::string& folder, const std::string& output, std::vector<std::string> arguments)
      : process_(::fork()) {
    if (process_ != 0) return;
    arguments.insert(arguments.begin(), "qzlog");
    std::vector<char*> pointers;
    for (std::string& word : arguments) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (::chdir(folder.c_str()) != 0) ::_exit(127);
    ::dup2(::open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDOUT_FILENO);
    ::dup2(::open("said", O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
    ::execv(QZLOG_COMMAND, pointers.data());
    ::_exit(127);
  }
  ~RunningCommand() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;

  void send(int signal) const { ::kill(process_, signal); }
  /// The exit status, or minus the signal that ended it.
  int wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int end(int signal = SIGTERM) {
    send(signal);
    return wait();
  }

 private:
  pid_t process_;
};

inline bool wait_until(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kReadPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_TRANSPORT_RUNNING_COMMAND_H
