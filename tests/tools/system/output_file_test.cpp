#include "tools/system/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/memory_file.h"

namespace qzlog_tool {
using qz_test::read_file;

namespace {

namespace fs = std::filesystem;

class WriteFile : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return folder_.path(name); }

  std::size_t files() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }

 private:
  qz_test::TempDir folder_;
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
  EXPECT_EQ(read_file(path("f")), std::string("a\0b", 3));
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
  EXPECT_EQ(read_file(path("f")), "efgh");
  EXPECT_EQ(fs::status(path("f")).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(WriteFile, SymbolicLink_StaysALink) {
  write_file(path("target"), "old");
  fs::create_symlink("target", path("link"));
  write_file(path("link"), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(read_file(path("target")), "new");
}

TEST_F(WriteFile, SetUserAndGroupId_AreDropped) {
  write_file(path("f"), "old");
  ASSERT_EQ(::chmod(path("f").c_str(), 07751), 0);
  write_file(path("f"), "new");
  EXPECT_EQ(fs::status(path("f")).permissions(), static_cast<fs::perms>(0751));
}

TEST_F(WriteFile, NewFile_HasThePermissionsThatTheUserGivesNewFiles) {
  const mode_t before = ::umask(027);
  write_file(path("f"), "x");
  ::umask(before);
  EXPECT_EQ(fs::status(path("f")).permissions(), static_cast<fs::perms>(0640));
}

// Where process IDs begin anew, as in containers, such a name is that of a process that was killed.
TEST_F(WriteFile, FileLeftBehindByAProcessWithThisId_DoesNotMatter) {
  const std::string leftover = path("f") + ".tmp" + std::to_string(::getpid());
  std::ofstream(leftover) << "half";
  write_file(path("f"), "whole");
  EXPECT_EQ(read_file(path("f")), "whole");
  EXPECT_EQ(read_file(leftover), "half");
}

TEST_F(WriteFile, NameAsLongAsANameMayBe_IsWritten) {
  const std::string file = path(std::string(NAME_MAX, 'n').c_str());
  write_file(file, "x");
  write_file(file, "y");
  EXPECT_EQ(read_file(file), "y");
  EXPECT_EQ(files(), 1U);
}

TEST_F(WriteFile, LinkToAFileThatDoesNotExist_IsFollowed) {
  fs::create_directory(path("inside"));
  fs::create_symlink("inside/next", path("link"));
  fs::create_symlink("../target", path("inside/next"));
  write_file(path("link"), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_TRUE(fs::is_symlink(path("inside/next")));
  EXPECT_EQ(read_file(path("target")), "new");
}

TEST_F(WriteFile, LinksThatLeadInACircle_AreRefused) {
  fs::create_symlink("b", path("a"));
  fs::create_symlink("a", path("b"));
  EXPECT_EQ(error_of(path("a")), "cannot write '" + path("a") + "': Too many levels of symbolic links");
  EXPECT_TRUE(fs::is_symlink(path("a")));
  EXPECT_EQ(files(), 2U);
}

TEST_F(WriteFile, NameOfADescriptor_IsWrittenWhereTheDescriptorStands) {
  const FileDescriptor file(::open(path("f").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  ASSERT_GT(file.get(), 2);
  ASSERT_EQ(write_all(file.get(), "before,", 7), 0);
  const std::string name = "/dev/fd/" + std::to_string(file.get());
  write_file(name, "named,");
  fs::create_symlink(name, path("link"));
  write_file(path("link"), "linked,");
  ASSERT_EQ(write_all(file.get(), "after", 5), 0);
  EXPECT_EQ(read_file(path("f")), "before,named,linked,after");
}

/// What stands for an open file of the thread's in a folder that is not the one in which descriptors are looked for.
std::string name_for_others(int descriptor) {
  return "/proc/" + std::to_string(::getpid()) + "/task/" + std::to_string(::gettid()) + "/fd/" +
         std::to_string(descriptor);
}

TEST_F(WriteFile, OpenFileThatNoNameLeadsTo_IsWrittenAsItIs) {
  const FileDescriptor removed(::open(path("f").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_GT(removed.get(), 2);
  ASSERT_EQ(write_all(removed.get(), "a longer text", 13), 0);
  ASSERT_EQ(::unlink(path("f").c_str()), 0);
  write_file(name_for_others(removed.get()), "new");
  EXPECT_EQ(read_file(name_for_others(removed.get())), "new");
  const MemoryFile memory("old");
  write_file(name_for_others(memory.descriptor()), "in memory");
  EXPECT_EQ(memory.content(), "in memory");
  EXPECT_EQ(files(), 0U);
}

TEST_F(WriteFile, FileInThePlaceOfOneThatWasRemoved_IsLeftAlone) {
  const FileDescriptor removed(::open(path("f").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_GT(removed.get(), 2);
  ASSERT_EQ(::unlink(path("f").c_str()), 0);
  std::ofstream(path("f (deleted)")) << "precious";
  write_file(name_for_others(removed.get()), "new");
  EXPECT_EQ(read_file(name_for_others(removed.get())), "new");
  EXPECT_EQ(read_file(path("f (deleted)")), "precious");
}

TEST_F(WriteFile, FullDisk_LeavesTheFileAsItWasAndNothingBeside) {
  write_file(path("f"), "old");
  const qz_test::ResourceLimit limit(RLIMIT_FSIZE, 0);
  EXPECT_EQ(error_of(path("f")), "cannot write '" + path("f") + "': File too large");
  EXPECT_EQ(read_file(path("f")), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(WriteFile, OneOfSeveralFails_AllAreAsTheyWere) {
  write_file(path("a"), "old");
  const std::string missing = path("no/such/file");
  const OutputFile outputs[] = {{path("a"), "new"}, {path("b"), "new"}, {missing, "new"}};
  EXPECT_THROW(write_files(outputs), CommandError);
  EXPECT_EQ(read_file(path("a")), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(WriteFile, Several_AreAllWritten) {
  const OutputFile outputs[] = {{path("a"), "1"}, {"/dev/null", "2"}, {path("b"), "3"}};
  write_files(outputs);
  EXPECT_EQ(read_file(path("a")), "1");
  EXPECT_EQ(read_file(path("b")), "3");
  EXPECT_EQ(files(), 2U);
}

TEST_F(WriteFile, NoDescriptorLeft_LeavesTheFileAsItWas) {
  write_file(path("f"), "old");
  {
    const qz_test::ResourceLimit limit(RLIMIT_NOFILE, 3);
    EXPECT_EQ(error_of(path("f")), "cannot write '" + path("f") + "': Too many open files");
  }
  EXPECT_EQ(read_file(path("f")), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(WriteFile, FullDevice_IsAnError) {
  EXPECT_EQ(error_of("/dev/full"), "cannot write '/dev/full': No space left on device");
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

TEST_F(WriteFile, TwoNamesOfOneFile_AreOneAlsoBeforeItExists) {
  fs::create_symlink("target", path("link"));
  EXPECT_TRUE(same_file(path("link"), path("target")));
  EXPECT_TRUE(same_file(path("./target"), path("target")));
  EXPECT_FALSE(same_file(path("other"), path("target")));
  EXPECT_FALSE(same_file("-", path("target")));
}

}  // namespace
}  // namespace qzlog_tool
