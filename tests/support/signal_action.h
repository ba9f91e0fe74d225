#ifndef QZLOG_TESTS_SUPPORT_SIGNAL_ACTION_H
#define QZLOG_TESTS_SUPPORT_SIGNAL_ACTION_H

#include <signal.h>

namespace qz_test {

/// What this process does with a signal while the object lives.
class SignalAction {
 public:
  SignalAction(int signal, sighandler_t action) : signal_(signal), before_(::signal(signal, action)) {}
  SignalAction(const SignalAction&) = delete;
  SignalAction& operator=(const SignalAction&) = delete;
  ~SignalAction() { ::signal(signal_, before_); }

 private:
  int signal_;
  sighandler_t before_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SIGNAL_ACTION_H
