#include "definitions/file_changes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/support/temp_dir.h"

using namespace qzlog;

namespace qz_test {
namespace {

/// Longer than a tick of the clock, and than a file counts as just written to.
void wait_until_old() { std::this_thread::sleep_for(std::chrono::milliseconds(80)); }
void wait_for_next_tick() { std::this_thread::sleep_for(std::chrono::milliseconds(15)); }

class FileChangesTest : public testing::Test {
 protected:
  FileChangesTest() : descriptor_(open(folder_.write("file", "abc").c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~FileChangesTest() override { close(descriptor_); }

  TempDir folder_;
  int descriptor_;
};

TEST_F(FileChangesTest, FileThatWasJustWritten_IsDoubtedUntilItIsOld) {
  FileChanges changes(descriptor_);
  EXPECT_TRUE(changes.may_have_changed());
  EXPECT_TRUE(changes.may_have_changed());
  wait_until_old();
  changes.may_have_changed();
  wait_for_next_tick();
  EXPECT_FALSE(changes.may_have_changed());
  EXPECT_FALSE(changes.may_have_changed());
}

TEST_F(FileChangesTest, WrittenFile_IsNoticedWithTheNextTickWhateverItsTimesSay) {
  wait_until_old();
  FileChanges changes(descriptor_);
  changes.may_have_changed();
  wait_for_next_tick();
  ASSERT_FALSE(changes.may_have_changed());
  struct stat before {};
  ASSERT_EQ(fstat(descriptor_, &before), 0);
  folder_.write("file", "xyz");
  // The size is the same, and what a program can set of the times.
  const timespec times[2] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(utimensat(AT_FDCWD, folder_.path("file").c_str(), times, 0), 0);
  wait_for_next_tick();
  EXPECT_TRUE(changes.may_have_changed());
  wait_until_old();
  changes.may_have_changed();
  wait_for_next_tick();
  EXPECT_FALSE(changes.may_have_changed());
}

TEST_F(FileChangesTest, ReplacedFile_StaysWhatIsOpen) {
  wait_until_old();
  FileChanges changes(descriptor_);
  changes.may_have_changed();
  folder_.write("other", "other");
  ASSERT_EQ(rename(folder_.path("other").c_str(), folder_.path("file").c_str()), 0);
  wait_until_old();  // its number of names has changed, and so its time
  changes.may_have_changed();
  wait_for_next_tick();
  EXPECT_FALSE(changes.may_have_changed());
}

TEST_F(FileChangesTest, DescriptorThatCannotBeLookedAt_IsDoubtedForEver) {
  FileChanges changes(-1);
  for (int i = 0; i < 3; ++i) {
    for (int again = 0; again < 20; ++again) EXPECT_TRUE(changes.may_have_changed());
    wait_for_next_tick();
  }
}

}  // namespace
}  // namespace qz_test
