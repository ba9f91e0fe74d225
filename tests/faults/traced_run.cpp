#include "tests/faults/traced_run.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <system_error>
#include <utility>

#include "tests/faults/call_filter.h"
#include "tests/faults/crash_frames.h"
#include "tests/faults/fault_marks.h"

namespace qz_fault {

namespace {

constexpr int kCannotStart = 126;
constexpr int kGraceMs = 200;
constexpr std::size_t kMostFrames = 24;
constexpr long kOptions = PTRACE_O_EXITKILL | PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                          PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_TRACESYSGOOD;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

// Interrupts waitpid, and does nothing else.
void ignore_alarm(int) {}

void alarm_in(int milliseconds) {
  itimerval timer{};
  timer.it_value.tv_sec = milliseconds / 1000;
  timer.it_value.tv_usec = (milliseconds % 1000) * 1000;
  // Again and again, in case the first one comes just before the wait.
  timer.it_interval.tv_usec = 50000;
  setitimer(ITIMER_REAL, &timer, nullptr);
}

[[noreturn]] void become(char* const command[], const std::vector<const CallGroup*>& groups) {
  raise(SIGSTOP);
  if (stop_at_calls(groups)) execvp(command[0], command);
  std::perror(command[0]);
  _exit(kCannotStart);
}

// A field of /proc/THREAD/status.
pid_t status_field(pid_t thread, const std::string& name) {
  std::ifstream status("/proc/" + std::to_string(thread) + "/status");
  for (std::string word; status >> word;) {
    pid_t value = -1;
    if (word == name && status >> value) return value;
  }
  return -1;
}

bool is_crash(int signal) {
  return signal == SIGSEGV || signal == SIGBUS || signal == SIGABRT || signal == SIGILL || signal == SIGFPE;
}

}  // namespace

TracedRun::TracedRun(RunOptions options) : options_(std::move(options)) {}

RunReport TracedRun::run(char* const command[]) {
  struct sigaction action {};
  action.sa_handler = ignore_alarm;
  sigaction(SIGALRM, &action, nullptr);
  start(command);
  alarm_in(options_.timeout_ms);
  wait_for_all();
  if (!program_ended_) show_hang();
  report_.left_running = program_ended_ ? static_cast<int>(counting_.size()) : 0;
  return report_;
}

void TracedRun::start(char* const command[]) {
  program_ = fork();
  if (program_ < 0) fail("fork");
  if (program_ == 0) become(command, options_.groups);
  int status = 0;
  if (waitpid(program_, &status, WUNTRACED) != program_) fail("waitpid");
  if (ptrace(PTRACE_SEIZE, program_, nullptr, kOptions) != 0) {
    const int error = errno;
    kill(program_, SIGKILL);
    errno = error;
    fail("PTRACE_SEIZE");
  }
  counting_[program_] = false;
  kill(program_, SIGCONT);
}

// Until nothing is left, the time is over, or what the program left behind has had its grace.
void TracedRun::wait_for_all() {
  bool in_grace = false;
  while (!counting_.empty() && wait_for_one()) {
    if (!program_ended_ || in_grace) continue;
    in_grace = true;
    alarm_in(kGraceMs);
  }
}

bool TracedRun::wait_for_one() {
  int status = 0;
  const pid_t thread = waitpid(-1, &status, __WALL);
  if (thread < 0) return false;
  if (WIFSTOPPED(status)) {
    stopped(thread, status);
  } else {
    ended(thread, status);
  }
  return true;
}

// The child is known from now on, even if its parent ends before it was heard of.
void TracedRun::forked(pid_t thread) {
  unsigned long child = 0;
  if (ptrace(PTRACE_GETEVENTMSG, thread, nullptr, &child) == 0) {
    counting_.try_emplace(static_cast<pid_t>(child), counting(status_field(thread, "Tgid:")));
  }
  resume(thread);
}

// A thread, of a process that may be new.
void TracedRun::begun(pid_t thread) {
  const pid_t process = status_field(thread, "Tgid:");
  if (process > 0) counting(process);
  resume(thread);
}

void TracedRun::ended(pid_t thread, int status) {
  threads_.erase(thread);
  counting_.erase(thread);
  if (thread != program_) return;
  program_ended_ = true;
  report_.kind = WIFEXITED(status) ? "exit" : "signal";
  report_.number = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

void TracedRun::stopped(pid_t thread, int status) {
  const int signal = WSTOPSIG(status);
  switch (status >> 16) {
    case PTRACE_EVENT_SECCOMP:
      return call_begins(thread);
    case PTRACE_EVENT_EXEC:
      counting(thread) = false;
      return resume(thread);
    case PTRACE_EVENT_FORK:
    case PTRACE_EVENT_VFORK:
      return forked(thread);
    case PTRACE_EVENT_CLONE:
      return resume(thread);
    case PTRACE_EVENT_STOP:
      if (signal == SIGTRAP) return begun(thread);
      ptrace(PTRACE_LISTEN, thread, nullptr, 0);
      return;
    default:
      break;
  }
  if (signal == (SIGTRAP | 0x80)) return call_ends(thread);
  if (is_crash(signal)) crash(thread, signal);
  resume(thread, signal);
}

// A process that was not seen yet is one that a counted one has forked, or not.
bool& TracedRun::counting(pid_t process) {
  const auto known = counting_.find(process);
  if (known != counting_.end()) return known->second;
  const auto parent = counting_.find(status_field(process, "PPid:"));
  return counting_[process] = parent != counting_.end() && parent->second;
}

void TracedRun::call_begins(pid_t thread) {
  StoppedCall call(thread);
  if (call.number() == SYS_prctl) {
    mark(thread, call);
    return resume(thread);
  }
  for (const CallGroup* const group : options_.groups) {
    if (std::find(group->numbers.begin(), group->numbers.end(), call.number()) == group->numbers.end()) continue;
    if (counting(status_field(thread, "Tgid:"))) consider(thread, call, *group);
    break;
  }
  resume(thread);
}

void TracedRun::mark(pid_t thread, const StoppedCall& call) {
  if (call.argument(0) != kMarkOption) return;
  bool& state = counting(status_field(thread, "Tgid:"));
  switch (call.argument(1)) {
    case kMainReached:
      state = !options_.marked;
      break;
    case kFaultsBegin:
      state = options_.marked;
      break;
    case kFaultsEnd:
      state = state && !options_.marked;
      break;
    default:
      break;
  }
}

void TracedRun::consider(pid_t thread, StoppedCall& call, const CallGroup& group) {
  const long number = ++report_.calls;
  const CallFault& fault = options_.fault;
  const std::string what = std::string(group.name) + " " + call.subject(group.subject);
  if (fault.nth == 0) report_.sequence.push_back(what);
  const bool is_chosen = number == fault.nth;
  const bool is_repeated = fault.repeated && lasting_ == group.name;
  if (!is_chosen && !is_repeated) return;
  if (is_chosen) lasting_ = group.name;
  auto at_end = fault.error != 0 ? call.fail(fault.error) : call.shorten();
  if (fault.error == 0 && !at_end) return;
  if (report_.hit.empty()) report_.hit = what;
  if (at_end) threads_[thread] = {true, at_end};
}

// Where the main thread is; the others may be waiting for it.
void TracedRun::show_hang() {
  if (ptrace(PTRACE_INTERRUPT, program_, nullptr, nullptr) != 0) return;
  int status = 0;
  while (waitpid(program_, &status, __WALL) < 0 && errno == EINTR) {
  }
  if (WIFSTOPPED(status) && report_.frames.empty()) report_.frames = frames_of(program_, program_, kMostFrames);
}

// The registers that were changed for the call get back what they held: the program counts on it.
void TracedRun::call_ends(pid_t thread) {
  Thread& state = threads_[thread];
  if (state.at_end) {
    user_regs_struct registers = *state.at_end;
    if (options_.fault.error == 0) {
      user_regs_struct now{};
      if (ptrace(PTRACE_GETREGS, thread, nullptr, &now) == 0) registers.rax = now.rax;
    }
    ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
  }
  state = {};
  resume(thread);
}

void TracedRun::crash(pid_t thread, int signal) {
  if (!report_.frames.empty()) return;
  const pid_t process = status_field(thread, "Tgid:");
  report_.frames = frames_of(process, thread, kMostFrames);
  if (report_.frames.empty()) report_.frames = {"? signal " + std::to_string(signal)};
}

// A thread that was killed meanwhile cannot be resumed, and is waited for.
void TracedRun::resume(pid_t thread, int signal) {
  const auto state = threads_.find(thread);
  const bool to_end_of_call = state != threads_.end() && state->second.in_changed_call;
  ptrace(to_end_of_call ? PTRACE_SYSCALL : PTRACE_CONT, thread, nullptr, signal);
}

}  // namespace qz_fault
