#include "tools/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/tools/temporary_folder.h"
#include "tools/command_error.h"

namespace qzlog_tool {
namespace {

namespace fs = std::filesystem;

class WriteFile : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return (folder_.path() / name).string(); }

  static std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  std::size_t files() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }

 private:
  qzlog_test::TemporaryFolder folder_;
};

std::string error_of(const std::string& path) {
  try {
    write_file(path, "x");
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), kExitCannotRun);
    return error.what();
  }
  return "no error";
}

TEST_F(WriteFile, NewFile_HoldsTheContentAndNothingIsLeftBeside) {
  write_file(path("f"), std::string_view("a\0b", 3));
  EXPECT_EQ(content(path("f")), std::string("a\0b", 3));
  EXPECT_EQ(files(), 1U);
}

TEST_F(WriteFile, FileThatHoldsTheContent_IsNotRewritten) {
  write_file(path("f"), "same");
  struct stat before = {};
  ASSERT_EQ(::stat(path("f").c_str(), &before), 0);
  write_file(path("f"), "same");
  struct stat after = {};
  ASSERT_EQ(::stat(path("f").c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(WriteFile, OtherContentOfOneSize_IsReplacedAndKeepsItsPermissions) {
  write_file(path("f"), "abcd");
  ASSERT_EQ(::chmod(path("f").c_str(), 0640), 0);
  write_file(path("f"), "efgh");
  EXPECT_EQ(content(path("f")), "efgh");
  EXPECT_EQ(fs::status(path("f")).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(WriteFile, SymbolicLink_StaysALink) {
  write_file(path("target"), "old");
  fs::create_symlink("target", path("link"));
  write_file(path("link"), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(content(path("target")), "new");
}

TEST_F(WriteFile, Device_IsWrittenInPlace) {
  write_file("/dev/null", "gone");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(WriteFile, PathsThatCannotBeWritten_AreNamed) {
  const std::string missing = path("no/such/file");
  EXPECT_EQ(error_of(missing), "cannot write '" + missing + "': No such file or directory");
  const std::string folder = path(".");
  EXPECT_EQ(error_of(folder), "cannot write '" + folder + "': Is a directory");
}

}  // namespace
}  // namespace qzlog_tool
