#include "sinks/file_sink_cores.h"

#include <new>
#include <utility>

#include "foundation/allocate.h"
#include "sinks/file_sink_settings.h"
#include "sinks/setting_checks.h"

namespace qzlog {

namespace {

const qz_LOG_FileSinkSettings& checked(const qz_LOG_FileSinkSettings& settings) {
  check_settings(settings);
  return settings;
}

}  // namespace

FileSinkCores::FileSinkCores(const qz_LOG_FileSinkSettings& settings, FileSinkCore::Lines lines)
    : settings_(with_memory([&] { return checked(settings); })),
      lines_(lines),
      owner_(with_memory([this] { return FileSinkCore::open(settings_, lines_, true); })),
      current_(owner_.get()) {}

FileSinkCores::~FileSinkCores() {
  if (owner_->is_abandoned()) leave_to_parent();
}

/// Opening looks for other processes' files and takes locks of its own; no other thread of the process waits here for
/// long, since it wants the same.
FileSinkCore& FileSinkCores::renew() {
  const MutexSentry hold(mutex_);
  if (!owner_->is_abandoned()) return *owner_;
  std::shared_ptr<FileSinkCore> renewed = FileSinkCore::open(settings_, lines_, false);
  leave_to_parent();
  owner_ = std::move(renewed);
  current_.store(owner_.get(), std::memory_order_release);
  return *owner_;
}

/// Other threads were using it when the process forked, so it may be in any state: nothing of it is destroyed.
void FileSinkCores::leave_to_parent() {
  auto* const left = new (std::nothrow) std::shared_ptr<FileSinkCore>(owner_);
  static_cast<void>(left);
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it is never destroyed

bool FileSinkCores::close(unsigned milliseconds, FileSinkCore::Left& left) {
  FileSinkCore* const core = current_.load(std::memory_order_acquire);
  const bool is_first = !is_closed_.exchange(true, std::memory_order_relaxed);
  // What waits is the parent's, and this process has written nothing.
  if (!core->is_abandoned()) left = core->close(milliseconds);
  return is_first;
}

}  // namespace qzlog
