#ifndef QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H
#define QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H

#include <cstdlib>
#include <random>
#include <string>

namespace qz_test {

/// Random numbers whose seed a failing test prints: SCOPED_TRACE(random.trace()). The environment variable
/// QZLOG_TEST_SEED repeats a run.
class SeededRandom {
 public:
  SeededRandom() : seed_(chosen_seed()), engine_(seed_) {}

  std::string trace() const { return "repeat with QZLOG_TEST_SEED=" + std::to_string(seed_); }

  /// From `low` to `high`, both included.
  long long between(long long low, long long high) {
    return std::uniform_int_distribution<long long>(low, high)(engine_);
  }
  bool one_in(int count) { return between(1, count) == 1; }

  /// `length` bytes, none of them zero.
  std::string text(std::size_t length) {
    std::string result(length, ' ');
    for (char& character : result) character = static_cast<char>(between(1, 255));
    return result;
  }

 private:
  static unsigned chosen_seed() {
    const char* given = std::getenv("QZLOG_TEST_SEED");
    return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device()();
  }

  unsigned seed_;
  std::mt19937 engine_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H
