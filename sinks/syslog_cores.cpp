#include "sinks/syslog_cores.h"

#include <new>
#include <utility>

#include "sinks/setting_checks.h"
#include "sinks/syslog_sink_settings.h"

namespace qzlog {

namespace {

const qz_LOG_SyslogSinkSettings& checked(const qz_LOG_SyslogSinkSettings& settings) {
  check_settings(settings);
  return settings;
}

}  // namespace

SyslogCores::SyslogCores(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures)
    : settings_(with_memory([&] { return checked(settings); })),
      failures_(failures),
      owner_(with_memory([this] { return SyslogCore::open(settings_, failures_); })),
      current_(owner_.get()) {}

SyslogCores::~SyslogCores() {
  if (owner_->is_abandoned()) leave_to_parent();
}

SyslogCore& SyslogCores::renew() {
  const MutexSentry hold(mutex_);
  if (!owner_->is_abandoned()) return *owner_;
  std::shared_ptr<SyslogCore> renewed = SyslogCore::open(settings_, failures_);
  leave_to_parent();
  owner_ = std::move(renewed);
  current_.store(owner_.get(), std::memory_order_release);
  return *owner_;
}

/// Other threads were using it when the process forked, so it may be in any state: nothing of it is destroyed.
void SyslogCores::leave_to_parent() {
  auto* const left = new (std::nothrow) std::shared_ptr<SyslogCore>(owner_);
  static_cast<void>(left);
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it is never destroyed

unsigned long long SyslogCores::close(unsigned milliseconds) {
  SyslogCore* const core = current_.load(std::memory_order_acquire);
  is_closed_.store(true, std::memory_order_relaxed);
  // What is under way is the parent's, and this process has sent nothing.
  return core->is_abandoned() ? 0 : core->close(milliseconds);
}

}  // namespace qzlog
