#include "sinks/descriptor_lines.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <thread>

#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;
using qzlog::check_descriptor;
using qzlog::DescriptorLines;
using qzlog::StreamKind;

TEST(CheckDescriptor, EachKind_IsToldApart) {
  const TempDir folder;
  const Pipe pipe;
  EXPECT_EQ(check_descriptor(pipe.writer()), StreamKind::kPipe);
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
  EXPECT_EQ(check_descriptor(ends[0]), StreamKind::kSocket);
  const int device = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(check_descriptor(device), StreamKind::kFile);
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_EQ(check_descriptor(terminal), StreamKind::kTerminal);
  const int file = ::open(folder.path("a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  EXPECT_EQ(check_descriptor(file), StreamKind::kFile);
  for (const int each : {ends[0], ends[1], device, terminal, file}) ::close(each);
  const int path = ::open(folder.path().c_str(), O_PATH | O_CLOEXEC);
  EXPECT_EQ(thrown_by([&] { check_descriptor(path); }),
            thrown<QZX_logging_illegal_argument>("descriptor: " + std::to_string(path) + " is not open for writing"));
  ::close(path);
}

/// A blocking pipe takes 4096 bytes at a time, so that a longer line is left off where its reader stops.
TEST(DescriptorLinesTake, LineThatWasLeftOff_IsClosedByALineBreakBeforeTheNext) {
  for (const int flags : {0, O_NONBLOCK}) {
    const Pipe pipe(flags);
    pipe.shrink();
    DescriptorLines lines(pipe.writer(), 0);
    const std::string longer = std::string(5000, 'a') + '\n';
    EXPECT_FALSE(lines.take(longer, 3));
    EXPECT_FALSE(lines.flush(0));
    EXPECT_EQ(pipe.read_all(), longer.substr(0, 4096));
    pipe.shrink(4);
    EXPECT_TRUE(lines.take("next\n", 3));
    EXPECT_TRUE(lines.take("last\n", 3));
    EXPECT_EQ(pipe.read_all(), "\nnext\nlast\n");
  }
}

TEST(DescriptorLinesFlush, LineThatWasLeftOff_IsClosed) {
  const Pipe pipe(O_NONBLOCK);
  pipe.shrink();
  DescriptorLines lines(pipe.writer(), 0);
  EXPECT_FALSE(lines.take(std::string(5000, 'a') + '\n', 3));
  pipe.read_all();
  EXPECT_TRUE(lines.flush(0));
  EXPECT_EQ(pipe.read_all(), "\n");
  EXPECT_TRUE(lines.flush(0));
  EXPECT_EQ(lines.close(0), 0U);
  EXPECT_FALSE(lines.take("next\n", 3));
  EXPECT_EQ(pipe.read_all(), "");
}

TEST(DescriptorLinesTake, ReaderWhoReadsInTime_GetsTheLineWhole) {
  const Pipe pipe;
  pipe.shrink();
  DescriptorLines lines(pipe.writer(), 30000);
  const std::string longer = std::string(100'000, 'a') + '\n';
  std::string text;
  std::thread reader([&] {
    char part[1000];
    while (text.size() < longer.size()) {
      const ssize_t count = ::read(pipe.reader(), part, sizeof(part));
      if (count <= 0) break;
      text.append(part, static_cast<std::size_t>(count));
    }
  });
  EXPECT_TRUE(lines.take(longer, 3));
  reader.join();
  EXPECT_EQ(text, longer);
}

TEST(DescriptorLinesTake, DatagramSocket_GetsOneForEachLine) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
  DescriptorLines lines(ends[0], 0);
  EXPECT_TRUE(lines.take("one\n", 3));
  EXPECT_TRUE(lines.take("two\n", 3));
  char part[100];
  EXPECT_EQ(::read(ends[1], part, sizeof(part)), 4);
  EXPECT_EQ(::read(ends[1], part, sizeof(part)), 4);
  for (const int each : ends) ::close(each);
}

}  // namespace
