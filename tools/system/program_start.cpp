#include "tools/system/program_start.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/system/command_error.h"
#include "tools/system/signal_delay.h"

namespace qzlog_tool {
namespace {

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

}  // namespace

void refuse_to_start(const std::string& program, int error, const std::string& hint) {
  throw CommandError(kExitCannotRun, "cannot run '" + program + "': " + std::strerror(error) + hint);
}

pid_t start_program(std::vector<std::string> arguments, std::vector<std::string> variables, int output, int errors,
                    const std::string& hint) {
  std::vector<std::string> environment = environment_with(std::move(variables));
  const ChildStreams streams(output, errors);
  const ChildSignals signals;
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, arguments[0].c_str(), streams.get(), signals.get(),
                                   pointers_to(arguments).data(), pointers_to(environment).data());
  if (error != 0) refuse_to_start(arguments[0], error, error == ENOENT ? hint : "");
  return child;
}

}  // namespace qzlog_tool
