#include "tools/system/buffered_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "tests/support/signal_action.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace {

using qz_test::TempDir;
using qzlog_tool::BufferedOutput;
using qzlog_tool::CommandError;
using qzlog_tool::FileDescriptor;

class BufferedOutputTest : public ::testing::Test {
 protected:
  BufferedOutputTest() : file_(::open(folder_.path("out").c_str(), O_WRONLY | O_CREAT, 0600)) {}

  std::string written() const { return folder_.read("out"); }

  TempDir folder_;
  FileDescriptor file_;
};

TEST_F(BufferedOutputTest, WriteLine_ReachesTheFileWithFlush) {
  BufferedOutput output(file_.get(), "output");
  output.write_line("one");
  output.write_line("");
  EXPECT_EQ(written(), "");
  output.flush();
  EXPECT_EQ(written(), "one\n\n");
}

TEST_F(BufferedOutputTest, LineBreaksInside_AreWrittenAsTwoCharacters) {
  BufferedOutput output(file_.get(), "output");
  for (const char* const line : {"\n", "a\nb", "a\r\n", "\r\rb\\n"}) output.write_line(line);
  output.flush();
  EXPECT_EQ(written(), "\\n\na\\nb\na\\r\\n\n\\r\\rb\\n\n");
}

TEST_F(BufferedOutputTest, ManyLines_AreWrittenBeforeFlush) {
  BufferedOutput output(file_.get(), "output");
  const std::string line(1000, 'x');
  for (int count = 0; count < 100; ++count) output.write_line(line);
  EXPECT_GE(written().size(), 64u * 1024);
  output.flush();
  EXPECT_EQ(written().size(), 100u * 1001);
}

TEST(BufferedOutput, FullDevice_FlushThrowsWithNameAndReason) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY));
  BufferedOutput output(full.get(), "standard output");
  output.write_line("one");
  try {
    output.flush();
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot write to standard output: No space left on device");
    EXPECT_EQ(error.exit_status(), 2);
  }
}

TEST(BufferedOutput, PipeWithoutReader_FlushThrowsWithoutText) {
  const qz_test::SignalAction no_signal(SIGPIPE, SIG_IGN);
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ::close(ends[0]);
  const FileDescriptor writing(ends[1]);
  BufferedOutput output(writing.get(), "standard output");
  output.write_line("one");
  try {
    output.flush();
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "");
    EXPECT_EQ(error.exit_status(), 1);
  }
}

}  // namespace
