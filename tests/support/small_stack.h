#ifndef QZLOG_TESTS_SUPPORT_SMALL_STACK_H
#define QZLOG_TESTS_SUPPORT_SMALL_STACK_H

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <system_error>

namespace qz_test {

/// Runs `body` on a thread of its own with a stack of `size_bytes`, which the sanitizers, whose frames are larger, need
/// more of. What it throws is thrown here.
inline void on_small_stack(std::size_t size_bytes, const std::function<void()>& body) {
#ifdef QZLOG_SANITIZED
  size_bytes *= 8;
#endif
  struct Work {
    const std::function<void()>& body;
    std::exception_ptr thrown;
    static void* run(void* argument) {
      auto& work = *static_cast<Work*>(argument);
      try {
        work.body();
      } catch (...) {
        work.thrown = std::current_exception();
      }
      return nullptr;
    }
  } work{body, nullptr};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, size_bytes);
  pthread_t thread = {};
  const int failure = pthread_create(&thread, &attributes, Work::run, &work);
  pthread_attr_destroy(&attributes);
  if (failure != 0) throw std::system_error(failure, std::generic_category());
  pthread_join(thread, nullptr);
  if (work.thrown) std::rethrow_exception(work.thrown);
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SMALL_STACK_H
