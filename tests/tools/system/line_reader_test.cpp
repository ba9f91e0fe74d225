#include "tools/system/line_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace {

using qz_test::TempDir;
using qzlog_tool::CommandError;
using qzlog_tool::FileDescriptor;
using qzlog_tool::LineReader;

// One text per line: its number, a colon and the line, or "too long".
std::vector<std::string> read_all(int descriptor, std::size_t maximum_line_bytes) {
  LineReader reader(descriptor, "input", maximum_line_bytes);
  std::vector<std::string> lines;
  LineReader::Line line;
  for (;;) {
    while (reader.next(line)) {
      lines.push_back(std::to_string(line.number) + ":" + (line.too_long ? "too long" : std::string(line.text)));
    }
    if (reader.at_end()) return lines;
    reader.fill();
  }
}

std::vector<std::string> lines_of(std::string_view content,
                                  std::size_t maximum_line_bytes = LineReader::kMaximumLineBytes) {
  const TempDir folder;
  const FileDescriptor file = qzlog_tool::open_input(folder.write("input", content));
  return read_all(file.get(), maximum_line_bytes);
}

using Lines = std::vector<std::string>;

TEST(LineReader, EmptyInput_HasNoLine) { EXPECT_EQ(lines_of(""), Lines{}); }

TEST(LineReader, LastLineWithoutLineFeed_IsALine) { EXPECT_EQ(lines_of("a\nbc"), (Lines{"1:a", "2:bc"})); }

TEST(LineReader, LineFeedAtTheEnd_AddsNoLine) { EXPECT_EQ(lines_of("a\n"), Lines{"1:a"}); }

TEST(LineReader, EmptyLines_AreCounted) { EXPECT_EQ(lines_of("\n\na\n"), (Lines{"1:", "2:", "3:a"})); }

TEST(LineReader, CarriageReturn_StaysInTheLine) { EXPECT_EQ(lines_of("a\r\nb"), (Lines{"1:a\r", "2:b"})); }

TEST(LineReader, ByteOrderMarkAtTheStart_IsSkipped) { EXPECT_EQ(lines_of("\xEF\xBB\xBF{}\n"), Lines{"1:{}"}); }

TEST(LineReader, ByteOrderMarkAlone_HasNoLine) { EXPECT_EQ(lines_of("\xEF\xBB\xBF"), Lines{}); }

TEST(LineReader, PartOfAByteOrderMark_IsALine) { EXPECT_EQ(lines_of("\xEF\xBB"), Lines{"1:\xEF\xBB"}); }

TEST(LineReader, ByteOrderMarkInALaterLine_Stays) {
  EXPECT_EQ(lines_of("a\n\xEF\xBB\xBF"), (Lines{"1:a", "2:\xEF\xBB\xBF"}));
}

TEST(LineReader, LineOfTheMaximum_IsRead) { EXPECT_EQ(lines_of("1234\nb\n", 4), (Lines{"1:1234", "2:b"})); }

TEST(LineReader, LastLineOfTheMaximumWithoutLineFeed_IsRead) { EXPECT_EQ(lines_of("1234", 4), Lines{"1:1234"}); }

TEST(LineReader, LineOverTheMaximum_IsReportedAndSkipped) {
  EXPECT_EQ(lines_of("12345\nb\n", 4), (Lines{"1:too long", "2:b"}));
}

TEST(LineReader, LineFarOverTheMaximum_IsReportedOnce) {
  EXPECT_EQ(lines_of("a\n" + std::string(1000, 'x') + "\nb", 4), (Lines{"1:a", "2:too long", "3:b"}));
}

TEST(LineReader, LastLineOverTheMaximumWithoutLineFeed_IsReported) {
  EXPECT_EQ(lines_of("a\n" + std::string(1000, 'x'), 4), (Lines{"1:a", "2:too long"}));
}

TEST(LineReader, LineLongerThanTheFirstBuffer_IsReadWhole) {
  const std::string line(3'000'000, 'x');
  EXPECT_EQ(lines_of("a\n" + line + "\nb"), (Lines{"1:a", "2:" + line, "3:b"}));
}

TEST(LineReader, BehindALine_PaddingCanBeRead) {
  const TempDir folder;
  const FileDescriptor file = qzlog_tool::open_input(folder.write("input", "1234"));
  LineReader reader(file.get(), "input", 4);
  LineReader::Line line;
  while (!reader.next(line)) reader.fill();
  int sum = 0;
  for (std::size_t at = 0; at < LineReader::kPaddingBytes; ++at) sum += line.text.data()[line.text.size() + at];
  EXPECT_EQ(sum, 0);
}

TEST(LineReader, ByteOrderMarkInPieces_IsSkipped) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const FileDescriptor reading(ends[0]);
  // Each byte is written when the one before it was taken out of the pipe, so every read gets one byte.
  std::thread writer([descriptor = ends[1]] {
    const FileDescriptor writing(descriptor);
    for (const char byte : std::string("\xEF\xBB\xBF"
                                       "a\n"))
      qzlog_tool::write_all(writing.get(), &byte, 1);
  });
  EXPECT_EQ(read_all(reading.get(), LineReader::kMaximumLineBytes), Lines{"1:a"});
  writer.join();
}

TEST(LineReader, Folder_ThrowsWithFileAndReason) {
  const TempDir folder;
  const FileDescriptor file = qzlog_tool::open_input(folder.path());
  LineReader reader(file.get(), "some folder");
  try {
    reader.fill();
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot read 'some folder': Is a directory");
    EXPECT_EQ(error.exit_status(), 2);
  }
}

TEST(OpenInput, MissingFile_ThrowsWithFileAndReason) {
  try {
    qzlog_tool::open_input("/nonexistent/x");
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot open '/nonexistent/x': No such file or directory");
    EXPECT_EQ(error.exit_status(), 2);
  }
}

// The plain algorithm: everything in memory, cut at line feeds.
Lines simple_lines(const std::string& content, std::size_t maximum) {
  Lines lines;
  for (std::size_t begin = 0; begin < content.size();) {
    const std::size_t end = std::min(content.find('\n', begin), content.size());
    const std::string line = content.substr(begin, end - begin);
    lines.push_back(std::to_string(lines.size() + 1) + ":" + (line.size() > maximum ? "too long" : line));
    begin = end + 1;
  }
  return lines;
}

TEST(LineReader, RandomContent_EqualsThePlainAlgorithm) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 300; ++round) {
    std::string content;
    const std::size_t size = random.below(200);
    const auto line_feeds = 2 + random.below(30);
    while (content.size() < size) content.push_back(random.below(line_feeds) == 0 ? '\n' : 'x');
    const std::size_t maximum = 1 + random.below(40);
    ASSERT_EQ(lines_of(content, maximum), simple_lines(content, maximum)) << content << " maximum " << maximum;
  }
}

}  // namespace
