#ifndef QZLOG_TESTS_FOUNDATION_AFTER_THREAD_END_H
#define QZLOG_TESTS_FOUNDATION_AFTER_THREAD_END_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <thread>
#include <utility>

#include "foundation/thread_end.h"

namespace qz_test {

/// Code that a thread runs when it has released what the library kept for it: the destructor of a key, called again and
/// again until the library's was called too. At most one per thread.
class AfterThreadEnd {
 public:
  explicit AfterThreadEnd(std::function<void()> work) : work_(std::move(work)) {
    EXPECT_EQ(pthread_key_create(&key_, &run), 0);
  }
  ~AfterThreadEnd() {
    EXPECT_TRUE(done_);
    pthread_key_delete(key_);
  }
  AfterThreadEnd(const AfterThreadEnd&) = delete;
  AfterThreadEnd& operator=(const AfterThreadEnd&) = delete;

  /// In the thread whose end it is.
  void arm() {
    EXPECT_TRUE(qzlog::ThreadEnd::add(&anything_));
    rearm();
  }

 private:
  void rearm() { EXPECT_EQ(pthread_setspecific(key_, this), 0); }
  static void run(void* value) {
    auto* const self = static_cast<AfterThreadEnd*>(value);
    if (!qzlog::ThreadEnd::is_over()) return self->rearm();
    self->work_();
    self->done_ = true;
  }

  qzlog::ThreadEnd::Duty anything_ = {[](qzlog::ThreadEnd::Duty*) noexcept {}, nullptr};
  std::function<void()> work_;
  pthread_key_t key_ = {};
  bool done_ = false;
};

inline void in_thread(const std::function<void()>& work) { std::thread(work).join(); }

}  // namespace qz_test

#endif  // QZLOG_TESTS_FOUNDATION_AFTER_THREAD_END_H
