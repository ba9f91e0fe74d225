#include "tools/system/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

// The lowest descriptor that is free is taken, which is this one where those below it are open. It stays open in
// programs that are started from here: they do not expect it to be closed either.
void hold_open(int descriptor) noexcept {
  if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return;
  if (::open("/", O_PATH) != descriptor) ::_exit(kExitCannotRun);
}

}  // namespace

void prepare_process() noexcept {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) hold_open(descriptor);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace qzlog_tool
