#ifndef QZLOG_TESTS_FAULTS_SCENARIOS_SEEN_TEXT_H
#define QZLOG_TESTS_FAULTS_SCENARIOS_SEEN_TEXT_H

#include <cstddef>

/// What an operation saw, as lines. Takes no memory, so that it does not fail along with the library.
class SeenText {
 public:
  void add(const char* text);
  void add_number(long long number);
  void end_line() { add("\n"); }
  void clear() { size_ = 0; }
  /// To standard output, past any buffer.
  void print() const;

 private:
  char bytes_[1 << 16] = {};
  std::size_t size_ = 0;
};

#endif  // QZLOG_TESTS_FAULTS_SCENARIOS_SEEN_TEXT_H
