#ifndef QZLOG_TESTS_FAULTS_TRACED_RUN_H
#define QZLOG_TESTS_FAULTS_TRACED_RUN_H

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/call_fault.h"
#include "tests/faults/call_groups.h"

namespace qz_fault {

/// What happened in a run.
struct RunReport {
  std::string kind = "hang";          ///< "exit", "signal" or "hang"
  int number = 0;                     ///< the exit status or the signal
  long calls = 0;                     ///< counted, whether they failed or not
  std::string hit;                    ///< the call that went wrong first, with its file; empty if none did
  std::vector<std::string> sequence;  ///< the counted calls with their files, when none was to fail
  std::vector<std::string> frames;    ///< of the first crash, or of a hang; innermost first
  int left_running = 0;               ///< processes that were still there soon after the program had ended
};

struct RunOptions {
  std::vector<const CallGroup*> groups;  ///< which calls are counted and may fail
  CallFault fault{};
  bool marked = false;  ///< counted only between the marks of a scenario, not from main on
  int timeout_ms = 10000;
};

/// A program and all that it starts, under ptrace. All of it is killed when this ends.
class TracedRun {
 public:
  explicit TracedRun(RunOptions options);

  /// Runs the program to its end, with this process's standard streams. Throws std::system_error when it cannot be
  /// traced.
  RunReport run(char* const command[]);

 private:
  struct Thread {
    bool in_changed_call = false;
    std::optional<user_regs_struct> at_end;
  };

  void start(char* const command[]);
  void wait_for_all();
  bool wait_for_one();
  void forked(pid_t thread);
  void begun(pid_t thread);
  void ended(pid_t thread, int status);
  void stopped(pid_t thread, int status);
  void call_begins(pid_t thread);
  void call_ends(pid_t thread);
  void mark(pid_t thread, const StoppedCall& call);
  void consider(pid_t thread, StoppedCall& call, const CallGroup& group);
  void show_hang();
  void crash(pid_t thread, int signal);
  bool& counting(pid_t process);
  void resume(pid_t thread, int signal = 0);

  RunOptions options_;
  RunReport report_;
  std::string lasting_;  // the group of the call that failed first
  pid_t program_ = -1;
  bool program_ended_ = false;
  std::map<pid_t, bool> counting_;  // by process
  std::map<pid_t, Thread> threads_;
};

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_TRACED_RUN_H
