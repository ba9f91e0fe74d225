#include "tools/system/long_job.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstddef>
#include <exception>
#include <string_view>
#include <system_error>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/quiet.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirstShow{1000};
constexpr std::chrono::seconds kNextShow{1};
constexpr std::size_t kLongestText = 60;  // bytes; of two lines on a terminal only one could be taken away
constexpr std::string_view kEraseLine = "\r\033[K";

/// The calling thread has all signals wait, and so has a thread that it starts.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  ~NoSignals() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;

 private:
  sigset_t former_;
};

}  // namespace

// Signals are for the first thread, which may have to put them off.
LongJob::LongJob(const std::string& what)
    : what_(what.size() <= kLongestText ? qzlog_compiler::printable(what) : "working") {
  if (is_quiet() || !stderr_is_terminal()) return;
  const NoSignals no_signals;
  try {
    thread_ = std::thread([this] { show_unless_it_fails(); });
  } catch (const std::system_error&) {  // then nothing is shown
  }
}

LongJob::~LongJob() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    is_ending_ = true;
  }
  ends_.notify_one();
  thread_.join();
}

// Without a terminal any more, or without memory, the job itself goes on.
void LongJob::show_unless_it_fails() noexcept {
  try {
    show_until_end();
  } catch (const std::exception&) {
  }
}

void LongJob::show_until_end() {
  const Clock::time_point begin = Clock::now();
  std::unique_lock lock(mutex_);
  bool is_shown = false;
  for (Clock::time_point next = begin + kFirstShow; !ends_.wait_until(lock, next, [this] { return is_ending_; });
       next += kNextShow) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin).count();
    const std::string line = std::string(kEraseLine) + what_ + ": " + std::to_string(seconds) + " s";
    write_all(STDERR_FILENO, line.data(), line.size());
    is_shown = true;
  }
  if (is_shown) write_all(STDERR_FILENO, kEraseLine.data(), kEraseLine.size());
}

}  // namespace qzlog_tool
