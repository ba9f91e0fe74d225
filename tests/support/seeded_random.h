#ifndef QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H
#define QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

namespace qz_test {

/// Random numbers that follow from `seed` alone. For threads and child processes of a test, which give it
/// SeededRandom::seed() and a number of their own.
class RandomNumbers {
 public:
  explicit RandomNumbers(std::uint32_t seed) : engine_(seed) {}

  /// From `low` to `high`, both included.
  long long between(long long low, long long high) {
    return std::uniform_int_distribution<long long>(low, high)(engine_);
  }
  /// From 0 to `count` - 1.
  std::size_t below(std::size_t count) {
    return static_cast<std::size_t>(between(0, static_cast<long long>(count) - 1));
  }
  bool one_in(int count) { return between(1, count) == 1; }

  /// `length` bytes, none of them zero.
  std::string text(std::size_t length) {
    std::string result(length, ' ');
    for (char& character : result) character = static_cast<char>(between(1, 255));
    return result;
  }

 private:
  std::mt19937 engine_;
};

/// The same random numbers in every run of a test. While it lives, failures say which they are; the environment
/// variable QZLOG_TEST_SEED gives others.
class SeededRandom : public RandomNumbers {
 public:
  explicit SeededRandom(const char* file = __builtin_FILE(), int line = __builtin_LINE())
      : SeededRandom(chosen_seed(), file, line) {}
  SeededRandom(const SeededRandom&) = delete;
  SeededRandom& operator=(const SeededRandom&) = delete;

  std::uint32_t seed() const { return seed_; }

 private:
  SeededRandom(std::uint32_t seed, const char* file, int line)
      : RandomNumbers(seed), seed_(seed), trace_(file, line, "QZLOG_TEST_SEED=" + std::to_string(seed)) {}

  static std::uint32_t chosen_seed() {
    const char* const given = std::getenv("QZLOG_TEST_SEED");
    return given != nullptr ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : seed_of_the_test();
  }

  /// The name's hash, by FNV-1a: the same on every host.
  static std::uint32_t seed_of_the_test() {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    if (test == nullptr) return 1;
    std::uint32_t hash = 2166136261U;
    for (const char character : std::string(test->test_suite_name()) + '.' + test->name()) {
      hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
    }
    return hash;
  }

  std::uint32_t seed_;
  testing::ScopedTrace trace_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SEEDED_RANDOM_H
