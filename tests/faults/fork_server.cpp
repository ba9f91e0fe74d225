#include "tests/faults/fork_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/faults/memory_faults.h"

namespace qz_fault {

namespace {

constexpr int kCannotServe = 125;

struct Request {
  long nth;
  int from_then_on;
  int timeout_ms;
  char folder[512];
  char input[512];
  char output[512];
  char errors[512];
};

[[noreturn]] void give_up(const char* what) {
  std::perror(what);
  _exit(kCannotServe);
}

// A line, read byte by byte: standard input's buffer belongs to the program. False at the end of the requests.
bool read_line(char* line, std::size_t size) {
  for (std::size_t length = 0; length + 1 < size; ++length) {
    if (read(kRequestDescriptor, line + length, 1) != 1) return false;
    line[length + 1] = '\0';
    if (line[length] == '\n') return true;
  }
  return false;
}

bool read_request(Request& request) {
  char line[2304];
  if (!read_line(line, sizeof line)) return false;
  // Paths may hold blanks.
  return std::sscanf(line, "%ld %d %d %511[^\t]\t%511[^\t]\t%511[^\t]\t%511[^\n]", &request.nth, &request.from_then_on,
                     &request.timeout_ms, request.folder, request.input, request.output, request.errors) == 7;
}

void open_as(int descriptor, const char* path, int flags) {
  const int opened = open(path, flags, 0644);
  if (opened < 0 || dup2(opened, descriptor) < 0) give_up(path);
  if (opened != descriptor) close(opened);
}

void become_the_program(const Request& request) {
  close(kRequestDescriptor);
  close(kReplyDescriptor);
  setpgid(0, 0);
  if (chdir(request.folder) != 0) give_up(request.folder);
  open_as(STDIN_FILENO, request.input, O_RDONLY);
  open_as(STDOUT_FILENO, request.output, O_WRONLY | O_CREAT | O_TRUNC);
  open_as(STDERR_FILENO, request.errors, O_WRONLY | O_CREAT | O_TRUNC);
}

// False when the time is over; the child then still has to be waited for.
bool ends_in_time(pid_t child, int timeout_ms) {
  const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
  if (handle < 0) give_up("pidfd_open");
  pollfd waiting{handle, POLLIN, 0};
  const int ended = poll(&waiting, 1, timeout_ms);
  close(handle);
  return ended == 1;
}

void reply(pid_t child, const Request& request, const MemoryCount& count) {
  const bool in_time = ends_in_time(child, request.timeout_ms);
  if (!in_time) kill(child, SIGKILL);
  int status = 0;
  if (waitpid(child, &status, 0) != child) give_up("waitpid");
  const bool left_running = kill(-child, SIGKILL) == 0;
  const char* const kind = !in_time ? "hang" : WIFEXITED(status) ? "exit" : "signal";
  const int number = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
  dprintf(kReplyDescriptor, "%s %d %ld %ld %d\n", kind, number, count.allocations, count.failed, left_running ? 1 : 0);
}

}  // namespace

void serve_runs() {
  // What the program executes is no server.
  unsetenv("QZ_FAULT_SERVER");
  void* const shared = mmap(nullptr, sizeof(MemoryCount), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) give_up("mmap");
  auto* const count = static_cast<MemoryCount*>(shared);
  Request request{};
  while (read_request(request)) {
    *count = MemoryCount{};
    const pid_t child = fork();
    if (child < 0) give_up("fork");
    if (child == 0) {
      become_the_program(request);
      set_memory_fault({request.nth, request.from_then_on != 0}, count);
      return;
    }
    reply(child, request, *count);
  }
  _exit(0);
}

}  // namespace qz_fault
