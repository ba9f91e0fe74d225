#include "tools/system/signal_delay.h"

namespace qzlog_tool {
namespace {

constexpr int kEndingSignals[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE, SIGALRM,   SIGTERM,
                                  SIGUSR1, SIGUSR2, SIGXCPU, SIGPROF, SIGVTALRM, SIGPOLL};

/// Of the process; the signal mask is its only thread's.
struct State {
  int depth = 0;
  sigset_t delayed = {};
  sigset_t mask_before = {};
};

State state;

bool is_ignored(int signal) {
  struct sigaction action = {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Linux keeps an ignored signal too while it is blocked: what asks whether one has come must not see those.
void choose_signals() {
  sigemptyset(&state.delayed);
  for (const int signal : kEndingSignals) {
    if (sigismember(&state.mask_before, signal) == 0 && !is_ignored(signal)) sigaddset(&state.delayed, signal);
  }
}

}  // namespace

SignalDelay::SignalDelay() noexcept {
  if (state.depth++ > 0) return;
  ::sigprocmask(SIG_BLOCK, nullptr, &state.mask_before);
  choose_signals();
  ::sigprocmask(SIG_BLOCK, &state.delayed, nullptr);
}

SignalDelay::~SignalDelay() {
  if (--state.depth == 0) ::sigprocmask(SIG_SETMASK, &state.mask_before, nullptr);
}

bool SignalDelay::is_active() noexcept { return state.depth > 0; }
const sigset_t& SignalDelay::delayed() noexcept { return state.delayed; }
const sigset_t& SignalDelay::mask_before() noexcept { return state.mask_before; }

}  // namespace qzlog_tool
