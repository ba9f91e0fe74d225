#include "tools/catalog/genrb.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"
#include "tools/output_file.h"
#include "tools/temporary_folder.h"

namespace qzlog_catalog {
namespace {

using qzlog_tool::CommandError;
using qzlog_tool::kExitCannotRun;
using qzlog_tool::kExitFindings;
using qzlog_tool::TemporaryFolder;

/// Standard input is empty, and both outputs go to one file.
class ChildStreams {
 public:
  explicit ChildStreams(const std::string& output_path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, output_path.c_str(), kFlags, 0600);
    ::posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
  }
  ChildStreams(const ChildStreams&) = delete;
  ChildStreams& operator=(const ChildStreams&) = delete;
  ~ChildStreams() { ::posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_ = {};
};

[[noreturn]] void refuse_to_start(const std::string& program, int error) {
  throw CommandError(kExitCannotRun, "cannot run '" + program + "': " + std::strerror(error) +
                                         "; it is ICU's compiler for resource bundles (Debian: icu-devtools)");
}

/// The exit status, or 128 and the signal that ended the program. No shell sees the arguments.
int run(std::vector<std::string> arguments, const std::string& output_path) {
  const ChildStreams streams(output_path);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, pointers[0], streams.get(), nullptr, pointers.data(), environ);
  if (error != 0) refuse_to_start(arguments[0], error);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) refuse_to_start(arguments[0], errno);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

[[noreturn]] void report_failure(const std::string& program, int status, std::string messages) {
  while (messages.ends_with('\n')) messages.pop_back();
  throw CommandError(kExitFindings, "'" + program + "' has failed with status " + std::to_string(status) +
                                        (messages.empty() ? "" : ":\n" + messages));
}

}  // namespace

std::vector<NamedBundle> run_genrb(const std::string& program, const std::vector<NamedBundle>& sources) {
  const TemporaryFolder folder;
  const std::string prefix = folder.path() + '/';
  std::vector<std::string> arguments = {program, "--quiet", "--encoding", "UTF-8", "--destdir", folder.path()};
  for (const NamedBundle& source : sources) {
    arguments.push_back(prefix + source.name + ".txt");
    qzlog_tool::write_file(arguments.back(), source.content);
  }
  const std::string messages = prefix + "messages";
  const int status = run(std::move(arguments), messages);
  if (status != 0) report_failure(program, status, qzlog_tool::read_file(messages));
  std::vector<NamedBundle> results;
  for (const NamedBundle& source : sources) {
    results.push_back({source.name, qzlog_tool::read_file(prefix + source.name + ".res")});
  }
  return results;
}

}  // namespace qzlog_catalog
