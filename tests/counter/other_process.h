#ifndef QZLOG_TESTS_COUNTER_OTHER_PROCESS_H
#define QZLOG_TESTS_COUNTER_OTHER_PROCESS_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "counter/file_stamp.h"

namespace qz_test {

/// Changes files in place behind a counter's back, as another process does. Where the file system tells times by clock
/// ticks, a change waits for one that is not the tick of the change before: nobody could tell them apart.
class OtherProcess {
 public:
  /// `folder` is on the file system of the files.
  explicit OtherProcess(const std::string& folder) : has_ticks_(tells_times_by_ticks(folder + "/times")) {}

  void replace(const std::string& path, long long position, const std::string& bytes) const {
    change(path, [&](int file) {
      return pwrite(file, bytes.data(), bytes.size(), position) == static_cast<ssize_t>(bytes.size());
    });
  }
  void cut(const std::string& path, long long size) const {
    change(path, [&](int file) { return ftruncate(file, size) == 0; });
  }
  /// The new content in the same file.
  void rewrite(const std::string& path, const std::string& bytes) const {
    change(path, [&](int file) {
      const auto size = static_cast<ssize_t>(bytes.size());
      return pwrite(file, bytes.data(), bytes.size(), 0) == size && ftruncate(file, size) == 0;
    });
  }
  /// A change that is already made gets a moment of its own.
  void settle(const std::string& path) const {
    if (has_ticks_) change(path, [](int) { return true; });
  }

 private:
  template <typename Change>
  void change(const std::string& path, Change make_change) const {
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    // A look at the times is itself what makes some file systems tell them finely.
    const qzlog::FileStamp before = has_ticks_ ? qzlog::FileStamp::of(file) : qzlog::FileStamp();
    if (file < 0 || !make_change(file)) ADD_FAILURE() << "cannot change " << path;
    while (has_ticks_ && qzlog::FileStamp::of(file) == before) futimens(file, nullptr);
    close(file);
  }

  static bool tells_times_by_ticks(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    int equal_stamps = 0;
    for (int i = 0; i < 100; ++i) {
      const qzlog::FileStamp before = qzlog::FileStamp::of(file);
      if (pwrite(file, "x", 1, 0) != 1) ADD_FAILURE() << "cannot write " << path;
      if (i > 0 && qzlog::FileStamp::of(file) == before) ++equal_stamps;
    }
    close(file);
    unlink(path.c_str());
    return equal_stamps > 0;
  }

  bool has_ticks_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_COUNTER_OTHER_PROCESS_H
