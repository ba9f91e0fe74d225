#ifndef QZLOG_SHIP_PLUGIN_SIGNALS_BLOCKED_H
#define QZLOG_SHIP_PLUGIN_SIGNALS_BLOCKED_H

#include <pthread.h>
#include <signal.h>

namespace qzlog_ship {

/// Blocks all signals of this thread as long as it lives, for threads that a library begins meanwhile: those keep them
/// blocked, so that signals go to the threads of the command.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t former_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_SIGNALS_BLOCKED_H
