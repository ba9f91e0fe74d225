#ifndef QZLOG_TESTS_SUPPORT_MALLOC_FAILURE_H
#define QZLOG_TESTS_SUPPORT_MALLOC_FAILURE_H

namespace qz_test {

/// While it lives, the `nth` call (from 1) of malloc, calloc or realloc by the thread that made it returns null, from
/// whichever library it comes. One at a time in a thread. Only in programs that compile malloc_failure.cpp, and not
/// under the sanitizers, which have an allocator of their own.
class MallocFailure {
 public:
  enum Reach { kOnce, kFromThenOn };

  explicit MallocFailure(unsigned nth, Reach reach = kOnce);
  ~MallocFailure();
  MallocFailure(const MallocFailure&) = delete;
  MallocFailure& operator=(const MallocFailure&) = delete;

  /// Whether a call has failed by now.
  static bool happened();
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_MALLOC_FAILURE_H
