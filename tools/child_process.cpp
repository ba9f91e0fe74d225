#include "tools/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"

namespace qzlog_tool {
namespace {

struct Pipe {
  FileDescriptor reading;
  FileDescriptor writing;
};

[[noreturn]] void refuse_to_start(const std::string& program, int error) {
  throw CommandError(kExitCannotRun, "cannot run '" + program + "': " + std::strerror(error));
}

Pipe make_pipe(const std::string& program) {
  int ends[2] = {};
  if (::pipe2(ends, O_CLOEXEC) != 0) refuse_to_start(program, errno);
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

class ChildStreams {
 public:
  ChildStreams(int output, ProgramErrors errors) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    if (errors == ProgramErrors::kWithOutput) {
      ::posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
    }
  }
  ChildStreams(const ChildStreams&) = delete;
  ChildStreams& operator=(const ChildStreams&) = delete;
  ~ChildStreams() { ::posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_ = {};
};

pid_t start(std::vector<std::string>& arguments, int output, ProgramErrors errors) {
  const ChildStreams streams(output, errors);
  std::vector<char*> pointers(arguments.size() + 1, nullptr);
  std::transform(arguments.begin(), arguments.end(), pointers.begin(),
                 [](std::string& argument) { return argument.data(); });
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, pointers[0], streams.get(), nullptr, pointers.data(), environ);
  if (error != 0) refuse_to_start(arguments[0], error);
  return child;
}

int wait_for(pid_t child, const std::string& program) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) refuse_to_start(program, errno);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProgramResult run_program(std::vector<std::string> program_and_arguments, ProgramErrors errors) {
  const std::string program = program_and_arguments.at(0);
  Pipe pipe = make_pipe(program);
  const pid_t child = start(program_and_arguments, pipe.writing.get(), errors);
  pipe.writing = FileDescriptor(-1);  // the child's end alone keeps the pipe open
  ProgramResult result;
  result.output = read_to_end(pipe.reading, program);
  result.status = wait_for(child, program);
  return result;
}

}  // namespace qzlog_tool
