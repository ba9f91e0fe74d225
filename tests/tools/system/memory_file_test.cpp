#include "tools/system/memory_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <string>

#include "tests/support/resource_limit.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::read_file;
using qz_test::ResourceLimit;
using qzlog_tool::CommandError;
using qzlog_tool::MemoryFile;

TEST(MemoryFileTest, Bytes_AreReadThroughTheName) {
  const std::string bytes("a\0b\n", 4);
  const MemoryFile file(bytes);
  EXPECT_EQ(read_file(file.path()), bytes);
  EXPECT_EQ(file.content(), bytes);
}

TEST(MemoryFileTest, WhatIsWrittenThroughTheName_IsTheContent) {
  const MemoryFile file("something longer than what is written");
  std::ofstream(file.path()) << "written";
  EXPECT_EQ(file.content(), "written");
}

TEST(MemoryFileTest, Beginning_IsReplacedAndTheRestStays) {
  MemoryFile file("abcdef");
  file.overwrite_beginning("XY");
  EXPECT_EQ(file.content(), "XYcdef");
}

TEST(MemoryFileTest, TwoFiles_HaveTwoNames) {
  const MemoryFile one("1");
  const MemoryFile other("2");
  EXPECT_NE(one.path(), other.path());
  EXPECT_EQ(read_file(one.path()), "1");
}

std::string failure_of(std::string_view bytes) {
  try {
    const MemoryFile file(bytes);
    return "none";
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
    return error.what();
  }
}

TEST(MemoryFileTest, TooLarge_ThrowsWithReason) {
  const ResourceLimit limit(RLIMIT_FSIZE, 100);
  EXPECT_EQ(failure_of(std::string(101, 'x')), "cannot write a file in memory: File too large");
}

TEST(MemoryFileTest, NoDescriptorLeft_ThrowsWithReason) {
  const ResourceLimit limit(RLIMIT_NOFILE, 3);
  EXPECT_EQ(failure_of("x"), "cannot make a file in memory: Too many open files");
}

}  // namespace
