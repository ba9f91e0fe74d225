#ifndef QZLOG_TESTS_SUPPORT_CHILD_PROCESS_H
#define QZLOG_TESTS_SUPPORT_CHILD_PROCESS_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <functional>

namespace qz_test {

/// A fork of the test. One that does not end in time is killed, with the children that it waits for, so that a deadlock
/// fails a test and does not stop it. It ends with the thread that made it, too.
class ChildProcess {
 public:
  /// The child ends with what `body` returns, without destructors of static objects, or with kThrew.
  explicit ChildProcess(const std::function<int()>& body);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Its exit status; minus the signal's number when a signal ended it, kHung when it had to be killed.
  int wait();

  static constexpr int kThrew = 250;
  static constexpr int kHung = 251;
  static constexpr std::chrono::seconds kBound{60};

 private:
  pid_t id_;
};

/// The status of one child. Success leaves 0.
inline void expect_child_succeeds(const std::function<int()>& body) { EXPECT_EQ(ChildProcess(body).wait(), 0); }

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_CHILD_PROCESS_H
