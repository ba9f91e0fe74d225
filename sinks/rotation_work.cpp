#include "sinks/rotation_work.h"

#include <fcntl.h>
#include <unistd.h>

#include <new>
#include <utility>

#include "foundation/descriptor.h"
#include "sinks/silent_thread.h"
#include "sinks/sink_clock.h"

namespace qzlog {

struct RotationWork::Job {
  Task task;
  std::shared_ptr<State> state;
};

namespace {

/// The file's data are brought to the disk whichever descriptor wrote them.
bool sync_file(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  return file && fdatasync(file.get()) == 0;
}

}  // namespace

void RotationWork::start(Task task) noexcept {
  if (task.path_to_sync.empty() && task.keep_files == 0 && task.keep_days == 0) return;
  const bool syncs = !task.path_to_sync.empty();
  std::unique_ptr<Job> job(new (std::nothrow) Job{std::move(task), state_});
  if (job == nullptr) {
    if (syncs) state_->sync_failures.fetch_add(1);
    return;
  }
  state_->running.fetch_add(1);
  if (!start_silent_thread(run, job.get())) run(job.get());
  static_cast<void>(job.release());  // run() has it
}

void* RotationWork::run(void* argument) noexcept {
  const std::unique_ptr<Job> job(static_cast<Job*>(argument));
  const Task& task = job->task;
  try {
    if (!task.path_to_sync.empty() && !sync_file(task.path_to_sync)) job->state->sync_failures.fetch_add(1);
    task.series.delete_old(task.keep_files, task.keep_days, task.now);
  } catch (...) {
    // Without memory nothing is deleted; it is after the next rotation.
  }
  job->state->running.fetch_sub(1);
  job->state->done.wake_all();
  return nullptr;
}

void RotationWork::wait(unsigned milliseconds) const {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  while (true) {
    const std::uint32_t ticket = state_->done.ticket();
    const long long left = deadline - SinkClock::steady_milliseconds();
    if (state_->running.load() == 0 || left <= 0) return;
    state_->done.wait(ticket, left);
  }
}

}  // namespace qzlog
