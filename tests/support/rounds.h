#ifndef QZLOG_TESTS_SUPPORT_ROUNDS_H
#define QZLOG_TESTS_SUPPORT_ROUNDS_H

namespace qz_test {

/// How often a long random test draws: `count` times, an eighth of that under the sanitizers and under emulation, where
/// each takes up to ten times as long. They look for what one draw does; what many draws find is found without them.
constexpr int rounds(int count) {
#if defined(QZLOG_SANITIZED) || defined(QZLOG_EMULATED)
  return count / 8;
#else
  return count;
#endif
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_ROUNDS_H
