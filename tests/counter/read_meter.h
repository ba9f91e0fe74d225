#ifndef QZLOG_TESTS_COUNTER_READ_METER_H
#define QZLOG_TESTS_COUNTER_READ_METER_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace qz_test {

/// More than a record or two, and a tool under which the test runs may read a byte for itself; less than any scan.
constexpr long long kFewBytes = 256;

/// Counts the bytes that this process reads from files, which is what a search costs whatever the machine does besides.
class ReadMeter {
 public:
  ReadMeter() : file_(::open("/proc/self/io", O_RDONLY | O_CLOEXEC)) {}
  ~ReadMeter() { close(file_); }
  ReadMeter(const ReadMeter&) = delete;
  ReadMeter& operator=(const ReadMeter&) = delete;

  bool works() const { return total() > 0; }

  template <typename Operation>
  long long bytes_read_by(Operation operation) const {
    const long long before = total();
    const long long own = total() - before;
    const long long start = total();
    operation();
    return total() - start - own;
  }

 private:
  /// Reads the same number of bytes each time: the text is longer.
  long long total() const {
    char text[32] = {};
    if (pread(file_, text, sizeof(text) - 1, 0) < 0 || std::strncmp(text, "rchar: ", 7) != 0) return 0;
    return std::atoll(text + 7);
  }

  int file_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_COUNTER_READ_METER_H
