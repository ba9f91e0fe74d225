#include "message/whole_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <initializer_list>
#include <string>

#include "tests/support/call_failure.h"
#include "tests/support/child_process.h"
#include "tests/support/resource_limit.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

using qzlog::read_whole_file;
using State = qzlog::WholeFile::State;

TEST(WholeFile, RegularFile_ItsBytes) {
  const TempDir folder;
  for (const std::size_t size : std::initializer_list<std::size_t>{0, 1, 4096, 300000}) {
    const std::string bytes(size, '\xAB');
    const qzlog::WholeFile file = read_whole_file(folder.write("file", bytes));
    EXPECT_EQ(file.state, State::kRead);
    EXPECT_EQ(file.bytes, bytes);
  }
}

TEST(WholeFile, NoRegularFile_Absent) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("loop", folder.path("loop"));
  for (const std::string& path :
       {folder.path("nothing"), folder.path(), folder.path("pipe"), folder.path("loop"), folder.path("nothing/within"),
        std::string("/dev/null"), std::string("/dev/zero"), "/" + std::string(20000, 'x'), std::string()}) {
    EXPECT_EQ(read_whole_file(path).state, State::kAbsent) << path.substr(0, 100);
  }
}

TEST(WholeFile, LargerThanABundleMayBe_Failed) {
  const TempDir folder;
  folder.write("file", "");
  std::filesystem::resize_file(folder.path("file"), (1ULL << 30U) + 1);  // takes no room on the disk
  EXPECT_EQ(read_whole_file(folder.path("file")).state, State::kFailed);
}

TEST(WholeFile, NoDescriptorLeft_Failed) {
  const TempDir folder;
  const std::string path = folder.write("file", "bytes");
  const auto state = [&] {
    const ResourceLimit none(RLIMIT_NOFILE, 0);
    return read_whole_file(path).state;
  }();
  EXPECT_EQ(state, State::kFailed);
}

TEST(WholeFile, NotOpenedForAReasonThatSaysNothingOfTheFile_Failed) {
  const TempDir folder;
  const std::string path = folder.write("file", "bytes");
  for (const int error : {EIO, ENOSPC, ENFILE, ENOMEM, EDQUOT, ESTALE, ETIMEDOUT, EAGAIN, EOVERFLOW, ENOTCONN}) {
    const CallFailure failure(FileCall::kOpen, error);
    EXPECT_EQ(read_whole_file(path).state, State::kFailed) << error;
  }
}

TEST(WholeFile, NotOpenedAsThereIsNoneForThisProcess_Absent) {
  const TempDir folder;
  const std::string path = folder.write("file", "bytes");
  for (const int error : {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG, EACCES, EPERM, ENXIO, ENODEV, EINVAL}) {
    const CallFailure failure(FileCall::kOpen, error);
    EXPECT_EQ(read_whole_file(path).state, State::kAbsent) << error;
  }
}

TEST(WholeFile, SizeNotTold_Failed) {
  const TempDir folder;
  const std::string path = folder.write("file", "bytes");
  const CallFailure failure(FileCall::kStatus, EIO);
  EXPECT_EQ(read_whole_file(path).state, State::kFailed);
}

TEST(WholeFile, CutWhileItIsRead_Failed) {
  // Of files in /sys the size is a page, whatever they hold.
  const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no " << path;
  EXPECT_EQ(read_whole_file(path).state, State::kFailed);
}

/// Holds a lease on a file, which it gives up as soon as somebody wants to open it, and then ends with 0.
int lease(const char* path, int ready) {
  static int descriptor = -1;
  descriptor = open(path, O_RDWR | O_CLOEXEC);
  std::signal(SIGIO, [](int) { _exit(fcntl(descriptor, F_SETLEASE, F_UNLCK)); });
  const char is_held = fcntl(descriptor, F_SETLEASE, F_WRLCK) == 0 ? 'y' : 'n';
  if (write(ready, &is_held, 1) != 1 || is_held == 'n') return 1;
  for (;;) pause();
}

TEST(WholeFile, LeasedToAnotherProcess_WaitedFor) {
  const TempDir folder;
  const std::string path = folder.write("file", "bytes");
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe(ends), 0);
  ChildProcess other([&] { return lease(path.c_str(), ends[1]); });
  char is_held = 'n';
  ASSERT_EQ(read(ends[0], &is_held, 1), 1);
  close(ends[0]);
  close(ends[1]);
  if (is_held == 'n') {
    other.wait();
    GTEST_SKIP() << "this file system has no leases";
  }
  const qzlog::WholeFile file = read_whole_file(path);
  EXPECT_EQ(file.state, State::kRead);
  EXPECT_EQ(file.bytes, "bytes");
  EXPECT_EQ(other.wait(), 0);
}

TEST(WholeFile, WithoutMemory_Thrown) {
  const TempDir folder;
  const std::string path = folder.write("file", std::string(1000, 'x'));
  const AllocationFailure failure(1);
  EXPECT_THROW(read_whole_file(path), std::bad_alloc);
}

}  // namespace
}  // namespace qz_test
