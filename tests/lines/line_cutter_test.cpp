#include "lines/line_cutter.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"

namespace {

using qzlog::LineCutter;

using Lines = std::vector<std::string>;

class TextSource : public qz_LOG_ByteSource {
 public:
  explicit TextSource(std::string_view bytes) : bytes_(bytes) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t count = bytes_.copy(buffer, size);
    bytes_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view bytes_;  // still to be read
};

// One text per line: its number, a colon and the line, or "too long".
Lines read_all(LineCutter reader) {
  Lines lines;
  LineCutter::Line line;
  for (;;) {
    while (reader.next(line)) {
      lines.push_back(std::to_string(line.number) + ":" + (line.too_long ? "too long" : std::string(line.text)));
    }
    if (reader.at_end()) return lines;
    reader.fill();
  }
}

/// Of a stream, and of the same bytes in a block of their own.
Lines lines_of(std::string_view content, std::size_t maximum_line_bytes = LineCutter::kMaximumLineBytes) {
  TextSource source(content);
  Lines lines = read_all(LineCutter(source, maximum_line_bytes));
  const std::vector<char> block(content.begin(), content.end());
  EXPECT_EQ(read_all(LineCutter(std::string_view(block.data(), block.size()), maximum_line_bytes)), lines);
  return lines;
}

/// Gives out one byte at a time.
class SlowSource : public qz_LOG_ByteSource {
 public:
  explicit SlowSource(std::string_view bytes) : bytes_(bytes) {}
  std::size_t Read(char* buffer, std::size_t) override { return bytes_.Read(buffer, 1); }

 private:
  TextSource bytes_;
};

TEST(LineCutter, EmptyInput_HasNoLine) { EXPECT_EQ(lines_of(""), Lines{}); }

TEST(LineCutter, LastLineWithoutLineFeed_IsALine) { EXPECT_EQ(lines_of("a\nbc"), (Lines{"1:a", "2:bc"})); }

TEST(LineCutter, LineFeedAtTheEnd_AddsNoLine) { EXPECT_EQ(lines_of("a\n"), Lines{"1:a"}); }

TEST(LineCutter, EmptyLines_AreCounted) { EXPECT_EQ(lines_of("\n\na\n"), (Lines{"1:", "2:", "3:a"})); }

TEST(LineCutter, CarriageReturn_StaysInTheLine) { EXPECT_EQ(lines_of("a\r\nb"), (Lines{"1:a\r", "2:b"})); }

TEST(LineCutter, ByteOrderMarkAtTheStart_IsSkipped) { EXPECT_EQ(lines_of("\xEF\xBB\xBF{}\n"), Lines{"1:{}"}); }

TEST(LineCutter, ByteOrderMarkAlone_HasNoLine) { EXPECT_EQ(lines_of("\xEF\xBB\xBF"), Lines{}); }

TEST(LineCutter, PartOfAByteOrderMark_IsALine) { EXPECT_EQ(lines_of("\xEF\xBB"), Lines{"1:\xEF\xBB"}); }

TEST(LineCutter, ByteOrderMarkInALaterLine_Stays) {
  EXPECT_EQ(lines_of("a\n\xEF\xBB\xBF"), (Lines{"1:a", "2:\xEF\xBB\xBF"}));
}

TEST(LineCutter, LineOfTheMaximum_IsRead) { EXPECT_EQ(lines_of("1234\nb\n", 4), (Lines{"1:1234", "2:b"})); }

TEST(LineCutter, LastLineOfTheMaximumWithoutLineFeed_IsRead) { EXPECT_EQ(lines_of("1234", 4), Lines{"1:1234"}); }

TEST(LineCutter, LineOverTheMaximum_IsReportedAndSkipped) {
  EXPECT_EQ(lines_of("12345\nb\n", 4), (Lines{"1:too long", "2:b"}));
}

TEST(LineCutter, LineFarOverTheMaximum_IsReportedOnce) {
  EXPECT_EQ(lines_of("a\n" + std::string(1000, 'x') + "\nb", 4), (Lines{"1:a", "2:too long", "3:b"}));
}

TEST(LineCutter, LastLineOverTheMaximumWithoutLineFeed_IsReported) {
  EXPECT_EQ(lines_of("a\n" + std::string(1000, 'x'), 4), (Lines{"1:a", "2:too long"}));
}

TEST(LineCutter, LineLongerThanTheFirstBuffer_IsReadWhole) {
  const std::string line(3'000'000, 'x');
  EXPECT_EQ(lines_of("a\n" + line + "\nb"), (Lines{"1:a", "2:" + line, "3:b"}));
}

TEST(LineCutter, ByteOrderMarkInPieces_IsSkipped) {
  SlowSource source(
      "\xEF\xBB\xBF"
      "a\nb");
  EXPECT_EQ(read_all(LineCutter(source)), (Lines{"1:a", "2:b"}));
}

TEST(LineCutter, Offsets_AreThoseOfTheFile) {
  const std::string content =
      "\xEF\xBB\xBF"
      "a\n" +
      std::string(1000, 'x') + "\n\nbc";
  SlowSource source(content);
  LineCutter cutter(source, 10);
  LineCutter::Line line;
  std::vector<std::uint64_t> offsets;
  std::vector<bool> ends;
  while (!cutter.at_end()) {
    cutter.fill();
    while (cutter.next(line)) {
      offsets.push_back(line.offset);
      ends.push_back(line.has_end);
    }
  }
  EXPECT_EQ(offsets, (std::vector<std::uint64_t>{3, 5, 1006, 1007}));
  EXPECT_EQ(ends, (std::vector<bool>{true, true, true, false}));
}

TEST(LineCutter, SourceThatFails_LosesNothing) {
  class FailingSource : public SlowSource {
   public:
    using SlowSource::SlowSource;
    std::size_t Read(char* buffer, std::size_t size) override {
      if (++calls_ % 2 == 0) throw 7;
      return SlowSource::Read(buffer, size);
    }

   private:
    int calls_ = 0;
  } source("one\ntwo\n");
  LineCutter cutter(source);
  LineCutter::Line line;
  Lines lines;
  int failures = 0;
  while (!cutter.at_end()) {
    try {
      cutter.fill();
    } catch (int) {
      ++failures;
    }
    while (cutter.next(line)) lines.emplace_back(line.text);
  }
  EXPECT_EQ(lines, (Lines{"one", "two"}));
  EXPECT_GT(failures, 5);
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

TEST(LineCutter, RandomContent_EqualsThePlainAlgorithm) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 300; ++round) {
    std::string content;
    const std::size_t size = random.below(200);
    const auto line_feeds = 2 + random.below(30);
    while (content.size() < size) content.push_back(random.below(line_feeds) == 0 ? '\n' : 'x');
    const std::size_t maximum = 1 + random.below(40);
    ASSERT_EQ(lines_of(content, maximum), simple_lines(content, maximum)) << content << " maximum " << maximum;
    SlowSource slow(content);
    ASSERT_EQ(read_all(LineCutter(slow, maximum)), simple_lines(content, maximum)) << content << " maximum " << maximum;
  }
}

}  // namespace
