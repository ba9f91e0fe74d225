#include "tools/system/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <string_view>

#include "tools/system/command_error.h"
#include "tools/system/memory_file.h"
#include "tools/system/signal_delay.h"

namespace qzlog_tool {
namespace {

[[noreturn]] void refuse_to_start(const std::string& program, int error) {
  throw CommandError(kExitCannotRun, "cannot run '" + program + "': " + std::strerror(error));
}

/// Where the program's standard descriptors lead.
class ChildStreams {
 public:
  ChildStreams(int output, int errors) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions_, errors, STDERR_FILENO);
  }
  ChildStreams(const ChildStreams&) = delete;
  ChildStreams& operator=(const ChildStreams&) = delete;
  ~ChildStreams() { ::posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_ = {};
};

/// The program gets the signal mask that this process had, and is ended by what would end any other.
class ChildSignals {
 public:
  ChildSignals() {
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setsigmask(&attributes_, &SignalDelay::mask_before());
    sigset_t defaults = {};
    sigemptyset(&defaults);
    for (const int signal : {SIGPIPE, SIGXFSZ}) sigaddset(&defaults, signal);
    ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ChildSignals(const ChildSignals&) = delete;
  ChildSignals& operator=(const ChildSignals&) = delete;
  ~ChildSignals() { ::posix_spawnattr_destroy(&attributes_); }

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_ = {};
};

/// Makes SIGCHLD wait to be asked for. Who ignores it, as a parent may have told us to, never learns how a child ended.
class ChildNotice {
 public:
  ChildNotice() {
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGCHLD, &action, &action_before_);
    sigset_t child = {};
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &child, &mask_before_);
  }
  ChildNotice(const ChildNotice&) = delete;
  ChildNotice& operator=(const ChildNotice&) = delete;
  ~ChildNotice() {
    ::sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
    ::sigaction(SIGCHLD, &action_before_, nullptr);
  }

 private:
  struct sigaction action_before_ = {};
  sigset_t mask_before_ = {};
};

/// A program that runs; one that nobody has waited for is killed. The name has to outlive it: a copy might find no
/// memory once the program runs.
class Child {
 public:
  Child(pid_t process, const std::string& program) : process_(process), program_(program) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }

  /// Returns its exit status, or 128 and the signal that ended it. Throws when a delayed signal has come.
  int wait() {
    int status = 0;
    while (!has_ended(status)) wait_for_signal();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  bool has_ended(int& status) {
    pid_t ended = 0;
    do {
      ended = ::waitpid(process_, &status, WNOHANG);
    } while (ended < 0 && errno == EINTR);  // its signal may have been taken already, and comes once
    if (ended < 0) {
      const int error = errno;
      process_ = -1;
      refuse_to_start(program_, error);
    }
    if (ended <= 0) return false;
    process_ = -1;
    return true;
  }

  /// A delayed signal goes back to where it was taken from, to come when the delay is over.
  void wait_for_signal() const {
    sigset_t expected = SignalDelay::delayed();
    sigaddset(&expected, SIGCHLD);
    const int signal = ::sigwaitinfo(&expected, nullptr);
    if (signal < 0 || signal == SIGCHLD) return;
    ::raise(signal);
    refuse_to_start(program_, EINTR);
  }

  pid_t process_;
  const std::string& program_;
};

/// Pointers as the system takes them; the texts stay the caller's.
std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers(texts.size() + 1, nullptr);
  std::transform(texts.begin(), texts.end(), pointers.begin(), [](std::string& text) { return text.data(); });
  return pointers;
}

std::string_view name_of(std::string_view variable) { return variable.substr(0, variable.find('=')); }

std::vector<std::string> environment_with(std::vector<std::string> variables) {
  const std::size_t own = variables.size();
  for (char* const* variable = environ; *variable != nullptr; ++variable) {
    const auto end = variables.begin() + static_cast<std::ptrdiff_t>(own);
    const bool replaced = std::any_of(variables.begin(), end,
                                      [&](const std::string& ours) { return name_of(ours) == name_of(*variable); });
    if (!replaced) variables.emplace_back(*variable);
  }
  return variables;
}

pid_t start(std::vector<std::string>& arguments, std::vector<std::string> environment, int output, int errors) {
  const ChildStreams streams(output, errors);
  const ChildSignals signals;
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, arguments[0].c_str(), streams.get(), signals.get(),
                                   pointers_to(arguments).data(), pointers_to(environment).data());
  if (error != 0) refuse_to_start(arguments[0], error);
  return child;
}

}  // namespace

// The output goes into memory and not through a pipe, so that there is only one thing to wait for. So do errors: our
// standard error shows them as it shows ours, safe for a terminal.
ProgramResult run_program(std::vector<std::string> program_and_arguments, ProgramErrors errors,
                          std::vector<std::string> variables) {
  const std::string program = program_and_arguments.at(0);
  std::vector<std::string> environment = environment_with(std::move(variables));
  const MemoryFile output;
  const MemoryFile error_output;
  const bool is_one = errors == ProgramErrors::kWithOutput;
  const SignalDelay delay;
  const ChildNotice notice;
  Child child(start(program_and_arguments, std::move(environment), output.descriptor(),
                    is_one ? output.descriptor() : error_output.descriptor()),
              program);
  ProgramResult result;
  result.status = child.wait();
  result.output = output.content();
  std::cerr << error_output.content();
  return result;
}

int run_apart(const std::string& name, const std::function<int()>& work) {
  const SignalDelay delay;
  const ChildNotice notice;
  const pid_t process = ::fork();
  if (process < 0) refuse_to_start(name, errno);
  if (process == 0) {
    ::prctl(PR_SET_DUMPABLE, 0);  // its end is expected, and leaves no file behind
    ::sigprocmask(SIG_SETMASK, &SignalDelay::mask_before(), nullptr);
    ::_exit(work());
  }
  return Child(process, name).wait();
}

}  // namespace qzlog_tool
