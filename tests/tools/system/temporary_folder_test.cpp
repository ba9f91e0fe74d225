#include "tools/system/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::SetEnv;

TEST(TemporaryFolder, Lifetime_FolderIsThereThenGoneWithItsFiles) {
  const qz_test::TempDir parent;
  const SetEnv variable("TMPDIR", parent.path());
  std::string path;
  {
    const qzlog_tool::TemporaryFolder folder;
    path = folder.path();
    EXPECT_EQ(std::filesystem::path(path).parent_path(), parent.path());
    EXPECT_EQ(folder.add_file("file", "x"), path + "/file");
    EXPECT_EQ(qz_test::read_file(path + "/file"), "x");
    struct stat status = {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TemporaryFolder, MoreFilesThanAreReadAtOnce_AllGone) {
  std::string path;
  {
    const qzlog_tool::TemporaryFolder folder;
    path = folder.path();
    for (int i = 0; i < 1000; ++i) folder.add_file("file" + std::to_string(i), "");
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TemporaryFolder, FullDisk_Throws) {
  const qzlog_tool::TemporaryFolder folder;
  const qz_test::ResourceLimit limit(RLIMIT_FSIZE, 2);
  try {
    folder.add_file("file", "xyz");
    FAIL() << "no exception";
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_EQ(error.what(), "cannot write '" + folder.path() + "/file': File too large");
  }
}

TEST(TemporaryFolder, NoPlace_Throws) {
  const SetEnv variable("TMPDIR", "/nowhere/at/all");
  try {
    const qzlog_tool::TemporaryFolder folder;
    FAIL() << folder.path();
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot make a temporary folder in '/nowhere/at/all': No such file or directory");
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

}  // namespace
