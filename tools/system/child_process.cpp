#include "tools/system/child_process.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "tools/system/memory_file.h"
#include "tools/system/program_start.h"
#include "tools/system/signal_delay.h"

namespace qzlog_tool {
namespace {

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

}  // namespace

// The output goes into memory and not through a pipe, so that there is only one thing to wait for. So do errors: our
// standard error shows them as it shows ours, safe for a terminal.
ProgramResult run_program(std::vector<std::string> program_and_arguments, ProgramErrors errors,
                          std::vector<std::string> variables) {
  const std::string program = program_and_arguments.at(0);
  const MemoryFile output;
  const MemoryFile error_output;
  const bool is_one = errors == ProgramErrors::kWithOutput;
  const SignalDelay delay;
  const ChildNotice notice;
  Child child(start_program(std::move(program_and_arguments), std::move(variables), output.descriptor(),
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
