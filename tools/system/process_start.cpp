#include "tools/system/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "tools/system/command_error.h"
#include "tools/system/out_of_memory.h"

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

// errno alone says that there was no memory. It also does where the heap cannot grow in its place and the C library has
// found room elsewhere: taken and given back, that room is at hand.
int read_time_zone() noexcept {
  constexpr std::size_t kRoomBytes = std::size_t{64} << 10;
  void* volatile const room = std::malloc(kRoomBytes);
  std::free(room);
  errno = 0;
  ::tzset();
  if (errno != ENOMEM) return errno;
  print_out_of_memory();
  ::_exit(kExitCannotRun);
}

}  // namespace qzlog_tool
