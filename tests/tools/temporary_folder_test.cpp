#include "tools/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/scoped_variable.h"
#include "tests/tools/temporary_folder.h"
#include "tools/command_error.h"
#include "tools/output_file.h"

namespace {

using qzlog_test::ScopedVariable;

TEST(TemporaryFolder, Lifetime_FolderIsThereThenGoneWithItsFiles) {
  const qzlog_test::TemporaryFolder parent;
  const ScopedVariable variable("TMPDIR", parent.path().string());
  std::string path;
  {
    const qzlog_tool::TemporaryFolder folder;
    path = folder.path();
    EXPECT_EQ(std::filesystem::path(path).parent_path(), parent.path());
    qzlog_tool::write_file(path + "/file", "x");
    struct stat status = {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TemporaryFolder, NoPlace_Throws) {
  const ScopedVariable variable("TMPDIR", "/nowhere/at/all");
  try {
    const qzlog_tool::TemporaryFolder folder;
    FAIL() << folder.path();
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot make a temporary folder in '/nowhere/at/all': No such file or directory");
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

}  // namespace
