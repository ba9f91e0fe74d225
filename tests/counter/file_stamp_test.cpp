#include "counter/file_stamp.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/counter/counter_fixture.h"
#include "tests/counter/other_process.h"

using namespace qzlog;

namespace {

using namespace qz_test;

class FileStampTest : public testing::Test {
 protected:
  FileStampTest() {
    write_in_place(path_, std::string(64, 'a'));
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  }
  ~FileStampTest() override { close(descriptor_); }

  TempDir folder_;
  const std::string path_ = folder_.path("days.cnt");
  const OtherProcess other_{folder_.path()};
  int descriptor_;
};

TEST_F(FileStampTest, NothingChanged_Equal) {
  const FileStamp stamp = FileStamp::of(descriptor_);
  EXPECT_TRUE(stamp.is_regular_file);
  EXPECT_EQ(stamp.size, 64);
  char byte = 0;
  EXPECT_EQ(pread(descriptor_, &byte, 1, 0), 1);
  EXPECT_EQ(FileStamp::of(descriptor_), stamp);
}

TEST_F(FileStampTest, ChangedByAnother_NotEqual) {
  const std::function<void()> changes[] = {
      [&] { other_.replace(path_, 0, "b"); },
      [&] { other_.replace(path_, 0, "b"); },  // the same bytes, too, were written
      [&] { other_.replace(path_, 64, "b"); },
      [&] { other_.cut(path_, 3); },
  };
  for (const auto& change : changes) {
    const FileStamp stamp = FileStamp::of(descriptor_);
    change();
    EXPECT_NE(FileStamp::of(descriptor_), stamp);
  }
}

TEST_F(FileStampTest, AnotherFile_NotEqual) {
  const std::string copy = folder_.path("copy.cnt");
  write_in_place(copy, std::string(64, 'a'));
  const int other = ::open(copy.c_str(), O_RDONLY | O_CLOEXEC);
  FileStamp stamp = FileStamp::of(other);
  const FileStamp mine = FileStamp::of(descriptor_);
  close(other);
  stamp.modified_seconds = mine.modified_seconds;
  stamp.modified_nanoseconds = mine.modified_nanoseconds;
  stamp.changed_seconds = mine.changed_seconds;
  stamp.changed_nanoseconds = mine.changed_nanoseconds;
  EXPECT_NE(stamp, mine);
}

TEST_F(FileStampTest, NoFile_IsNoRegularFile) {
  EXPECT_FALSE(FileStamp::of(-1).is_regular_file);
  const int device = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_FALSE(FileStamp::of(device).is_regular_file);
  close(device);
}

}  // namespace
