#include "tools/syslog/syslog_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace qzlog_tool;

/// Gives so many bytes at a time.
class PiecesSource : public qz_LOG_ByteSource {
 public:
  PiecesSource(std::string bytes, std::size_t piece) : bytes_(std::move(bytes)), piece_(piece) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t count = std::min({size, piece_, bytes_.size() - at_});
    std::memcpy(buffer, bytes_.data() + at_, count);
    at_ += count;
    return count;
  }

 private:
  std::string bytes_;
  std::size_t piece_;
  std::size_t at_ = 0;
};

struct Result {
  std::string lines;
  std::string counts;
};

Result read_all(const std::string& bytes, std::size_t piece = 1U << 20, std::size_t asked = 4096) {
  PiecesSource messages(bytes, piece);
  SyslogSource source(messages);
  Result result;
  std::string buffer(asked, '\0');
  for (std::size_t count = 0; (count = source.Read(buffer.data(), buffer.size())) != 0;)
    result.lines.append(buffer, 0, count);
  EXPECT_EQ(source.Read(buffer.data(), buffer.size()), 0U);
  const SyslogCounts& counts = source.counts();
  result.counts = std::to_string(counts.entries) + '/' + std::to_string(counts.omitted) + '/' +
                  std::to_string(counts.broken) + '/' + std::to_string(counts.others);
  return result;
}

std::string message(const std::string& line) {
  return "<14>1 2026-11-21T08:15:30Z host shop 7 - [qzlog@1 entry=\"" + line + "\"] text";
}
std::string counted(const std::string& text) { return std::to_string(text.size()) + ' ' + text; }

TEST(SyslogSource, Lines_KeepTheirNumbers) {
  const std::string bytes = message("{1}") + "\nnot ours\n" + message("{2}") +
                            "\r\n\n<14>1 t h a p m [qzlog@1 omitted=\"1\"]\n" + message("{3}").substr(0, 60) + '\n' +
                            message("{4}");
  for (const std::size_t piece : {1U, 2U, 7U, 100000U}) {
    for (const std::size_t asked : {1U, 4096U}) {
      const Result result = read_all(bytes, piece, asked);
      EXPECT_EQ(result.lines, "{1}\n\n{2}\n\n\n\n{4}\n") << piece;
      EXPECT_EQ(result.counts, "3/1/1/2");
    }
  }
}

TEST(SyslogSource, CountedMessages_MayHoldLineFeeds) {
  const std::string bytes =
      counted(message("{1}") + "\nmore") + counted("<14>1 t h a p m - x") + counted(message("{2}"));
  for (const std::size_t piece : {1U, 2U, 7U, 100000U}) {
    const Result result = read_all(bytes, piece);
    EXPECT_EQ(result.lines, "{1}\n\n{2}\n") << piece;
    EXPECT_EQ(result.counts, "2/0/0/1");
  }
}

TEST(SyslogSource, FramingOfTheFirst_IsThatOfAll) {
  const std::string line = "99999 <14>1 t h a p m [qzlog@1 entry=\"{fake}\"]";
  EXPECT_EQ(read_all(message("{1}") + '\n' + line + '\n' + message("{2}") + '\n').lines, "{1}\n{fake}\n{2}\n");
  EXPECT_EQ(read_all("1 2026-11-21T08:15:30Z host shop 7 - [qzlog@1 entry=\"{1}\"]\n").lines, "{1}\n")
      << "no priority, no count";
}

TEST(SyslogSource, CountThatIsWrong_GoesOnWithTheNextLine) {
  const std::string first = counted(message("{1}"));
  EXPECT_EQ(read_all(first + "99999999999 <14>1 x\n" + counted(message("{2}"))).lines, "{1}\n\n{2}\n");
  EXPECT_EQ(read_all(first + "1000 " + message("{2}")).counts, "2/0/0/0")
      << "broken off, and whole as far as it matters";
  EXPECT_EQ(read_all(first + "1000 " + message("{2}").substr(0, 60)).counts, "1/0/1/0");
}

TEST(SyslogSource, EveryPrefix_EndsAndGivesNoOtherLine) {
  const std::string bytes = counted(message("{1}")) + counted(message("{2}"));
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    std::string lines = read_all(bytes.substr(0, size)).lines;
    lines.erase(std::unique(lines.begin(), lines.end(), [](char a, char b) { return a == '\n' && b == '\n'; }),
                lines.end());
    EXPECT_TRUE(std::string("{1}\n{2}\n").starts_with(lines) || lines == "\n") << size << lines;
  }
}

TEST(SyslogSource, LineThatIsTooLong_IsBrokenAndPassedOver) {
  const std::string bytes = std::string(SyslogSource::kLongestMessage + 100000, 'x') + '\n' + message("{1}") + '\n';
  const Result result = read_all(bytes);
  EXPECT_EQ(result.lines, "\n{1}\n");
  EXPECT_EQ(result.counts, "1/0/1/0");
}

TEST(SyslogSource, FailureOfTheFile_ReachesTheCaller_AndReadingMayGoOn) {
  class Failing : public qz_LOG_ByteSource {
   public:
    std::size_t Read(char* buffer, std::size_t) override {
      if (++calls_ == 2) throw std::runtime_error("no");
      const std::string text = calls_ == 1   ? message("{1}").substr(0, 50)
                               : calls_ == 3 ? message("{1}").substr(50) + '\n'
                                             : "";
      std::memcpy(buffer, text.data(), text.size());
      return text.size();
    }

   private:
    int calls_ = 0;
  } messages;
  SyslogSource source(messages);
  char buffer[100];
  EXPECT_THROW(source.Read(buffer, sizeof buffer), std::runtime_error);
  EXPECT_EQ(std::string(buffer, source.Read(buffer, sizeof buffer)), "{1}\n");
  EXPECT_EQ(source.Read(buffer, sizeof buffer), 0U);
}

}  // namespace
