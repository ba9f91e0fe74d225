#include "tools/system/program_output.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "tools/system/command_error.h"
#include "tools/system/program_start.h"
#include "tools/system/signal_delay.h"

namespace qzlog_tool {
namespace {

struct Started {
  FileDescriptor output;
  pid_t process;
};

Started start(std::vector<std::string> program_and_arguments, int errors, const std::string& hint) {
  const std::string program = program_and_arguments.at(0);
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC) != 0) refuse_to_start(program, errno);
  FileDescriptor reader(ends[0]);
  const FileDescriptor writer(ends[1]);
  const SignalDelay delay;
  const pid_t process = start_program(std::move(program_and_arguments), {}, writer.get(), errors, hint);
  return {std::move(reader), process};
}

/// "; it said: ..." in one line, or nothing.
std::string told(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text.empty() ? "" : ": " + text;
}

}  // namespace

ProgramOutput::EndNotice::EndNotice() {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  ::sigaction(SIGCHLD, &action, &before_);
}

ProgramOutput::EndNotice::~EndNotice() { ::sigaction(SIGCHLD, &before_, nullptr); }

ProgramOutput::ProgramOutput(std::vector<std::string> program_and_arguments, const std::string& hint)
    : program_(program_and_arguments.at(0)), output_(-1), process_(-1) {
  Started started = start(std::move(program_and_arguments), errors_.descriptor(), hint);
  output_ = std::move(started.output);
  process_ = started.process;
}

ProgramOutput::~ProgramOutput() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  wait();
}

std::size_t ProgramOutput::read(char* buffer, std::size_t size) {
  if (process_ < 0) return 0;
  const std::size_t count = read_some(output_.get(), buffer, size, program_);
  if (count == 0) check_end();
  return count;
}

void ProgramOutput::check_end() {
  const int status = wait();
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  const std::string how = WIFEXITED(status) ? "ended with the status " + std::to_string(WEXITSTATUS(status))
                                            : "was ended by the signal " + std::to_string(WTERMSIG(status));
  throw CommandError(kExitCannotRun, "'" + program_ + "' " + how + told(errors_.content()));
}

int ProgramOutput::wait() noexcept {
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return status;
}

}  // namespace qzlog_tool
