#include "tools/ship/own_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::OnDisk;
using qzlog_tool::open_own_file;
using qzlog_tool::replace_own_file;

constexpr const char* kLink = "it is a link; name the file that it leads to";
constexpr const char* kNoFile = "it is no regular file";

class OwnFile : public ::testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.path(name); }
  void write(const std::string& name, const std::string& text) const { folder_.write(name, text); }
  std::string read(const std::string& name) const { return folder_.read(name); }
  std::string fault_of_opening(const std::string& name) const {
    try {
      open_own_file(path(name), O_RDWR, 0640);
    } catch (const qzlog_tool::CommandError& error) {
      return error.what();
    }
    return "";
  }

  qz_test::TempDir folder_;
};

/// Files may not grow beyond so many bytes while it lives.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t bytes) : handler_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    ::signal(SIGXFSZ, handler_);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;

 private:
  void (*handler_)(int);
  rlimit before_ = {};
};

TEST_F(OwnFile, NotWritten_StaysAsItWasAndLeavesNothing) {
  write("state", "before");
  {
    const SizeLimit limit(3);
    EXPECT_EQ(replace_own_file(path("state"), "afterwards", 0640, OnDisk::kBeforeItIsSeen), std::strerror(EFBIG));
  }
  EXPECT_EQ(read("state"), "before");
  EXPECT_FALSE(std::filesystem::exists(path("state.new")));
}

TEST_F(OwnFile, Replaced_HasTheContentAndThePermissionsAndLeavesNothing) {
  for (const OnDisk on_disk : {OnDisk::kBeforeItIsSeen, OnDisk::kWhenever}) {
    write("f", "former");
    EXPECT_EQ(replace_own_file(path("f"), "content", 0600, on_disk), "");
    EXPECT_EQ(read("f"), "content");
    struct stat status = {};
    EXPECT_EQ(::stat(path("f").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_FALSE(std::filesystem::exists(path("f.new")));
  }
}

TEST_F(OwnFile, LinkInPlaceOfTheNewFile_IsNotWrittenThrough) {
  write("others", "what others have");
  std::filesystem::create_symlink(path("others"), path("f.new"));
  EXPECT_EQ(replace_own_file(path("f"), "content", 0600, OnDisk::kWhenever), "");
  EXPECT_EQ(read("others"), "what others have");
  EXPECT_EQ(read("f"), "content");
}

TEST_F(OwnFile, LinkOrPipe_IsNotReplaced) {
  write("others", "what others have");
  std::filesystem::create_symlink(path("others"), path("link"));
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(replace_own_file(path("link"), "content", 0600, OnDisk::kWhenever), kLink);
  EXPECT_EQ(replace_own_file(path("pipe"), "content", 0600, OnDisk::kWhenever), kNoFile);
  EXPECT_EQ(replace_own_file(folder_.path(), "content", 0600, OnDisk::kWhenever), kNoFile);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_TRUE(std::filesystem::is_fifo(path("pipe")));
  EXPECT_EQ(read("others"), "what others have");
}

TEST_F(OwnFile, FolderThatIsNotThere_IsToldWithTheSystemsReason) {
  EXPECT_EQ(replace_own_file(path("none/f"), "content", 0600, OnDisk::kWhenever), "No such file or directory");
}

TEST_F(OwnFile, Opened_IsAFileAndNoLinkOrPipe) {
  EXPECT_EQ(fault_of_opening("f"), "");
  EXPECT_TRUE(std::filesystem::is_regular_file(path("f")));
  std::filesystem::create_symlink(path("not-there"), path("link"));
  EXPECT_EQ(fault_of_opening("link"), "cannot write '" + path("link") + "': " + kLink);
  EXPECT_FALSE(std::filesystem::exists(path("not-there")));
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(fault_of_opening("pipe"), "cannot write '" + path("pipe") + "': " + kNoFile);
  EXPECT_EQ(fault_of_opening("none/f"), "cannot write '" + path("none/f") + "': No such file or directory");
}

}  // namespace
