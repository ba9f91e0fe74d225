#ifndef QZLOG_TESTS_SUPPORT_CALL_FAILURE_H
#define QZLOG_TESTS_SUPPORT_CALL_FAILURE_H

namespace qz_test {

/// The calls of the test program that can fail on purpose; not those that the C library makes for its own functions.
enum class FileCall { kOpen, kStatus, kRead };

/// While it lives, every such call of this process fails with `error`. One at a time.
class CallFailure {
 public:
  CallFailure(FileCall call, int error);
  ~CallFailure();
  CallFailure(const CallFailure&) = delete;
  CallFailure& operator=(const CallFailure&) = delete;
};

/// While it lives, pread and pwrite transfer half of what they are asked for, but a byte at least. One at a time.
class ShortTransfers {
 public:
  /// `whole` transfers come before; `error` is what those behind `in_part` short ones fail with.
  explicit ShortTransfers(int whole = 0, int in_part = kEvery, int error = 0);
  ~ShortTransfers();
  ShortTransfers(const ShortTransfers&) = delete;
  ShortTransfers& operator=(const ShortTransfers&) = delete;

  static constexpr int kEvery = -1;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_CALL_FAILURE_H
