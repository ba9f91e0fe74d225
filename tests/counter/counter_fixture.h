#ifndef QZLOG_TESTS_COUNTER_COUNTER_FIXTURE_H
#define QZLOG_TESTS_COUNTER_COUNTER_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ostream>
#include <string>

#include "qzlog/logentrycounter.h"
#include "tests/support/ldf_file.h"
#include "tests/support/support.h"

namespace qz_test {

constexpr std::size_t kRecordBytes = 32;

/// A record as it stands in the file: eight big-endian numbers.
inline std::string record_bytes(int year, int month, int day, int key, int count, int size = 32,
                                const std::string& reserved = std::string(8, '\0')) {
  std::string bytes;
  for (const int field : {size, year, month, day, key, count}) bytes += int4(static_cast<unsigned>(field));
  return bytes + reserved;
}

inline std::string free_record(const std::string& reserved = std::string(8, '\0')) {
  return record_bytes(0, 0, 0, 0, 0, 32, reserved);
}

/// The bytes in words, eight a line, so that a difference can be read.
inline std::string readable_records(const std::string& bytes) {
  std::string text = std::to_string(bytes.size()) + " bytes";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (i % 4 == 0) text += i % kRecordBytes == 0 ? "\n" : " ";
    text += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return text;
}

inline testing::AssertionResult same_records(const std::string& found, const std::string& expected) {
  if (found == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "found " << readable_records(found) << "\nexpected "
                                     << readable_records(expected);
}

/// Changes a file as another process would: in place, for whoever has it open.
inline void write_in_place(const std::string& path, const std::string& bytes) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  const auto size = static_cast<ssize_t>(bytes.size());
  if (pwrite(file, bytes.data(), bytes.size(), 0) != size || ftruncate(file, size) != 0) {
    ADD_FAILURE() << "cannot write " << path;
  }
  close(file);
}

/// The moment of a date at `hour` o'clock GMT.
inline qz_Time moment(int year, int month, int day, int hour = 12) {
  tm fields = {};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  return qz_Time::from_unix_seconds(timegm(&fields));
}

/// While it lives, the file can only be read by this process, also when that is the superuser's.
class ReadOnlyFile {
 public:
  explicit ReadOnlyFile(const std::string& path) : path_(path), superuser_(geteuid() == 0) {
    chmod(path_.c_str(), 0444);
    if (superuser_ && seteuid(kNobody) != 0) superuser_ = false;
  }
  ~ReadOnlyFile() {
    if (superuser_ && seteuid(0) != 0) ADD_FAILURE() << "the superuser's rights are lost";
    prctl(PR_SET_DUMPABLE, 1);  // a change of user switches it off; the leak checker needs it
    chmod(path_.c_str(), 0644);
  }
  ReadOnlyFile(const ReadOnlyFile&) = delete;
  ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

  bool holds() const { return geteuid() != 0; }

 private:
  static constexpr uid_t kNobody = 65534;
  std::string path_;
  bool superuser_;
};

/// A counter and the file "days.cnt" in a folder of the test's own.
class CounterTest : public testing::Test {
 protected:
  CounterTest() { chmod(folder_.path().c_str(), 0755); }

  void open() { EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0); }
  void open_with(const std::string& bytes) {
    write(bytes);
    open();
  }
  void write(const std::string& bytes) const { write_in_place(path(), bytes); }
  std::string read() const { return folder_.read("days.cnt"); }
  std::string path() const { return folder_.path("days.cnt"); }
  testing::AssertionResult holds(const std::string& bytes) const { return same_records(read(), bytes); }

  TempDir folder_;
  _qz_LOG_EntryCounter counter_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_COUNTER_COUNTER_FIXTURE_H
