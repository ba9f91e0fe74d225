#ifndef QZLOG_TESTS_PROCESSES_LOGGING_H
#define QZLOG_TESTS_PROCESSES_LOGGING_H

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"

namespace qz_test {

enum class Path { kNarrow, kIcu, kCatalog };

inline std::string name_of_path(const testing::TestParamInfo<Path>& path) {
  constexpr const char* kNames[] = {"Narrow", "Icu", "Catalog"};
  return kNames[static_cast<int>(path.param)];
}

/// A product that uses every part of the library: more events than are kept in memory, messages with numbers, money,
/// dates and times, texts in other code pages, filters that ask a configuration.
class Logging {
 public:
  explicit Logging(Path path);
  ~Logging();
  Logging(const Logging&) = delete;
  Logging& operator=(const Logging&) = delete;

  /// Entries of many events, each made, filtered and rendered. How many of them came out otherwise than they should.
  int wrong_entries(unsigned seed, int count) const;
  /// Every setting made again, which needs every lock that there is, and the same with these.
  int wrong_entries_after_new_settings(unsigned seed, int count) const;

 private:
  void set() const;
  bool is_right(unsigned id) const;
  std::string expected_message(unsigned id) const;

  const Path path_;
  const TempDir folder_;
  const SeededRandom random_;
};

/// Threads that log until they are stopped. A process may end without that.
class LoggingThreads {
 public:
  LoggingThreads(const Logging& logging, unsigned count);
  ~LoggingThreads();
  LoggingThreads(const LoggingThreads&) = delete;
  LoggingThreads& operator=(const LoggingThreads&) = delete;

  int wrong_entries() const { return wrong_; }

 private:
  std::atomic<bool> stopped_{false};
  std::atomic<int> wrong_{0};
  std::vector<std::thread> threads_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_PROCESSES_LOGGING_H
