#include "tools/system/file_replacement.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/resource_limit.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::TempDir;
using qzlog_tool::CommandError;
using qzlog_tool::FileReplacement;

class FileReplacementTest : public ::testing::Test {
 protected:
  FileReplacement replacement(const std::string& content) const { return {target_, "shown", std::nullopt, content}; }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  TempDir folder_;
  const std::string target_ = folder_.write("target", "old");
};

TEST_F(FileReplacementTest, BeforeItTakesEffect_StandsBesideTheFile) {
  const FileReplacement made = replacement("new");
  EXPECT_EQ(folder_.read("target"), "old");
  EXPECT_EQ(names().size(), 2u);
}

TEST_F(FileReplacementTest, WithoutEffect_LeavesNothing) {
  { const FileReplacement made = replacement("new"); }
  EXPECT_EQ(folder_.read("target"), "old");
  EXPECT_EQ(names(), std::vector<std::string>{"target"});
}

TEST_F(FileReplacementTest, TakingEffect_IsTheFile) {
  replacement("new").take_effect();
  EXPECT_EQ(folder_.read("target"), "new");
  EXPECT_EQ(names(), std::vector<std::string>{"target"});
}

TEST_F(FileReplacementTest, TwoForOneFile_HaveTwoNames) {
  FileReplacement one = replacement("1");
  FileReplacement other = replacement("2");
  EXPECT_EQ(names().size(), 3u);
  one.take_effect();
  other.take_effect();
  EXPECT_EQ(folder_.read("target"), "2");
}

// Nobody may read it before it has the permissions of the file.
TEST_F(FileReplacementTest, Permissions_AreNeverWiderThanTheFiles) {
  const FileReplacement made(target_, "shown", 04600, "secret");
  for (const std::string& name : names()) {
    struct stat status = {};
    ASSERT_EQ(::stat(folder_.path(name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, name == "target" ? status.st_mode & 07777 : 0600u) << name;
  }
}

TEST_F(FileReplacementTest, FullDisk_ThrowsAndLeavesNothing) {
  const qz_test::ResourceLimit limit(RLIMIT_FSIZE, 1);
  try {
    replacement("new");
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot write 'shown': File too large");
  }
  EXPECT_EQ(names(), std::vector<std::string>{"target"});
}

TEST_F(FileReplacementTest, FolderInThePlaceOfTheFile_ThrowsAndLeavesNothing) {
  FileReplacement made = replacement("new");
  std::filesystem::remove(target_);
  std::filesystem::create_directory(target_);
  EXPECT_THROW(made.take_effect(), CommandError);
  EXPECT_TRUE(std::filesystem::is_directory(target_));
}

}  // namespace
