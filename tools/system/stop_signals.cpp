#include "tools/system/stop_signals.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

namespace qzlog_tool {

namespace {

volatile std::sig_atomic_t requested_signal = 0;

void request(int signal) { requested_signal = signal; }

}  // namespace

StopSignals::StopSignals() noexcept {
  static_assert(std::size(kSignals) == std::extent_v<decltype(former_)>);
  struct sigaction action = {};
  action.sa_handler = request;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (std::size_t at = 0; at < std::size(kSignals); ++at) {
    ::sigaction(kSignals[at], nullptr, &former_[at]);
    if (former_[at].sa_handler != SIG_IGN) ::sigaction(kSignals[at], &action, nullptr);
  }
}

StopSignals::~StopSignals() {
  for (std::size_t at = 0; at < std::size(kSignals); ++at) ::sigaction(kSignals[at], &former_[at], nullptr);
}

sigset_t StopSignals::all() noexcept {
  sigset_t signals = {};
  ::sigemptyset(&signals);
  for (const int signal : kSignals) ::sigaddset(&signals, signal);
  return signals;
}

int StopSignals::requested() noexcept { return requested_signal; }

void end_by_signal(int signal) noexcept {
  struct sigaction action = {};
  ::sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return;
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace qzlog_tool
