#include "tools/temporary_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/scoped_variable.h"
#include "tests/tools/temporary_folder.h"
#include "tools/command_error.h"

namespace {

using qzlog_test::ScopedVariable;
using qzlog_test::TemporaryFolder;
using qzlog_tool::CommandError;
using qzlog_tool::TemporaryFile;

class TemporaryFileTest : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  ScopedVariable variable_{"TMPDIR", folder_.path().string()};
};

TEST_F(TemporaryFileTest, Lifetime_FileHoldsTheBytesThenIsGone) {
  const std::string bytes("a\0b\n", 4);
  std::string path;
  {
    const TemporaryFile file(bytes);
    path = file.path();
    EXPECT_EQ(std::filesystem::path(path).parent_path(), folder_.path());
    EXPECT_EQ(TemporaryFolder::read_path(path), bytes);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryFileTest, Mode_IsForThisUserOnly) {
  const TemporaryFile file("x");
  struct stat status = {};
  ASSERT_EQ(::stat(file.path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(TemporaryFileTest, MissingFolder_ThrowsWithReason) {
  const ScopedVariable variable("TMPDIR", "/nonexistent");
  try {
    const TemporaryFile file("x");
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_EQ(std::string(error.what()), "cannot make a temporary file in '/nonexistent': No such file or directory");
    EXPECT_EQ(error.exit_status(), 2);
  }
}

}  // namespace
