#include "tests/support/child_process.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

#include "qzlog/qz_exception.h"

namespace qz_test {
namespace {

int status_of(const std::function<int()>& body) {
  try {
    return body();
  } catch (const qz_EXCEPTION_base& error) {
    std::fprintf(stderr, "child: %s\n", error.get_message() != nullptr ? error.get_message() : "(no text)");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "child: %s\n", error.what());
  }
  return ChildProcess::kThrew;
}

/// False when the process still runs after the bound.
bool ends_in_time(pid_t id, int& status) {
  const auto end = std::chrono::steady_clock::now() + ChildProcess::kBound;
  while (waitpid(id, &status, WNOHANG) != id) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

ChildProcess::ChildProcess(const std::function<int()>& body) : id_(fork()) {
  if (id_ < 0) throw std::runtime_error("no process");
  if (id_ > 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::quick_exit(status_of(body));
}

ChildProcess::~ChildProcess() {
  if (id_ > 0) wait();
}

int ChildProcess::wait() {
  const pid_t id = std::exchange(id_, 0);
  int status = 0;
  if (!ends_in_time(id, status)) {
    kill(id, SIGKILL);
    waitpid(id, &status, 0);
    return kHung;
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace qz_test
