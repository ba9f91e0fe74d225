#ifndef QZLOG_TESTS_UTIL_LOG_UTIL_GUARDED_MEMORY_H
#define QZLOG_TESTS_UTIL_LOG_UTIL_GUARDED_MEMORY_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace qz_test {

/// Memory of a given size right before a page that cannot be touched: reading or writing one byte too many crashes. The
/// bytes in front of it are filled, so that writing there is noticed.
class GuardedMemory {
 public:
  explicit GuardedMemory(std::size_t size) : size_(size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    usable_ = (size + kFront + page - 1) / page * page;
    memory_ = mmap(nullptr, usable_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory_ == MAP_FAILED) throw std::runtime_error("no memory for a guarded page");
    mapped_ = usable_ + page;
    mprotect(static_cast<char*>(memory_) + usable_, page, PROT_NONE);
    std::memset(memory_, kFill, usable_);
  }
  /// A text whose terminator is the last byte that can be read.
  explicit GuardedMemory(const std::string& text) : GuardedMemory(text.size() + 1) {
    std::memcpy(data(), text.c_str(), text.size() + 1);
  }
  ~GuardedMemory() { munmap(memory_, mapped_); }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  char* data() const { return static_cast<char*>(memory_) + usable_ - size_; }
  void refill() const { std::memset(memory_, kFill, usable_); }
  /// The text that was written. It must be terminated inside and nothing may have changed in front of it.
  std::string text() const {
    for (const char* byte = static_cast<char*>(memory_); byte < data(); ++byte) {
      if (*byte != kFill) ADD_FAILURE() << data() - byte << " bytes in front of the memory were written";
    }
    const std::size_t length = strnlen(data(), size_);
    EXPECT_LT(length, size_) << "not terminated";
    return {data(), length};
  }

 private:
  static constexpr char kFill = '#';
  static constexpr std::size_t kFront = 64;
  std::size_t size_;
  std::size_t usable_;
  std::size_t mapped_ = 0;
  void* memory_;
};

/// What `operation` writes to stderr.
template <typename Operation>
std::string written_to_stderr(Operation&& operation) {
  testing::internal::CaptureStderr();
  operation();
  return testing::internal::GetCapturedStderr();
}

/// Whether `text` is the report of one violated precondition of log_util, whatever the line.
inline testing::AssertionResult is_report_of(const std::string& text, const std::string& expression) {
  const std::string start = "log_util:";
  const std::string end = " assertion violated: " + expression + "\n";
  const std::size_t digits = text.find_first_not_of("0123456789", start.size());
  if (text.rfind(start, 0) == 0 && digits != std::string::npos && digits > start.size() && text.substr(digits) == end) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "\"" << text << "\" does not report " << expression;
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_UTIL_LOG_UTIL_GUARDED_MEMORY_H
