#include "sinks/silent_thread.h"

#include <pthread.h>
#include <signal.h>

#include <climits>

namespace qzlog {

namespace {

constexpr std::size_t kStackSize = 256U << 10;

}  // namespace

bool start_silent_thread(void* (*run)(void*), void* argument) noexcept {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, kStackSize);
  sigset_t every;
  sigset_t former;
  sigfillset(&every);
  pthread_sigmask(SIG_SETMASK, &every, &former);
  pthread_t thread;
  const bool started = pthread_create(&thread, &attributes, run, argument) == 0;
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  pthread_attr_destroy(&attributes);
  return started;
}

}  // namespace qzlog
